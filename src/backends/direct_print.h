#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

namespace quirepress {

class DebugLog;
class EventLoop;
class Files;
class RawPrinter;
class Spooler;
struct GeneralOptions;

// Whether a document goes to the printer as it is: the families are looked at in their order, those that are
// switched off are passed over, and only the listed spellings of an extension match.
bool IsDirectPrintFile(const GeneralOptions& options, std::string_view path);

// How often a document is sent: the number right behind the first "-r" of the first of the option texts that
// has one; 1 when there is none, or it is 0 or negative. A row's texts are asked in the order "Processing
// Parameters", "Addon Parameters", "Extra Options".
int DirectRepeatCount(std::initializer_list<std::string_view> optionTexts);

// What became of one PrintExtPS beyond its result.
struct DirectOutcome {
    std::int64_t jobId = 0;
    std::int64_t bytesSent = 0;
    int failedChunks = 0;     // of 65535 bytes; the job lacks them
    bool sourceWhole = true;  // false: not opened, not read to its end, or of another size at the end
    bool stopped = false;     // the caller did not want to go on; there is no job
    bool accepted = false;    // the spooler has the job and keeps it
    bool isUnknown = false;   // nobody can tell whether it does
    int systemError = 0;      // of the spooler's last failure
};

// Told after each chunk how many bytes of how many were offered; answers whether to go on.
using DirectProgress = std::function<bool(std::int64_t done, std::int64_t total)>;

// Sends files to the spooler unchanged.
class DirectPrinter {
public:
    DirectPrinter(Spooler& spooler, Files& files, EventLoop& loop, DebugLog& debugLog);

    // The printer of the last printer settings file; replaces the caller's while it is not empty.
    void UsePrinter(std::string_view printer) { m_currentPrinter = printer; }
    void UsePriority(int priority) { m_priority = priority; }  // 1 to 99; 0: the print system's own

    // 0 when the document could be started, -1 when the printer could not be opened, -2 when the document
    // could not be started. A chunk that fails does not change the result, and the job is closed all the
    // same; a file that cannot be opened gives an empty job. A file that breaks off or changes its size while
    // it is read, and a stop, drop the job whole. `outcome` tells these apart. Pumps now and then.
    int PrintExtPS(std::string_view printer, std::string_view path, const DirectProgress& progress,
                   DirectOutcome& outcome);

private:
    // False when the job must not be closed but dropped.
    bool SendFile(RawPrinter& raw, std::string_view path, const DirectProgress& progress,
                  DirectOutcome& outcome);
    void SendChunk(RawPrinter& raw, const char* data, std::size_t size, DirectOutcome& outcome);

    Spooler& m_spooler;
    Files& m_files;
    EventLoop& m_loop;
    DebugLog& m_debugLog;
    std::string m_currentPrinter;
    int m_priority = 0;
};

// The warning that a set-up shows when its files are to go directly to the printer; empty when `fileTypes`
// names one of the formats that printers know.
std::string_view DirectPrintWarning(std::string_view fileTypes);

}  // namespace quirepress
