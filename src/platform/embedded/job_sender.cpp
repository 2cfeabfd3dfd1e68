#include "platform/embedded/job_sender.h"

#include "base/text.h"
#include "platform/embedded/folder_sender.h"
#include "platform/embedded/lpd_sender.h"
#include "platform/embedded/socket_sender.h"

namespace quirepress {

namespace {

constexpr std::string_view kPlaced = "PLACED;";
constexpr std::string_view kUnknown = "UNKNOWN;";
constexpr std::string_view kTold = "UNKNOWN AND TOLD;";
constexpr std::string_view kWayOut = " Restart the job to print it again, or cancel it.";

// With its data the job is gone, and that is all that is to be done.
class NullSender : public JobSender {
public:
    SendReport Step() override { return {SendOutcome::kDelivered}; }
};

}  // namespace

std::unique_ptr<JobSender> MakeJobSender(const SendRequest& request) {
    // A copy that only lacks its rename is finished whatever the port is by now.
    if (request.job.isBegun || request.port.kind == PrinterPort::Kind::kFolder)
        return std::make_unique<FolderSender>(request);
    if (request.port.kind == PrinterPort::Kind::kSocket) return std::make_unique<SocketSender>(request);
    if (request.port.kind == PrinterPort::Kind::kLpd) return std::make_unique<LpdSender>(request);
    return std::make_unique<NullSender>();
}

namespace begun_note {

std::string WritePlaced(const std::string& copyPath) {
    return std::string(kPlaced) + copyPath + "\n";
}

bool ReadPlaced(const std::string& note, std::string& copyPath) {
    if (!StartsWith(note, kPlaced) || !EndsWith(note, "\n")) return false;
    copyPath = note.substr(kPlaced.size(), note.size() - kPlaced.size() - 1);
    return true;
}

std::string WriteUnknown(const std::string& text) {
    return std::string(kUnknown) + "Unknown: " + text + "." + std::string(kWayOut) + "\n";
}

std::string ReadUnknown(const std::string& note) {
    for (const std::string_view start : {kUnknown, kTold})
        if (StartsWith(note, start) && EndsWith(note, "\n"))
            return note.substr(start.size(), note.size() - start.size() - 1);
    return "Unknown: the program ended while the job was being sent." + std::string(kWayOut);
}

std::string WithTold(const std::string& note) {
    return std::string(kTold) + ReadUnknown(note) + "\n";
}

bool IsTold(const std::string& note) {
    return StartsWith(note, kTold);
}

}  // namespace begun_note

}  // namespace quirepress
