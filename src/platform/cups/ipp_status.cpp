#include "platform/cups/ipp_status.h"

#include <cups/ipp.h>

#include <algorithm>
#include <array>

#include "base/text.h"
#include "platform/spooler.h"

namespace quirepress {

namespace {

using Reasons = std::vector<std::string_view>;

struct ReasonRow {
    std::string_view start;
    std::uint32_t printerBits;
    std::uint32_t jobBits;  // when it is more than a report
};

constexpr std::array<ReasonRow, 32> kReasons = {{
    {"paused", printer_status::kPaused, 0},
    {"moving-to-paused", printer_status::kPaused, 0},
    {"media-empty", printer_status::kPaperOut, job_status::kPaperOut},
    {"media-needed", printer_status::kPaperOut, job_status::kPaperOut},
    {"media-jam", printer_status::kPaperJam, job_status::kUserIntervention},
    {"input-tray-missing", printer_status::kPaperProblem, job_status::kUserIntervention},
    {"input-manual-input-request", printer_status::kManualFeed, job_status::kUserIntervention},
    {"output-area-full", printer_status::kOutputBinFull, job_status::kUserIntervention},
    {"output-tray-missing", printer_status::kUserIntervention, job_status::kUserIntervention},
    {"door-open", printer_status::kDoorOpen, job_status::kUserIntervention},
    {"cover-open", printer_status::kDoorOpen, job_status::kUserIntervention},
    {"interlock-open", printer_status::kDoorOpen, job_status::kUserIntervention},
    {"toner-low", printer_status::kTonerLow, 0},
    {"marker-supply-low", printer_status::kTonerLow, 0},
    {"developer-low", printer_status::kTonerLow, 0},
    {"toner-empty", printer_status::kNoToner, job_status::kUserIntervention},
    {"marker-supply-empty", printer_status::kNoToner, job_status::kUserIntervention},
    {"developer-empty", printer_status::kNoToner, job_status::kUserIntervention},
    {"marker-waste-full", printer_status::kUserIntervention, job_status::kUserIntervention},
    {"opc-life-over", printer_status::kUserIntervention, job_status::kUserIntervention},
    {"fuser-", printer_status::kError, job_status::kError},
    {"spool-area-full", printer_status::kOutOfMemory, job_status::kError},
    {"interpreter-resource-unavailable", printer_status::kOutOfMemory, job_status::kError},
    {"offline", printer_status::kOffline, job_status::kOffline},
    {"timed-out", printer_status::kOffline, job_status::kOffline},
    {"shutdown", printer_status::kOffline, job_status::kOffline},
    {"deactivated", printer_status::kOffline, job_status::kOffline},
    {"connecting-to-device", printer_status::kWaiting, 0},
    {"hold-new-jobs", printer_status::kWaiting, 0},
    {"cups-missing-filter", printer_status::kError, job_status::kError},
    {"cups-insecure-filter", printer_status::kError, job_status::kError},
    {"other-error", printer_status::kError, job_status::kError},
}};

bool Has(const Reasons& reasons, std::string_view start) {
    return std::any_of(reasons.begin(), reasons.end(),
                       [&](std::string_view reason) { return StartsWith(reason, start); });
}

std::uint32_t PrinterBitsOf(const Reasons& reasons) {
    std::uint32_t bits = 0;
    for (const ReasonRow& row : kReasons)
        if (Has(reasons, row.start)) bits |= row.printerBits;
    return bits;
}

std::uint32_t JobBitsOf(const Reasons& reasons) {
    std::uint32_t bits = 0;
    for (std::string_view reason : reasons) {
        if (EndsWith(reason, "-report")) continue;
        for (const ReasonRow& row : kReasons)
            if (StartsWith(reason, row.start)) bits |= row.jobBits;
    }
    return bits;
}

std::uint32_t HeldBitsOf(const Reasons& reasons) {
    if (Has(reasons, "job-incoming")) return job_status::kSpooling;
    if (Has(reasons, "cups-held-for-authentication"))
        return job_status::kPaused | job_status::kUserIntervention;
    // Its backend has failed and is to try it again; a server that was restarted knows no reason any more.
    const bool hasFailed =
        Has(reasons, "resources-are-not-ready") || (reasons.size() == 1 && reasons[0] == "none");
    if (hasFailed) return job_status::kPaused | job_status::kError;
    return job_status::kPaused;
}

}  // namespace

std::uint32_t JobStatusOf(int state, const Reasons& reasons, const Reasons& printerReasons) {
    switch (state) {
        case IPP_JSTATE_HELD:
            return HeldBitsOf(reasons);
        case IPP_JSTATE_PROCESSING:
            return job_status::kPrinting | JobBitsOf(printerReasons);
        case IPP_JSTATE_STOPPED:
        case IPP_JSTATE_ABORTED:
            return job_status::kError;
        case IPP_JSTATE_CANCELED:
            return job_status::kDeleted;
        case IPP_JSTATE_COMPLETED:
            return job_status::kPrinted;
        default:
            return 0;
    }
}

std::uint32_t PrinterStatusOf(int state, const Reasons& reasons, bool isAccepting) {
    std::uint32_t bits = PrinterBitsOf(reasons);
    if (state == IPP_PSTATE_STOPPED) bits |= printer_status::kPaused;
    if (state == IPP_PSTATE_PROCESSING) bits |= printer_status::kPrinting;
    if (!isAccepting) bits |= printer_status::kNotAvailable;
    return bits;
}

int PriorityFromIpp(int priority) {
    return std::clamp(priority, 1, 99);
}

}  // namespace quirepress
