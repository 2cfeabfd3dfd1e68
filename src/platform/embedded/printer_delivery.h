#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/embedded/job_sender.h"
#include "platform/embedded/printer_folder.h"

namespace quirepress {

constexpr std::string_view kDamagedRecord = "The job's record is damaged. Cancel the job.";

// How the queues stand, for a program that would end once they are empty.
struct DeliveryState {
    int waiting = 0;  // jobs that are closed and not delivered
    int stuck = 0;    // of those: of a paused, unreachable or failed port, of unknown outcome, or damaged
    long long unmoved = 0;                       // milliseconds since one of the others moved
    std::int64_t bytesSent = 0, bytesTotal = 0;  // of the jobs being sent by this program
};

// The way out of one printer's queue: one job at a time, the highest priority first, then the oldest.
class PrinterDelivery {
public:
    PrinterDelivery(Files& files, EventLoop& loop, Network& network, PrinterFolder printer);

    // A bounded piece of work; true when the next call finds more to do.
    bool Step();
    // The queue has changed: the next call looks at it.
    void LookSoon();
    // The same, and what failed is tried again at once.
    void RetrySoon();
    // Stops sending `id`, if that is what it does, before it is cancelled.
    void Abandon(std::int64_t id);
    // Forgets that the job may have been sent. kBusy while it is being sent.
    FileResult Restart(const JobFiles& job);
    // Of a job of unknown outcome.
    void NoteTold(std::int64_t id);
    bool IsTold(std::int64_t id) const;

    bool IsSending(std::int64_t id) const { return m_sender && m_job.id == id; }
    bool IsSending() const { return m_sender != nullptr; }
    // Adds this printer's jobs to `state`.
    void AddState(DeliveryState& state);
    // Whether the port, as far as is known, is well, and the next job is still to be offered to it.
    bool IsUntried();
    // What stands in the way of this job, by its files and by what this or another program found out.
    void DescribeJob(const JobFiles& job, const PortTrouble& trouble, std::uint32_t& bits, std::string& text);
    PortTrouble CurrentTrouble();

private:
    struct JobTrouble {
        std::string text;
        long long retryAt = 0;
    };

    void Look();
    void Refresh();
    bool IsListOld() const;
    bool TakeLock();
    bool StartNext(const PrinterSettings& settings);
    bool IsOtherDelivering();
    bool CanResume(JobFiles& job);
    bool CanSend(JobFiles& job, JobRecord& record);
    void CheckStillWanted();
    void Conclude(const SendReport& report);
    void NotePortTrouble(const SendReport& report);
    void RetireJob();
    long long UnmovedMilliseconds() const;

    Files& m_files;
    EventLoop& m_loop;
    Network& m_network;
    PrinterFolder m_printer;
    std::unique_ptr<FileLock> m_lock;  // while there is something to deliver
    JobFiles m_job;                    // being sent
    std::unique_ptr<JobSender> m_sender;
    PeerHabits m_habits;
    // The queue as it was last listed, for a second at most while others may change it; what is taken from
    // here is looked at again in its own files.
    std::vector<JobFiles> m_waiting;
    long long m_listedAt = 0;
    long long m_movedAt = 0;  // when a job came, or went
    bool m_isChanged = true;  // since then, by this program
    long long m_nextLook = 0;
    long long m_nextCheck = 0;
    long long m_retryAt = 0;
    bool m_isOthersTurn = false;  // another program delivers, when last looked
    long long m_backOff = 0;      // milliseconds; 0: the port is well, as far as is known
    std::map<std::int64_t, JobTrouble> m_jobTroubles;
};

// The record of a job, or of one that is not closed yet. False when it cannot be read.
bool ReadRecord(Files& files, const JobFolder& jobs, const JobFiles& job, JobRecord& record);

}  // namespace quirepress
