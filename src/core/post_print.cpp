#include "core/post_print.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "base/format.h"
#include "base/path.h"
#include "core/file_target.h"
#include "core/print_list.h"
#include "core/print_run_source.h"
#include "core/run_notices.h"
#include "logs/debug_log.h"
#include "logs/error_log.h"
#include "platform/clock.h"
#include "platform/event_loop.h"
#include "platform/file_tools.h"
#include "platform/files.h"
#include "platform/prompts.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

constexpr std::int64_t kAttempts = 200;
constexpr int kMillisecondsBetweenAttempts = 250;
constexpr int kMillisecondsInPauseStep = 100;
constexpr int kPauseStepsInSecond = 10;

constexpr std::string_view kErrorLogHint =
    "\n\nto log this instead of popup go into General options and turn on error log";

const char* WordFor(MoveAction action) {
    if (action == MoveAction::kMove) return "moved";
    return action == MoveAction::kCopy ? "copied" : "deleted";
}

bool IsHandled(RowHandled handled) {
    return handled == RowHandled::kErased || handled == RowHandled::kBrought;
}

}  // namespace

struct PostPrint::Order {
    std::string path;
    std::string moveTo;
    std::string title;
    std::string printer;
    std::string_view traceStart;
    bool mayBeCopied = false;
};

// How a failure is told.
struct PostPrint::Failure {
    const Order& order;
    std::string_view title;   // of the box: "Move Error"
    std::string_view status;  // of the notice
    std::string text;         // of the box
    std::string target;
    std::string reason;
};

PrintedRow ReadPrintedRow(PrintList& list, int row, std::string_view printer) {
    const auto text = [&](Column column) { return std::string(list.Text(row, column)); };
    return {text(kColumnFilename),
            text(kColumnMoveTo),
            text(kColumnMoveToOnError),
            text(kColumnFileTitle),
            std::string(list.JobFileOf(row)),
            std::string(printer),
            list.MarkOf(row).source};
}

PostPrint::PostPrint(PostPrintServices services) : m_services(std::move(services)) {}

void PostPrint::NoteJobFile(const PrintedRow& row, PrintEnd end) {
    const MoveAction action = ParseMoveTo(row.moveTo).action;
    const bool erasesJob = action == MoveAction::kEraseWithJob || action == MoveAction::kEraseJob;
    if (end != PrintEnd::kPrinted)
        m_jobsToKeep.insert(row.jobFile);
    else if (erasesJob && !row.jobFile.empty())
        m_jobsToErase.insert(row.jobFile);
}

RowHandled PostPrint::Handle(const PrintedRow& row, PrintEnd end) {
    NoteJobFile(row, end);
    if (KindInRun(row.path) != ItemKind::kDocument) return RowHandled::kLeft;
    if (end != PrintEnd::kPrinted && IsMergedFile(row.path)) return RowHandled::kLeft;
    // A row may have failed because its file is not there; its status says so already.
    const bool isThere = m_services.files.Inspect(row.path).kind != FileKind::kMissing;
    if (end == PrintEnd::kFailed && !isThere) return RowHandled::kLeft;
    const Order order = {row.path, MoveToFor(row, end), row.fileTitle, row.printer, "", row.mayBeCopied};
    const bool isToLeave = isThere && !order.moveTo.empty() && IsChanged(row) && !IsMergedFile(row.path);
    return isToLeave ? LeaveChanged(order) : HandleFile(order);
}

// What is in it now was not printed.
bool PostPrint::IsChanged(const PrintedRow& row) const {
    const FileFacts facts = m_services.files.Inspect(row.path);
    return row.source.size >= 0 && (facts.size != row.source.size || facts.written != row.source.written);
}

RowHandled PostPrint::LeaveChanged(const Order& order) {
    const MoveAction action = ParseMoveTo(order.moveTo).action;
    if (action == MoveAction::kEraseJob) return RowHandled::kLeft;
    const bool isErasing = action == MoveAction::kErase || action == MoveAction::kEraseWithJob;
    const std::string_view title = isErasing ? "Delete Error" : "Move Error";
    m_services.debugLog.Trace("The file has changed since it was printed, and stays: %s\r\n", order.path);
    Report({order, title, title, Format("The file has changed since it was printed\n\nFROM:%s", order.path),
            "", "it has changed since it was printed, and stays where it is"});
    return RowHandled::kFailed;
}

std::string PostPrint::MoveToFor(const PrintedRow& row, PrintEnd end) const {
    if (end == PrintEnd::kPrinted) return row.moveTo;
    const auto keepsFile = [](const std::string& moveTo) {
        const MoveAction action = ParseMoveTo(moveTo).action;
        return action == MoveAction::kMove || action == MoveAction::kCopy;
    };
    // What was not printed is never deleted.
    if (end == PrintEnd::kFailed) return keepsFile(row.moveToOnError) ? row.moveToOnError : std::string();
    if (keepsFile(row.moveTo)) return row.moveTo;
    const bool isToGo = !row.moveTo.empty() && keepsFile(row.moveToOnError);
    return isToGo ? row.moveToOnError : std::string();
}

bool PostPrint::CheckForFileOnMove(std::string_view fileName, std::string_view moveTo,
                                   std::string_view fileTitle) {
    const Order order = {std::string(fileName), std::string(moveTo), std::string(fileTitle), "", ""};
    return IsHandled(HandleFile(order));
}

bool PostPrint::MoveFromCommandLine(std::string_view fileName, std::string_view moveTo,
                                    std::string_view fileTitle) {
    const Order order = {std::string(fileName), std::string(moveTo), std::string(fileTitle), "",
                         "Command Line "};
    return IsHandled(HandleFile(order));
}

RowHandled PostPrint::HandleFile(const Order& order) {
    m_services.debugLog.Trace("CheckForFileOnMove fn=%s, fn_to=%s, fileTitle=%s\r\n", order.path,
                              order.moveTo, order.title);
    const MoveTarget target = ParseMoveTo(order.moveTo);
    if (IsMergedFile(order.path)) return EraseFile(order);
    switch (target.action) {
        case MoveAction::kNone:
        case MoveAction::kEraseJob:
            return RowHandled::kLeft;
        case MoveAction::kErase:
        case MoveAction::kEraseWithJob:
            return EraseFile(order);
        case MoveAction::kCopy:
        case MoveAction::kMove:
            break;
    }
    return TransferFile(order, target);
}

RowHandled PostPrint::EraseFile(const Order& order) {
    FileResult result = FileResult::kFailed;
    const bool isDone = Retry(std::string(FolderOf(order.path)), [&] {
        // One that is gone already is no failure; what has taken its place is not touched.
        const FileKind kind = m_services.files.Inspect(order.path).kind;
        result = kind == FileKind::kMissing ? FileResult::kMissing : FileResult::kNoAccess;
        if (IsGone(m_services.files, order.path)) result = FileResult::kDone;
        if (kind == FileKind::kRegular) result = m_services.files.Erase(order.path);
        const std::string status =
            Format("Delete file status %d", static_cast<int>(result == FileResult::kDone));
        m_services.prompts.ShowStatus(status);
        m_services.debugLog.Trace("%s\r\n", status);
        return AttemptOf(result, kind == FileKind::kRegular && MayGoBetterLater(result));
    });
    if (isDone) {
        m_handled += Format("Filename:%s, deleted\r\n", NameInNotice(order.path));
        return RowHandled::kErased;
    }
    m_services.debugLog.Trace("DeleteFile: %d, 0=error moving file  %s to %s\r\n", 0, order.path,
                              order.moveTo);
    Report({order, "Delete Error", "Delete Error",
            Format("File didn't delete, please check acrobat\n\nFROM:%s%s", order.path, kErrorLogHint), "",
            std::string(DescribeFileResult(result))});
    return RowHandled::kFailed;
}

RowHandled PostPrint::TransferFile(const Order& order, const MoveTarget& target) {
    PauseBeforeMove();
    const TransferRequest request = RequestFor(order, target);
    FileTransfer transfer({m_services.files, m_services.loop, m_services.prompts, m_services.debugLog},
                          request);
    FileTransfer::End end = FileTransfer::End::kNotMoved;
    const bool isDone = Retry(request.folder, [&] {
        end = transfer.Attempt();
        const FileResult result = end == FileTransfer::End::kDone ? FileResult::kDone : transfer.Reason();
        return AttemptOf(result, transfer.MayGoBetter());
    });
    if (!isDone) {
        ReportTransfer(order, transfer, end);
        return RowHandled::kFailed;
    }
    const char* const what = target.action == MoveAction::kCopy ? "copied" : "moved";
    m_handled +=
        Format("Filename:%s, %s to %s\r\n", NameInNotice(order.path), what, NameInNotice(transfer.Target()));
    return RowHandled::kBrought;
}

TransferRequest PostPrint::RequestFor(const Order& order, const MoveTarget& target) const {
    TransferRequest request;
    request.from = order.path;
    request.folder = IsAbsolutePath(target.folder) || target.folder.empty()
                         ? target.folder
                         : JoinPath(m_services.workingFolder, target.folder);
    request.name = TargetName(order.path, order.title);
    request.traceStart = order.traceStart;
    request.isCopy = target.action == MoveAction::kCopy;
    request.renameOld = m_renameOld;
    request.mayBeCopied = order.mayBeCopied;
    return request;
}

void PostPrint::ReportTransfer(const Order& order, const FileTransfer& transfer, FileTransfer::End end) {
    Failure failure = {order, "Move Error", "Move Error", "", transfer.Target(), transfer.DescribeReason()};
    const std::string places = Format("%s\nTO:%s%s", order.path, failure.target, kErrorLogHint);
    if (end == FileTransfer::End::kNoVersionLeft) {
        m_services.debugLog.Trace("Sorry same name limit reached message!\r\n");
        failure.title = "Limit Reached!";
        failure.text =
            "Sorry same name limit reached!,\nyou must delete some of the old versions to continue.";
    } else if (end == FileTransfer::End::kNotRenamed) {
        failure.title = failure.status = "Rename Error";
        failure.text = "File didn't rename, please check acrobat\n\nFROM:" + places;
    } else {
        failure.text = "File didn't move\n\nFROM:" + places + " (this message does not show in NT services)";
    }
    Report(failure);
}

PostPrint::Attempt PostPrint::AttemptOf(FileResult result, bool mayGoBetter) {
    if (result == FileResult::kDone) return Attempt::kDone;
    if (!mayGoBetter) return Attempt::kHopeless;
    return result == FileResult::kBusy ? Attempt::kInUse : Attempt::kRefused;
}

// A folder that has refused one file to the end is not asked as often for the next.
bool PostPrint::Retry(const std::string& folder, const std::function<Attempt()>& attempt) {
    const bool isBad = m_badFolders.count(folder) > 0;
    const std::int64_t extra = std::max<std::int64_t>(0, m_services.options.m_extraMoveRetry);
    const std::int64_t attempts = isBad ? 1 : kAttempts + extra;
    for (std::int64_t i = 1;; ++i) {
        const Attempt result = attempt();
        if (result == Attempt::kDone) m_badFolders.erase(folder);
        if (result == Attempt::kDone || result == Attempt::kHopeless) return result == Attempt::kDone;
        if (i == attempts && result == Attempt::kRefused) m_badFolders.insert(folder);
        if (i == attempts || m_isStopped()) return false;
        m_services.loop.Wait(kMillisecondsBetweenAttempts);
        if (m_isStopped()) return false;
    }
}

void PostPrint::PauseBeforeMove() {
    const std::int64_t steps = std::int64_t{kPauseStepsInSecond} * m_services.options.m_pauseMove;
    for (std::int64_t step = 0; step < steps && !m_isStopped(); ++step)
        m_services.loop.Wait(kMillisecondsInPauseStep);
}

void PostPrint::Report(const Failure& failure) {
    const Order& order = failure.order;
    m_lastFailure = Format("not %s: %s", WordFor(ParseMoveTo(order.moveTo).action), failure.reason);
    const LocalTime now = m_services.clock.ToLocal(m_services.clock.Now());
    if (m_notices != nullptr)
        m_notices->Notify(kNoticePrintError, ErrorNoticeBody(now, failure.status, order.path), "");
    if (!m_services.options.m_errorLog) {
        m_services.prompts.ShowBox(failure.title, failure.text);
        return;
    }
    ErrorRecord record;
    record.source = order.path;
    record.destination = failure.target;
    record.error = Format("%s: %s", failure.title, failure.reason);
    record.printer = order.printer;
    if (m_services.errorLog.Append(record) != 0) m_errorLogFailed = true;
}

bool PostPrint::AtRunEnd(PrintList& list, int passes) {
    for (const std::string& job : TakePrintedJobs(list, passes)) EraseFile({job, "qprjobdelete", "", "", ""});
    m_badFolders.clear();
    const bool hasFailed = std::exchange(m_errorLogFailed, false);
    if (hasFailed) m_services.prompts.ShowBox("Log File Error", "Can't open error.log for writing");
    TellHandled();
    return !hasFailed;
}

std::vector<std::string> PostPrint::TakePrintedJobs(PrintList& list, int passes) {
    std::set<std::string> jobs = std::exchange(m_jobsToErase, {});
    for (const std::string& job : std::exchange(m_jobsToKeep, {})) jobs.erase(job);
    for (int row = 0; row < list.RowCount() && !jobs.empty(); ++row) {
        const RunMark& mark = list.MarkOf(row);
        const bool isTicked = list.Text(row, kColumnSelected) == "Yes";
        if (mark.outcome > RowOutcome::kDone || (isTicked && mark.printed != passes))
            jobs.erase(std::string(list.JobFileOf(row)));
    }
    return {jobs.begin(), jobs.end()};
}

void PostPrint::TellHandled() {
    const std::string lines = std::exchange(m_handled, {});
    if (lines.empty() || m_notices == nullptr) return;
    const std::string time = FormatDateTime(m_services.clock.ToLocal(m_services.clock.Now()));
    m_notices->Notify(kNoticeFilesHandled,
                      Format("Date/Time:%s\r\nStatus: Print(s) Finished\r\n%s", time, lines), "");
}

}  // namespace quirepress
