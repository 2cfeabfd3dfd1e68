#pragma once

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/file_transfer.h"
#include "core/list_item.h"

namespace quirepress {

class Clock;
class DebugLog;
class ErrorLog;
class EventLoop;
class Files;
class PrintList;
class Prompts;
class RunNotices;
struct GeneralOptions;
struct MoveTarget;

struct PostPrintServices {
    Files& files;
    EventLoop& loop;
    Clock& clock;
    Prompts& prompts;
    DebugLog& debugLog;
    ErrorLog& errorLog;
    const GeneralOptions& options;
    std::string workingFolder;  // relative target folders lie below it
};

// What the handling needs to know of a row: texts of its own, since the list may change under every pump.
struct PrintedRow {
    std::string path;
    std::string moveTo;
    std::string moveToOnError;
    std::string fileTitle;
    std::string jobFile;
    std::string printer;        // for the error log
    SourceVersion source = {};  // of the file that was printed
    bool mayBeCopied = false;   // to where it goes, by a run that was cut off
};
PrintedRow ReadPrintedRow(PrintList& list, int row, std::string_view printer);

// How a row's printing ended. kDoubtful: accepted, but it may not have come out whole.
enum class PrintEnd { kPrinted, kDoubtful, kFailed };

// What has become of a row's file. kLeft: nothing was to be done.
enum class RowHandled { kLeft, kErased, kBrought, kFailed };

// Deletes, moves or copies documents after they were printed, and deletes the job files that ask for it. A
// failure leaves the file where it was, and is told once: by a notice, and by a box or in the error log.
class PostPrint {
public:
    explicit PostPrint(PostPrintServices services);

    void UseNotices(RunNotices* notices) { m_notices = notices; }  // null: nobody is told
    // Asked in every wait; the file at work still gets its first attempt.
    void UseStop(std::function<bool()> isStopped) { m_isStopped = std::move(isStopped); }
    // When a name in the target is taken: true gives the old file a version name, false the new one.
    void RenameOldFiles(bool isOn) { m_renameOld = isOn; }

    // For each row, after its last copy, once the spooler's answer is in the status and the print log. A
    // document that was printed goes where its row says, one that failed where the row says for errors; one
    // that is doubtful is never deleted, and one that has changed since it was read is left. Of other rows
    // only the job file counts. Not for rows that were skipped or whose outcome is unknown. May pump.
    RowHandled Handle(const PrintedRow& row, PrintEnd end);
    // Of the file that failed last: "not moved: it is in use".
    const std::string& LastFailure() const { return m_lastFailure; }
    // Whether the row says where a file that ended so is to go.
    bool HasTarget(const PrintedRow& row, PrintEnd end) const { return !MoveToFor(row, end).empty(); }
    // What Handle does about the job file alone.
    void NoteJobFile(const PrintedRow& row, PrintEnd end);
    // Deletes the job files whose rows ask for it, when all of their rows in the list were printed in all
    // `passes` walks; tells what was done since the last call. False when a failure since then
    // could not be logged. May pump.
    bool AtRunEnd(PrintList& list, int passes);

    // Does with the file what `moveTo` says; `fileTitle` is its name in the target. Answers whether the file
    // was handled. May pump.
    bool CheckForFileOnMove(std::string_view fileName, std::string_view moveTo, std::string_view fileTitle);
    // The same for a file that was printed from the command line.
    bool MoveFromCommandLine(std::string_view fileName, std::string_view moveTo, std::string_view fileTitle);

private:
    struct Order;
    struct Failure;
    // kInUse: the file is; kRefused: by its folder, as it seems. Only these two are tried again.
    enum class Attempt { kDone, kInUse, kRefused, kHopeless };

    bool IsChanged(const PrintedRow& row) const;
    std::string MoveToFor(const PrintedRow& row, PrintEnd end) const;
    RowHandled HandleFile(const Order& order);
    RowHandled LeaveChanged(const Order& order);
    RowHandled EraseFile(const Order& order);
    RowHandled TransferFile(const Order& order, const MoveTarget& target);
    TransferRequest RequestFor(const Order& order, const MoveTarget& target) const;
    void ReportTransfer(const Order& order, const FileTransfer& transfer, FileTransfer::End end);
    static Attempt AttemptOf(FileResult result, bool mayGoBetter);
    bool Retry(const std::string& folder, const std::function<Attempt()>& attempt);
    void PauseBeforeMove();
    void Report(const Failure& failure);
    std::vector<std::string> TakePrintedJobs(PrintList& list, int passes);
    void TellHandled();

    PostPrintServices m_services;
    RunNotices* m_notices = nullptr;
    std::function<bool()> m_isStopped = [] { return false; };
    bool m_renameOld = false;
    std::set<std::string> m_jobsToErase;
    std::set<std::string> m_jobsToKeep;
    std::set<std::string> m_badFolders;  // in this run; a file gets one attempt there
    std::string m_handled;               // lines for the notice at the end
    std::string m_lastFailure;
    bool m_errorLogFailed = false;
};

}  // namespace quirepress
