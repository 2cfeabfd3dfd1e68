#include "backends/status_words.h"

#include <array>

#include "platform/spooler.h"

namespace quirepress {

namespace {

struct StatusWord {
    std::uint32_t bit;
    std::string_view word;
};

// The words stand as their readers know them, slips included.
constexpr std::array<StatusWord, 23> kPrinterWords = {{
    {printer_status::kPaused, "Paused"},
    {printer_status::kError, "Error"},
    {printer_status::kPendingDeletion, "Pending Deletion"},
    {printer_status::kPaperJam, "Paper Jam"},
    {printer_status::kPaperOut, "Paper Out"},
    {printer_status::kManualFeed, "Manual Feed"},
    {printer_status::kPaperProblem, "Paper Problem"},
    {printer_status::kOffline, "Offline"},
    {printer_status::kIoActive, "IO Active"},
    {printer_status::kBusy, "Busy"},
    {printer_status::kPrinting, "Printing"},
    {printer_status::kOutputBinFull, "Output Bin Full"},
    {printer_status::kNotAvailable, "Not Available"},
    {printer_status::kWaiting, "Waiting"},
    {printer_status::kProcessing, "Processing"},
    {printer_status::kInitializing, "Initilizing"},
    {printer_status::kWarmingUp, "Warming Up"},
    {printer_status::kTonerLow, "Toner Low"},
    {printer_status::kNoToner, "No Toner"},
    {printer_status::kPagePunt, "Page Punt"},
    {printer_status::kUserIntervention, "User Intervention"},
    {printer_status::kOutOfMemory, "Out of Memory"},
    {printer_status::kDoorOpen, "Door Open"},
}};

constexpr std::array<StatusWord, 14> kJobWords = {{
    {job_status::kPaused, "Paused"},
    {job_status::kError, "Error"},
    {job_status::kDeleting, "Deleting"},
    {job_status::kSpooling, "Spooling"},
    {job_status::kPrinting, "Printing"},
    {job_status::kOffline, "Offline"},
    {job_status::kPaperOut, "Paper Out"},
    {job_status::kPrinted, "Printed"},
    {job_status::kDeleted, "Deleted"},
    {job_status::kBlocked, "Blocked"},
    {job_status::kUserIntervention, "User Intervention"},
    {job_status::kRestart, "Restarting"},
    {job_status::kComplete, "Complete"},
    {job_status::kRetained, "Retained"},
}};

}  // namespace

std::string_view PrinterStatusWord(std::uint32_t statusBits, std::uint32_t jobs) {
    if (statusBits == 0) return jobs > 0 ? "Error - Printing" : "";
    for (const StatusWord& row : kPrinterWords)
        if (row.bit == statusBits) return row.word;
    return "";
}

std::string JobStatusWords(std::uint32_t statusBits) {
    std::string words;
    for (const StatusWord& row : kJobWords) {
        if ((statusBits & row.bit) == 0) continue;
        if (!words.empty()) words += ", ";
        words += row.word;
    }
    return words.empty() ? "Waiting" : words;
}

}  // namespace quirepress
