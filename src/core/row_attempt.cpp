#include "core/row_attempt.h"

#include <utility>

#include "backends/balance.h"
#include "backends/printer_selection.h"
#include "backends/viewer_windows.h"
#include "base/format.h"
#include "base/text.h"
#include "core/print_list.h"
#include "core/print_run_source.h"
#include "core/run_downloads.h"
#include "core/run_outcomes.h"
#include "core/run_snapshot.h"
#include "logs/debug_log.h"
#include "platform/prompts.h"
#include "settings/general_options.h"

namespace quirepress {

RowAttempt::RowAttempt(const PrintRunServices& services, const RunWays& ways, RowAtWork& row, bool isBalanced)
    : m_services(services),
      m_ways(ways),
      m_row(row),
      m_isBalanced(isBalanced),
      m_jobWait(services.watch, services.loop, services.debugLog, services.options) {}

WayResult RowAttempt::Print(RunItem& item) {
    m_separated.clear();
    WayResult result = Attempt(item);
    if (MayRetry(item, result) && m_row.KeepGoing()) {
        m_row.ShowRowStatus("Retrying...");
        result = Attempt(item);
    }
    return result;
}

bool RowAttempt::MayRetry(const RunItem& item, const WayResult& result) const {
    const GeneralOptions& options = m_services.options;
    if (!options.m_onErrorPrintOneMoreTime || !result.canRetry) return false;
    return !(options.m_dontRetryPdf && IsPdf(item.path));
}

WayResult RowAttempt::Attempt(RunItem& item) {
    if (item.kind == ItemKind::kDownload) {
        WayResult fetched = Download(item);
        if (fetched.end != WayResult::End::kPrinted) return fetched;
    }
    return AttemptBalanced(item);
}

// Once the file is here, the row is a document: `item` is, too.
WayResult RowAttempt::Download(RunItem& item) {
    std::string path;
    WayResult result = m_services.downloads.Fetch(item.path, m_row, path);
    if (result.end != WayResult::End::kPrinted) return result;
    if (m_row.Find()) {
        m_services.list.InsertFileIntoList(path, kReplaceCurrentRow, "", {});
        m_services.snapshot.NoteFetched(m_services.list, m_row.Index());
        item = ReadRunItem(m_services, m_row.Index());
    } else {
        item.path = path;
        item.kind = ItemKind::kDocument;
    }
    return result;
}

// A row that names balanced printers goes to one of them even in a run without balancing. The choice counts
// for this row: those below begin with what the list has set.
WayResult RowAttempt::AttemptBalanced(RunItem item) {
    if (item.kind == ItemKind::kSeparator) return PrintSeparator(RunSeparators::Place::kBefore);
    EndRow();  // of an attempt before
    if (item.kind == ItemKind::kCommand || (!m_isBalanced && item.balancedPrinters.empty())) {
        if (!m_movedDefault.empty()) m_services.selection.MoveDefault(std::exchange(m_movedDefault, {}));
        return AttemptDocument(item);
    }
    m_services.debugLog.Trace("Load balancing\r\n");
    const BalancedSet allowed = ParseBalancedPrinters(item.balancedPrinters, m_services.balanceOptions);
    if (!item.balancedPrinters.empty() && !HasBalancedPrinter(allowed, m_services.balanceOptions)) {
        WayResult result;
        result.status = "Error - Can't Print - no such balanced printer";
        result.remark =
            "Can't Print - " + FindUnknownBalancedPrinter(item.balancedPrinters, m_services.balanceOptions);
        return result;
    }
    BalanceChoice choice = m_services.balance.Choose(allowed);
    std::string message = "none of the balanced printers can be used";
    bool isUsable = !choice.isNoneThere;
    if (isUsable) {
        if (choice.index == 0) choice = m_services.balance.ChooseWithoutRoom(allowed);
        m_listState = m_services.selection.State();
        if (m_movedDefault.empty()) m_movedDefault = m_services.selection.DefaultPrinter();
        // A row that names printers comes out nowhere else.
        isUsable = (choice.index > 0 || item.balancedPrinters.empty()) &&
                   UseBalancedPrinter(choice, m_services.selection, m_services.prompts, message) == 0;
    }
    if (!isUsable) {
        m_services.balance.NoteFailed(choice);
        WayResult result;
        result.status = "Error - Can't Print - the balanced printer can't be used";
        result.remark = "Can't Print - " + message;
        result.canRetry = true;
        return result;
    }
    item.printer = PrinterOfRun(m_services);
    item.ticket = m_services.selection.Ticket();
    if (m_row.Find()) m_services.list.SetText(m_row.Index(), kColumnBalancedPrinterUsed, item.printer);
    WayResult result = AttemptDocument(item);
    if (result.end == WayResult::End::kFailed) m_services.balance.NoteFailed(choice);
    if (result.end != WayResult::End::kPrinted) return result;
    for (const std::int64_t job : result.earlierJobs) m_services.balance.NoteSent(choice, job);
    m_services.balance.NoteSent(choice, result.jobId);
    return result;
}

void RowAttempt::EndRow() {
    if (m_listState) m_services.selection.ComeBackTo(*std::exchange(m_listState, {}));
}

WayResult RowAttempt::AttemptDocument(const RunItem& item) {
    // It may have vanished in a pause or since the attempt before.
    const FileFacts facts = InspectSource(m_services.files, item);
    WayResult result = FindSourceObstacle(item, facts);
    if (!result.status.empty()) return result;
    if (item.kind == ItemKind::kDocument) {
        if (m_row.Find()) {
            m_services.list.MarkOf(m_row.Index()).source = {facts.size, facts.written};
            m_services.snapshot.NotePrinter(m_services.list, m_row.Index(), item.printer);
        }
        // An attempt that goes to another printer needs its own.
        if (std::exchange(m_separated, item.printer) != item.printer) PrintSeparatorBefore(item.printer);
        if (m_row.IsStopped()) return StoppedWay();
        m_row.ShowRowStatus("Printing file:");
    }
    const bool isSettings = EndsWith(item.path, ".prs") || EndsWith(item.path, ".printer");
    if (isSettings) m_services.viewers.CloseAcrobat(ViewerWindows::Occasion::kPrinterSettings);
    result = OfferToWays(item);
    if (result.status == kStatusDidNotSpool) m_services.debugLog.Trace("Can't Print - did not spool\r\n");
    const bool isPrinted = result.end == WayResult::End::kPrinted;
    const std::string& printer = result.printers.empty() ? item.printer : result.printers.back();
    if (isPrinted) m_jobWait.ForAcceptedJob(printer, item.path, result.jobId, m_row);
    m_services.debugLog.Trace("g_didspool: %d and g_bError: %d\r\n", isPrinted, !isPrinted);
    return result;
}

WayResult RowAttempt::PrintSeparator(RunSeparators::Place place) {
    RunItem item;
    std::string message;
    WayResult result;
    const int row = m_row.Index();
    if (m_services.separators.Prepare(place, row, m_row, item, message)) {
        m_row.ShowRowStatus("Spooling separator:" + item.path);
        result = FindSourceObstacle(item, InspectSource(m_services.files, item));
        if (result.status.empty()) result = OfferToWays(item);
        message = result.remark.empty() ? result.status : result.remark;
    }
    if (result.end == WayResult::End::kPrinted) m_services.separators.AwaitClear(item, result.jobId, m_row);
    if (result.end != WayResult::End::kFailed) return result;
    result.remark = Format("%s%s %s", kSeparatorFailed, item.path, message);
    if (result.status != kStatusUnknown) result.status = "Print Error";
    return result;
}

void RowAttempt::PrintSeparatorBefore(const std::string& printer) {
    if (!m_row.Find() || !m_services.separators.IsDueBefore(m_row.Index(), printer)) return;
    const WayResult result = PrintSeparator(RunSeparators::Place::kBefore);
    TellSeparator(result);
    if (result.end == WayResult::End::kPrinted && m_row.Find())
        m_services.separators.NotePrintedBefore(m_row.Index(), printer);
}

void RowAttempt::PrintSeparatorAfter(const WayResult& result) {
    if (!m_row.Find() || result.end == WayResult::End::kStopped) return;
    const bool isPrinted = result.end == WayResult::End::kPrinted;
    if (isPrinted) m_services.separators.NotePrinted(m_row.Index());
    if (m_services.separators.IsDueAfter(m_row.Index(), isPrinted))
        TellSeparator(PrintSeparator(RunSeparators::Place::kAfter));
}

// A document is printed without its separator rather than not at all.
void RowAttempt::TellSeparator(const WayResult& result) {
    if (result.end != WayResult::End::kFailed) return;
    m_services.outcomes.RecordError(kSeparatorText, PrinterOfRun(m_services), result.remark);
    if (!std::exchange(m_hasToldSeparator, true)) m_services.prompts.ShowBox("Print Error", result.remark);
}

WayResult RowAttempt::OfferToWays(const RunItem& item) {
    for (const std::unique_ptr<RunWay>& way : m_ways)
        if (way->Takes(item)) return way->Process(item, m_row);
    return NoWayFor(item);
}

}  // namespace quirepress
