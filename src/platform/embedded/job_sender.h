#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/embedded/job_record.h"
#include "platform/embedded/printer_folder.h"

namespace quirepress {

class EventLoop;
class Network;

// The state of a job on its way out of its port.
enum class SendOutcome {
    kWorking,     // call again
    kDelivered,   // the port has it all
    kGone,        // its data vanished: another program cancelled it
    kPortFailed,  // nothing of it went out; to be tried again
    kJobFailed,   // the same, but for a reason of its own: other jobs may do better
    kUnknown      // bytes went out and the end is not known; not to be tried again
};

struct SendReport {
    SendOutcome outcome = SendOutcome::kWorking;
    std::uint32_t printerBits = 0;  // of a failure: printer_status
    std::uint32_t jobBits = 0;      // of a failure: job_status
    std::string text = {};          // of a failure: why, without a stop
    bool moreAtOnce = false;        // kWorking: the next call finds work to do
};

// Sends one job, whose data are complete, to a port. Destroying it gives up; what the job's `begun` file
// then says is true.
class JobSender {
public:
    virtual ~JobSender() = default;
    // A bounded piece of work; never waits for a peer.
    virtual SendReport Step() = 0;
    virtual std::int64_t BytesSent() const { return 0; }
    virtual std::int64_t BytesTotal() const { return 0; }
    // Milliseconds since the port took a byte.
    virtual long long StalledMilliseconds() const { return 0; }
};

// What the jobs before have shown of a printer; for as long as this program delivers to it.
struct PeerHabits {
    bool staysOpen = false;  // it keeps its connections open when it has all of a job
};

struct SendRequest {
    Files& files;
    EventLoop& loop;
    Network& network;
    PeerHabits& habits;
    PrinterFolder printer;
    PrinterPort port;
    JobFiles job;
    JobRecord record;
};

std::unique_ptr<JobSender> MakeJobSender(const SendRequest& request);

// One pass writes or copies no more than this.
constexpr std::int64_t kBytesPerPass = 256LL * 1024;

// What a `begun` file holds: nothing while bytes are being sent; or one line that says what is known.
namespace begun_note {
// The complete copy of a job beside its place in the output folder; only its rename is missing.
std::string WritePlaced(const std::string& copyPath);
bool ReadPlaced(const std::string& note, std::string& copyPath);
std::string WriteUnknown(const std::string& text);
// The text of a job whose outcome is not known.
std::string ReadUnknown(const std::string& note);
// The same, once somebody was told of it.
std::string WithTold(const std::string& note);
bool IsTold(const std::string& note);
}  // namespace begun_note

}  // namespace quirepress
