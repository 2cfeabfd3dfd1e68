#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/list_item.h"
#include "core/page_range.h"
#include "platform/job_ticket.h"

namespace quirepress {

// A row as a way gets it: texts of its own, since the list may change under every pump.
struct RunItem {
    std::string path;
    ItemKind kind = ItemKind::kDocument;
    std::string printer;
    JobTicket ticket;  // what the current set-up asks for
    std::string pages;
    std::string sizeKb;
    std::string printDirect;
    std::string processingParameters;
    std::string addonParameters;
    std::string extraOptions;
    std::string balancedPrinters;
    std::string preparedFile;  // what is printed in place of the file at `path`, which gives it its name
    PageRange range;           // pages that are still to be chosen from it

    const std::string& Source() const { return preparedFile.empty() ? path : preparedFile; }
};

struct WayResult {
    enum class End { kPrinted, kFailed, kStopped } end = End::kFailed;
    std::string status;  // for the row
    // For the error log: what went wrong. Of a printed document, why it may not have come out whole; its
    // file is then to be kept.
    std::string remark;
    bool canRetry = false;   // nothing came out, and another attempt may go better
    std::int64_t jobId = 0;  // of the last job, when the print system tells it
    int pages = 0;           // that were printed, where it is known better than from the row
    // Those that took it or a part of it, each once, the last of them last; empty: the printer of the item.
    std::vector<std::string> printers = {};
    int wholeCopies = 0;                         // that came out although the end is no success
    std::vector<std::int64_t> earlierJobs = {};  // of a row that became several: all but `jobId`
    // Of kStopped: before anything of it was begun, so that it may come another time.
    bool isUntouched = false;
};

// What a way may say and ask while it works.
class WayFeedback {
public:
    virtual ~WayFeedback() = default;
    virtual void ShowRowStatus(std::string_view status) = 0;
    virtual void ShowBytes(std::int64_t done, std::int64_t total) = 0;
    virtual bool IsStopped() const = 0;
    virtual bool KeepGoing() = 0;  // Pumps; false once Stop was pressed.
};

// One way for a row: to paper for a document, into effect for a command item.
class RunWay {
public:
    virtual ~RunWay() = default;
    virtual bool Takes(const RunItem& item) = 0;
    virtual WayResult Process(const RunItem& item, WayFeedback& feedback) = 0;  // May pump.
};

// In the order in which a row is offered to them.
using RunWays = std::vector<std::unique_ptr<RunWay>>;

// Stop came before anything of the row reached a printer.
WayResult StoppedWay();
// Nobody can tell whether it came out.
WayResult UnknownWay();
// A document that is refused before anything of it reaches a printer; `reason` is a sentence part.
WayResult RefusedDocument(std::string_view reason);

// For a row that no way takes.
WayResult NoWayFor(const RunItem& item);

constexpr std::string_view kStatusDone = "Done";
// Nobody can tell whether it came out; it is never printed again by itself.
constexpr std::string_view kStatusUnknown =
    "Error - Unknown whether it was printed, please check the printer";
constexpr std::string_view kStatusDidNotSpool =
    "Error - Can't Print - did not spool, try changing application startup allowance in options or contact "
    "Corvane for help";

}  // namespace quirepress
