#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/date_time.h"
#include "platform/job_ticket.h"
#include "platform/print_setup.h"

namespace quirepress {

// Status bits of a job, the same on every print system.
namespace job_status {
constexpr std::uint32_t kPaused = 0x1, kError = 0x2, kDeleting = 0x4, kSpooling = 0x8, kPrinting = 0x10,
                        kOffline = 0x20, kPaperOut = 0x40, kPrinted = 0x80, kDeleted = 0x100,
                        kBlocked = 0x200, kUserIntervention = 0x400, kRestart = 0x800, kComplete = 0x1000,
                        kRetained = 0x2000;
}

// Status bits of a printer, the same on every print system.
namespace printer_status {
constexpr std::uint32_t kPaused = 0x1, kError = 0x2, kPendingDeletion = 0x4, kPaperJam = 0x8,
                        kPaperOut = 0x10, kManualFeed = 0x20, kPaperProblem = 0x40, kOffline = 0x80,
                        kIoActive = 0x100, kBusy = 0x200, kPrinting = 0x400, kOutputBinFull = 0x800,
                        kNotAvailable = 0x1000, kWaiting = 0x2000, kProcessing = 0x4000,
                        kInitializing = 0x8000, kWarmingUp = 0x10000, kTonerLow = 0x20000, kNoToner = 0x40000,
                        kPagePunt = 0x80000, kUserIntervention = 0x100000, kOutOfMemory = 0x200000,
                        kDoorOpen = 0x400000;
}

struct PrinterInfo {
    std::string name;
    std::string port;
    std::string driver;
    std::uint32_t jobs = 0;        // in the queue
    std::uint32_t statusBits = 0;  // printer_status
    std::string statusText;        // the system's own words; may be empty
    bool isDefault = false;
};

struct JobInfo {
    std::int64_t id = 0;
    std::string printer;
    std::string machine;
    std::string user;
    std::string document;
    std::string dataType;
    std::string statusText;        // the system's own words; may be empty
    std::string options;           // how it is to be printed (OptionsText); may be empty
    std::uint32_t statusBits = 0;  // job_status
    int priority = 1;              // 1 (lowest) to 99
    int position = 0;              // in the queue, from 1
    int totalPages = 0;            // 0: unknown
    int pagesPrinted = 0;
    std::int64_t size = 0;  // bytes
    // This program delivers it by itself, and has not found out yet whether the printer takes anything.
    bool isUntried = false;
    // Its printer may have taken it or not: it stays as it is until somebody decides.
    bool isOfUnknownOutcome = false;
    bool isOutcomeTold = false;  // PrinterAdministration::NoteOutcomeTold
    LocalTime submitted;
};

struct BinInfo {
    int number = 0;
    std::string name;
};

struct DocumentInfo {
    std::string name;  // shown in the queue; for a file of the list its full path
    int copies = 1;
    int priority = 0;  // 1 to 99; 0: the print system's own
    // For whole documents; a printer-ready one says by itself how it is to be printed.
    JobTicket ticket = {};
    std::string pageRanges = {};  // "1-3,7"; empty: all
};

// A printer opened for one raw document.
class RawPrinter {
public:
    virtual ~RawPrinter() = default;                              // without Finish: the document is dropped
    virtual int StartDocument(const DocumentInfo& document) = 0;  // 0, -1 on failure
    // 0, or -1: the chunk did not reach the spooler. The next chunk may be offered all the same.
    virtual int WriteChunk(const void* data, std::size_t size) = 0;
    // Ends the document. 0: the spooler has it and keeps it; -1: it does not, and there is no job; 1: its
    // answer did not come, so that nobody can tell.
    virtual int Finish() = 0;
    virtual std::int64_t JobId() const = 0;  // once started or, on some systems, finished; 0: none is told
    virtual int SystemError() const = 0;     // of the last call that failed
};

constexpr std::int64_t kDocumentRefused = -1;  // there is no job
constexpr std::int64_t kDocumentUnknown = -2;  // the answer did not come, so that nobody can tell

// One print system. Results are 0 on success and -1 on failure where nothing else is said; a call that asks
// a server has a time limit and pumps meanwhile.
class Spooler {
public:
    virtual ~Spooler() = default;
    virtual std::string SystemName() const = 0;  // "embedded", "cups", "windows"

    virtual int ListPrinters(std::vector<PrinterInfo>& printers) = 0;
    virtual std::string DefaultPrinter() = 0;  // empty when there is none
    virtual int MakeDefaultPrinter(std::string_view printer) = 0;
    // What the default printer stands on, so that it can be brought back exactly: where there is more than
    // its name, the user's own choice, which may be none (empty). May pump.
    virtual std::string DefaultChoice() { return DefaultPrinter(); }
    virtual int RestoreDefaultChoice(std::string_view choice) {
        return choice.empty() ? 0 : MakeDefaultPrinter(choice);
    }
    // Null when it does not exist or cannot be opened; `systemError` says why.
    virtual std::unique_ptr<RawPrinter> OpenRawPrinter(std::string_view printer, int& systemError) = 0;
    // Whether PrintDocument makes something of a file of this name on this printer; it is not opened. By
    // default what every system with document jobs knows: PDF, the common images and plain text, in any
    // capitals.
    virtual bool TakesDocument(std::string_view printer, std::string_view path);
    // Hands over a whole file that the print system can render or store by itself. The job's id, or one of
    // the two above.
    virtual std::int64_t PrintDocument(std::string_view printer, std::string_view path,
                                       const DocumentInfo& document, int& systemError) = 0;

    // In queue order. -1 when there is no such printer.
    virtual int ListJobs(std::string_view printer, std::vector<JobInfo>& jobs) = 0;
    // The highest number that a job of the printer has had, as far as it is known: later jobs have higher
    // ones. 0 when there is none, -1 when it cannot be told.
    virtual std::int64_t LastJob(std::string_view printer);
    // Jobs with a number above `after` that have left the queue: printed (kPrinted), cancelled (kDeleted),
    // given up (kError); by their numbers. None where the print system keeps no such history.
    virtual int ListOverJobs(std::string_view printer, std::int64_t after, std::vector<JobInfo>& jobs);
    virtual int ChangeJobPriority(std::string_view printer, std::int64_t id, int priority) = 0;
    virtual int CancelJob(std::string_view printer, std::int64_t id) = 0;
    virtual int ListBins(std::string_view printer, std::vector<BinInfo>& bins) = 0;
    // A sentence part for an error number that one of the calls has just given: "error 5", or better.
    virtual std::string ErrorText(int systemError);
    // How this system writes print set-ups; the portable way where it has none of its own.
    virtual PrintSetupFormat& SetupFormat() { return PortableSetupFormat(); }
};

// The embedded spooler's further operations on its own printers.
class PrinterAdministration {
public:
    virtual ~PrinterAdministration() = default;
    // 0; 1 when the name or the port is none that this spooler takes, 2 when the printer exists already (or,
    // but for adding, does not), -1 when it could not be written. `message` says why in a sentence.
    virtual int CreatePrinterQueue(std::string_view printer, std::string_view port, std::string& message) = 0;
    virtual int RemovePrinterQueue(std::string_view printer, std::string& message) = 0;
    virtual int PausePrinterQueue(std::string_view printer, std::string& message) = 0;
    virtual int ResumePrinterQueue(std::string_view printer, std::string& message) = 0;
    // Offers a job of unknown outcome to the port once more.
    virtual int RestartJob(std::string_view printer, std::int64_t id, std::string& message) = 0;
    // Somebody has been told of this job of unknown outcome, which is not to be told anew by every program.
    virtual void NoteOutcomeTold(std::string_view printer, std::int64_t id) = 0;
    // Since when no job has moved any more, of those that nothing is known to hold up.
    virtual long long UnmovedMilliseconds() = 0;
    // Delivers no more; what is being sent is given up, and its job says so.
    virtual void EndDelivery() = 0;
};

}  // namespace quirepress
