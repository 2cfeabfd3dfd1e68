#include "core/row_attempt.h"

#include "backends/balance.h"
#include "backends/printer_selection.h"
#include "backends/viewer_windows.h"
#include "base/text.h"
#include "core/print_list.h"
#include "core/print_run_source.h"
#include "core/run_downloads.h"
#include "logs/debug_log.h"
#include "settings/general_options.h"

namespace quirepress {

RowAttempt::RowAttempt(const PrintRunServices& services, const RunWays& ways, RowAtWork& row, bool isBalanced)
    : m_services(services),
      m_ways(ways),
      m_row(row),
      m_isBalanced(isBalanced),
      m_jobWait(services.watch, services.loop, services.debugLog, services.options) {}

WayResult RowAttempt::Print(RunItem& item) {
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
        item = ReadRunItem(m_services, m_row.Index());
    } else {
        item.path = path;
        item.kind = ItemKind::kDocument;
    }
    return result;
}

// A row that names balanced printers goes to one of them even in a run without balancing.
WayResult RowAttempt::AttemptBalanced(RunItem item) {
    if (item.kind == ItemKind::kCommand || !(m_isBalanced || !item.balancedPrinters.empty()))
        return AttemptDocument(item);
    m_services.debugLog.Trace("Load balancing\r\n");
    const BalanceChoice choice =
        m_services.balance.Choose(ParseBalancedPrinters(item.balancedPrinters, m_services.balanceOptions));
    std::string message;
    if (UseBalancedPrinter(choice, m_services.selection, m_services.prompts, message) != 0) {
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
    if (result.end == WayResult::End::kPrinted) m_services.balance.NoteSent(choice, result.jobId);
    return result;
}

WayResult RowAttempt::AttemptDocument(const RunItem& item) {
    // It may have vanished in a pause or since the attempt before.
    const FileFacts facts = InspectSource(m_services.files, item);
    WayResult result = FindSourceObstacle(item, facts);
    if (!result.status.empty()) return result;
    if (item.kind == ItemKind::kDocument) {
        if (m_row.Find()) m_services.list.MarkOf(m_row.Index()).source = {facts.size, facts.written};
        m_row.ShowRowStatus("Printing file:");
    }
    const bool isSettings = EndsWith(item.path, ".prs") || EndsWith(item.path, ".printer");
    if (isSettings) m_services.viewers.CloseAcrobat(ViewerWindows::Occasion::kPrinterSettings);
    result = OfferToWays(item);
    if (result.status == kStatusDidNotSpool) m_services.debugLog.Trace("Can't Print - did not spool\r\n");
    const bool isPrinted = result.end == WayResult::End::kPrinted;
    if (isPrinted) m_jobWait.ForAcceptedJob(item.printer, item.path, result.jobId, m_row);
    m_services.debugLog.Trace("g_didspool: %d and g_bError: %d\r\n", isPrinted, !isPrinted);
    return result;
}

WayResult RowAttempt::OfferToWays(const RunItem& item) {
    for (const std::unique_ptr<RunWay>& way : m_ways)
        if (way->Takes(item)) return way->Process(item, m_row);
    return NoWayFor(item);
}

}  // namespace quirepress
