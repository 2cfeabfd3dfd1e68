#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/spooler.h"

namespace quirepress {

class Files;

// A document that was handed over, as it was handed over.
struct SentDocument {
    std::string printer;
    std::string name;
    int copies = 1;
    std::string bytes;  // of the chunks that were taken
    std::int64_t jobId = 0;
    bool finished = false;  // the spooler answered that it keeps it
    JobTicket ticket;
    std::string pageRanges;
    int priority = 0;
};

// Printers and jobs in memory. A job that is finished is delivered (leaves the queue) at once, unless
// KeepJobs says otherwise or its printer is paused.
class FakeSpooler : public Spooler, public PrinterAdministration {
public:
    explicit FakeSpooler(Files& files) : m_files(files) {}  // for the documents that are handed over whole

    // The stage. A printer without a port cannot be made the default one.
    void PutPrinter(std::string_view name, std::string_view port = "null:", std::uint32_t statusBits = 0);
    void SetPrinterStatus(std::string_view name, std::uint32_t statusBits);
    void SetBins(std::string_view name, std::vector<BinInfo> bins);
    // A job of another program; its id, which it gets when it has none.
    std::int64_t PutJob(std::string_view printer, JobInfo job);
    void SetJobStatus(std::int64_t id, std::uint32_t statusBits, std::string_view statusText = "");
    void SetJobPages(std::int64_t id, int totalPages, int pagesPrinted);
    void SetUntried(std::int64_t id, bool isUntried);
    void TakeJobAway(std::int64_t id);  // it was printed
    void KeepJobs(bool keep) { m_keepJobs = keep; }
    // From now on jobs that leave the queue are known as printed, given up (with an error) or cancelled.
    void KeepHistory(bool keep) { m_keepHistory = keep; }
    void HideJobs(bool hide) { m_hideJobs = hide; }  // they are there, and not listed yet
    void DeliverJobs();                              // every job of a printer that is not paused
    void SetNow(const LocalTime& now) { m_now = now; }

    // Failures, from now on until StopFailing. `error` is what SystemError then tells.
    void FailOpening(int error) { m_failures.opening = error; }
    void FailStart(int error) { m_failures.start = error; }
    void FailFinish(int error) { m_failures.finish = error; }
    void FailPrintDocument(int error) { m_failures.printDocument = error; }
    void LoseAnswers() { m_failures.answers = true; }  // of jobs that were taken
    void FailListing() { m_failures.listing = true; }  // of printers, jobs and bins
    void StopFailing() { m_failures = {}; }

    // The record.
    const std::vector<SentDocument>& Sent() const { return m_sent; }  // in the order of their starts
    void ForgetSent() { m_sent.clear(); }
    // "OpenRawPrinter Laser", "StartDocument /a.ps", "WriteChunk 65535", "Finish 0", "CancelJob Laser 3"...
    const std::vector<std::string>& Calls() const { return m_calls; }
    int CountCalls(std::string_view start) const;

    std::string SystemName() const override { return "fake"; }
    int ListPrinters(std::vector<PrinterInfo>& printers) override;
    std::string DefaultPrinter() override;
    int MakeDefaultPrinter(std::string_view printer) override;
    std::unique_ptr<RawPrinter> OpenRawPrinter(std::string_view printer, int& systemError) override;
    std::int64_t PrintDocument(std::string_view printer, std::string_view path, const DocumentInfo& document,
                               int& systemError) override;
    int ListJobs(std::string_view printer, std::vector<JobInfo>& jobs) override;
    std::int64_t LastJob(std::string_view printer) override;
    int ListOverJobs(std::string_view printer, std::int64_t after, std::vector<JobInfo>& jobs) override;
    int ChangeJobPriority(std::string_view printer, std::int64_t id, int priority) override;
    int CancelJob(std::string_view printer, std::int64_t id) override;
    int ListBins(std::string_view printer, std::vector<BinInfo>& bins) override;

    int CreatePrinterQueue(std::string_view printer, std::string_view port, std::string& message) override;
    int RemovePrinterQueue(std::string_view printer, std::string& message) override;
    int PausePrinterQueue(std::string_view printer, std::string& message) override;
    int ResumePrinterQueue(std::string_view printer, std::string& message) override;
    int RestartJob(std::string_view printer, std::int64_t id, std::string& message) override;
    void NoteOutcomeTold(std::string_view printer, std::int64_t id) override;
    long long UnmovedMilliseconds() override { return 0; }
    void EndDelivery() override {}

private:
    friend class FakeRawPrinter;
    struct Failures {
        int opening = 0, start = 0, finish = 0, printDocument = 0;
        bool listing = false, answers = false;
    };
    struct Printer {
        PrinterInfo info;
        std::vector<BinInfo> bins;
        std::vector<JobInfo> jobs;  // in queue order
        std::vector<JobInfo> over;
    };

    Printer* FindQueue(std::string_view name);
    JobInfo* FindJob(std::int64_t id);
    int SetPaused(std::string_view printer, bool paused, std::string& message);
    int StartJob(std::string_view printer, const DocumentInfo& document, std::size_t& sent);
    int FinishJob(std::size_t sent);
    void Sort(Printer& printer);

    Files& m_files;
    std::map<std::string, Printer, std::less<>> m_printers;
    std::string m_default;
    std::int64_t m_lastId = 0;
    bool m_keepJobs = false;
    bool m_keepHistory = false;
    bool m_hideJobs = false;
    LocalTime m_now{2024, 1, 2, 3, 4, 5};
    Failures m_failures;
    std::vector<SentDocument> m_sent;
    std::vector<std::string> m_calls;
};

}  // namespace quirepress
