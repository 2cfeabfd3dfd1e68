#include "backends/balance.h"

#include <algorithm>
#include <utility>

#include "backends/printer_selection.h"
#include "backends/printer_settings_file.h"
#include "backends/queue_watch.h"
#include "base/format.h"
#include "base/text.h"
#include "logs/debug_log.h"
#include "platform/event_loop.h"
#include "platform/prompts.h"
#include "platform/spooler.h"

namespace quirepress {

namespace {

// With one of these a printer keeps its jobs waiting.
constexpr std::uint32_t kNotReadyBits = printer_status::kPaused | printer_status::kPendingDeletion |
                                        printer_status::kOffline | printer_status::kNotAvailable;

}  // namespace

PrinterBalance::PrinterBalance(Spooler& spooler, Files& files, EventLoop& loop, Prompts& prompts,
                               DebugLog& debugLog, const BalanceOptions& options)
    : m_spooler(spooler),
      m_files(files),
      m_loop(loop),
      m_prompts(prompts),
      m_debugLog(debugLog),
      m_options(options) {}

BalanceChoice PrinterBalance::Choose(BalancedSet allowed) {
    m_prompts.ShowStatus("Load balancing processing");
    const BalanceOptions options = m_options;  // a pump may load others
    std::vector<PrinterInfo> printers;
    m_spooler.ListPrinters(printers);
    BalanceChoice spare;
    bool isOneReady = false;
    bool isOneNamed = false;
    spare.isNoneThere = true;
    for (std::size_t step = 0; step < kBalancedPrinters; ++step) {
        const std::size_t first = options.m_roundRobin ? static_cast<std::size_t>(m_lastUsed) : 0;
        const std::size_t at = (first + step) % kBalancedPrinters;
        if (options.m_printers[at].name.empty() || !allowed[at]) continue;
        isOneNamed = true;
        BalanceChoice choice = ChoiceOf(at, options.m_printers[at]);
        if (!IsThere(printers, choice)) continue;
        spare.isNoneThere = false;
        const bool isReady = IsReady(printers, choice.printer);
        isOneReady = isOneReady || isReady;
        if (!isReady)
            m_debugLog.Trace("Load balancing, printer passed over, it is not ready: %s\r\n", choice.printer);
        if (!HasRoom(choice.printer, options.m_printers[at].spool)) continue;
        if (isReady) return choice;
        if (spare.index == 0) spare = std::move(choice);
    }
    if (isOneReady || !isOneNamed) return {};
    return spare;
}

BalanceChoice PrinterBalance::ChooseWithoutRoom(BalancedSet allowed) {
    std::vector<PrinterInfo> printers;
    m_spooler.ListPrinters(printers);
    if (allowed.all() && m_lastUsed == 0) return {};
    // From the one used last on; one that stands comes after all others.
    BalanceChoice standing;
    for (std::size_t step = 0; step <= kBalancedPrinters; ++step) {
        if (step == 0 && m_lastUsed == 0) continue;
        const std::size_t at = step == 0 ? static_cast<std::size_t>(m_lastUsed - 1) : step - 1;
        const BalancedPrinter& printer = m_options.m_printers[at];
        if (printer.name.empty() || !allowed[at]) continue;
        BalanceChoice choice = ChoiceOf(at, printer);
        if (!IsThere(printers, choice)) continue;
        if (IsReady(printers, choice.printer)) return choice;
        if (standing.index == 0) standing = std::move(choice);
    }
    return standing;
}

// A settings file may be another printer's, and then it is that one's queue that fills. Without a printer
// where the file can't be used.
BalanceChoice PrinterBalance::ChoiceOf(std::size_t at, const BalancedPrinter& printer) {
    BalanceChoice choice = {static_cast<int>(at) + 1, printer.name, printer.prs};
    if (printer.prs.empty()) return choice;
    PrsContent content;
    DeviceNames names;
    std::string message;
    if (!HasPrintSetup(ReadPrintSetup(m_files, printer.prs, content, message)) ||
        m_spooler.SetupFormat().ReadNames(content.names.bytes, names, message) != 0) {
        TellUnusable(choice, "its settings file " + printer.prs + " can't be used. " + message);
        choice.printer.clear();
    } else {
        choice.printer = names.device.empty() ? m_spooler.DefaultPrinter() : names.device;
    }
    return choice;
}

// Where the printers can't be listed, each may be there.
bool PrinterBalance::IsThere(const std::vector<PrinterInfo>& printers, const BalanceChoice& choice) {
    if (choice.printer.empty()) return false;
    const bool isListed =
        printers.empty() || std::any_of(printers.begin(), printers.end(), [&](const PrinterInfo& printer) {
            return printer.name == choice.printer;
        });
    if (!isListed) TellUnusable(choice, "there is no printer \"" + ToPrintableLine(choice.printer) + "\".");
    return isListed;
}

void PrinterBalance::TellUnusable(const BalanceChoice& choice, const std::string& why) {
    m_debugLog.Trace("Load balancing, printer passed over, it can't be used: %s\r\n", why);
    if (m_told.insert(choice.index).second)
        m_prompts.ShowBox("Printer Load Balancing",
                          Format("Printer %d is passed over: %s", choice.index, why));
}

bool PrinterBalance::HasRoom(const std::string& printer, int limit) {
    std::vector<JobInfo> jobs;
    if (m_spooler.ListJobs(printer, jobs) != 0) {
        m_debugLog.Trace("Load balancing, printer passed over, its queue can't be read: %s\r\n", printer);
        return false;
    }
    const int count = CountWaitingJobs(jobs) + m_unseen.Settle(printer, jobs, m_loop.MonotonicMilliseconds());
    m_prompts.ShowStatus("Load balancing, spooler queue count: " + std::to_string(count));
    return limit <= 0 || count < limit;
}

bool PrinterBalance::IsReady(const std::vector<PrinterInfo>& printers, const std::string& name) {
    const auto printer = std::find_if(printers.begin(), printers.end(),
                                      [&](const PrinterInfo& listed) { return listed.name == name; });
    return printer == printers.end() || (printer->statusBits & kNotReadyBits) == 0;
}

void PrinterBalance::NoteSent(const BalanceChoice& choice, std::int64_t jobId) {
    if (choice.index == 0) return;
    m_lastUsed = choice.index;
    if (jobId > 0) m_unseen.Add(choice.printer, jobId, m_loop.MonotonicMilliseconds());
}

void PrinterBalance::NoteFailed(const BalanceChoice& choice) {
    if (m_options.m_roundRobin && choice.index > 0) m_lastUsed = choice.index;
}

void PrinterBalance::NoteSeen(const BalanceChoice& choice, std::int64_t jobId) {
    m_unseen.Remove(choice.printer, jobId);
}

int UseBalancedPrinter(const BalanceChoice& choice, PrinterSelection& selection, Prompts& prompts,
                       std::string& message) {
    if (choice.index == 0) return 0;
    if (choice.prs.empty()) {
        prompts.ShowStatus("Setting default printer: " + choice.printer);
        return selection.MoveToPrinter(choice.printer, message);
    }
    prompts.ShowStatus("Loading printer settings file: " + choice.prs);
    if (selection.LoadPrinterSettings(choice.prs, message) != 0) return -1;
    prompts.ShowStatus("Printer set to: " + selection.CurrentPrinter());
    return 0;
}

}  // namespace quirepress
