#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quirepress {

class DebugLog;
class Files;
class Spooler;
struct GeneralOptions;

// Whether a document goes to the printer as it is: the families are looked at in their order, those that are
// switched off are passed over, and only the listed spellings of an extension match.
bool IsDirectPrintFile(const GeneralOptions& options, std::string_view path);

// The number behind the first "-r" of an option text; 1 when there is none, or it is 0 or negative.
int DirectRepeatCount(std::string_view optionText);

// What became of one PrintExtPS beyond its result.
struct DirectOutcome {
    std::int64_t jobId = 0;
    std::int64_t bytesSent = 0;
    int failedChunks = 0;    // of 65535 bytes; the job lacks them
    bool sourceRead = true;  // false: the file could not be opened, or not read to its end
    bool accepted = false;   // the spooler has the job and keeps it
    int systemError = 0;     // of the last failure
};

// Sends files to the spooler unchanged.
class DirectPrinter {
public:
    DirectPrinter(Spooler& spooler, Files& files, DebugLog& debugLog);

    // The printer of the last printer settings file; replaces the caller's while it is not empty.
    void UsePrinter(std::string_view printer) { m_currentPrinter = printer; }

    // 0 when the job was opened and the whole file was offered, -1 when the printer could not be opened, -2
    // when the document could not be started. A chunk that fails does not change the result. May pump.
    int PrintExtPS(std::string_view printer, std::string_view path, DirectOutcome& outcome);

private:
    Spooler& m_spooler;
    Files& m_files;
    DebugLog& m_debugLog;
    std::string m_currentPrinter;
};

// The warning that a set-up shows when its files are to go directly to the printer; empty when `fileTypes`
// names one of the formats that printers know.
std::string_view DirectPrintWarning(std::string_view fileTypes);

}  // namespace quirepress
