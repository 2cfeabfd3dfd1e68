#include "core/print_run.h"

#include <algorithm>
#include <limits>

#include "core/print_list.h"
#include "core/print_run_walk.h"
#include "core/print_run_ways.h"
#include "logs/debug_log.h"
#include "logs/error_log.h"
#include "platform/event_loop.h"
#include "platform/prompts.h"
#include "platform/spooler.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

constexpr int kMonitorTimer = 2;

RunSummary EndedEarly(RunSummary::End end) {
    RunSummary summary;
    summary.end = end;
    return summary;
}

}  // namespace

PrintRun::PrintRun(PrintRunServices services) : m_services(services), m_ways(MakeRunWays(services)) {}
PrintRun::~PrintRun() = default;

RunSummary PrintRun::OnButtonPrint() {
    if (m_isRunning) return EndedEarly(RunSummary::End::kRefused);
    m_isRunning = true;
    m_stop = false;
    const RunSummary summary = RunList();
    m_isRunning = false;
    return summary;
}

RunSummary PrintRun::RunList() {
    DebugLog& debugLog = m_services.debugLog;
    m_services.loop.StopTimer(kMonitorTimer);
    debugLog.Trace("KillTimer(2) 5\r\n");
    if (!HasWork()) return EndedEarly(RunSummary::End::kNothingToPrint);
    m_services.list.RefreshListStatus();
    debugLog.Trace("Items set to ready, OK? %d\r\n", 1);
    m_services.prompts.ShowStatus("Starting");
    if (!CheckPrinterIsValid()) return EndedEarly(RunSummary::End::kNoPrinter);
    const int passes = CountPasses();
    debugLog.Trace("Start printing.\r\n");
    debugLog.Trace("OnButtonPrint() copies: %d\r\n", passes);
    debugLog.Trace("OnButtonPrint() printer: %s\r\n", m_printer);

    RunObserver nobody;
    RunWalk walk(m_services,
                 {m_ways, m_observer != nullptr ? *m_observer : nobody, m_stop, m_printer, passes});
    const RunSummary summary = walk.WalkList();
    if (m_services.options.m_removeItem) RemoveDoneRows(passes);
    if (summary.end == RunSummary::End::kStopped)
        m_services.prompts.ShowStatus("Printing stopped && Monitor stopped");
    return summary;
}

bool PrintRun::HasWork() {
    const PrintList& list = m_services.list;
    const int rows = list.RowCount();
    if (rows == 0) {
        m_services.debugLog.Trace("No Items in the list\r\n");
        return false;
    }
    for (int row = 0; row < rows; ++row)
        if (list.Text(row, kColumnSelected) == "Yes") return true;
    m_services.debugLog.Trace("No Files to Print\r\n");
    m_services.prompts.ShowBox("Print Error!", "No Files to Print");
    return false;
}

// An unknown printer ends the run before a row is touched: nothing could come out.
bool PrintRun::CheckPrinterIsValid() {
    Spooler& spooler = m_services.spooler;
    m_printer = m_chosenPrinter.empty() ? spooler.DefaultPrinter() : m_chosenPrinter;
    std::vector<PrinterInfo> printers;
    spooler.ListPrinters(printers);
    const auto isChosen = [this](const PrinterInfo& printer) { return printer.name == m_printer; };
    if (!m_printer.empty() && std::any_of(printers.begin(), printers.end(), isChosen)) {
        m_services.debugLog.Trace("checkPrinterIsValid OK - Printer available: %s\r\n", m_printer);
        return true;
    }
    m_services.debugLog.Trace("checkPrinterIsValid - Printer not available: %s\r\n", m_printer);
    const std::string status = "Printer not available:" + m_printer;
    m_services.prompts.ShowStatus(status);
    if (m_services.options.m_errorLog) {
        ErrorRecord record;
        record.error = status;
        record.printer = m_printer;
        m_services.errorLog.Append(record);
    }
    return false;
}

int PrintRun::CountPasses() const {
    const GeneralOptions& options = m_services.options;
    const std::int64_t copies = std::max(1, m_copies > 0 ? m_copies : options.m_printCopies);
    const std::int64_t repeats = std::max(1, options.m_printCopiesRepeat);
    return static_cast<int>(std::min<std::int64_t>(copies * repeats, std::numeric_limits<int>::max()));
}

// After the last walk, since a row that leaves earlier would miss its further copies.
void PrintRun::RemoveDoneRows(int passes) {
    PrintList& list = m_services.list;
    for (int row = list.RowCount() - 1; row >= 0; --row)
        if (list.MarkOf(row).printed == passes) list.RemoveRow(row);
}

}  // namespace quirepress
