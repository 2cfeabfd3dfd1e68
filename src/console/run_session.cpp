#include "console/run_session.h"

#include <nlohmann/json.hpp>

#include "app/application.h"
#include "backends/balance_check.h"
#include "base/credentials.h"
#include "base/format.h"
#include "base/text.h"
#include "console/context.h"
#include "console/delivery.h"
#include "console/progress.h"
#include "console/row_output.h"
#include "console/table.h"
#include "core/print_run.h"
#include "core/run_outcomes.h"
#include "platform/event_loop.h"
#include "platform/interrupts.h"
#include "platform/spooler.h"

namespace quirepress {

namespace {

// Ctrl-C ends the run in order; the platform ends the program at the second.
class StopOnInterrupt {
public:
    StopOnInterrupt(EventLoop& loop, PrintRun& run) : m_loop(loop) {
        m_task = m_loop.AddPumpTask([&run] {
            if (InterruptCount() > 0 && run.IsRunning()) run.Stop();
            return false;
        });
    }
    ~StopOnInterrupt() { m_loop.RemovePumpTask(m_task); }
    StopOnInterrupt(const StopOnInterrupt&) = delete;
    StopOnInterrupt& operator=(const StopOnInterrupt&) = delete;

private:
    EventLoop& m_loop;
    int m_task;
};

int ExitCodeOf(const RunSummary& summary) {
    switch (summary.end) {
        case RunSummary::End::kStopped:
            return kExitStopped;
        case RunSummary::End::kNoPrinter:
            return kExitNoPrinter;
        case RunSummary::End::kNothingToPrint:
        case RunSummary::End::kRefused:
            return kExitNotAllDone;
        case RunSummary::End::kFinished:
            break;
    }
    const bool isGood = summary.failed + summary.skipped + summary.notFiled == 0 && !summary.hasLostRecords &&
                        !summary.isDefaultChanged;
    return isGood ? kExitDone : kExitNotAllDone;
}

// Of the printers that the run has used; before it has used any, of its own.
std::string NamesOf(const RunSummary& summary, const std::string& printer) {
    std::string names;
    for (const std::string& used : summary.printers) names += (names.empty() ? "" : ", ") + used;
    return names.empty() ? printer : names;
}

void PrintSummary(Context& context, Application& application, const std::string& printer,
                  const RunSummary& summary, const DeliveryReport& delivery) {
    if (context.WantsJson()) {
        context.PrintJson({{"printer", ToUtf8ForDisplay(printer)},
                           {"rows", RowsToJson(application.List())},
                           {"done", summary.done},
                           {"failed", summary.failed},
                           {"skipped", summary.skipped},
                           {"not_filed", summary.notFiled},
                           {"seconds", summary.seconds},
                           {"queued", delivery.jobsLeft},
                           {"stalled", delivery.hasStalled},
                           {"unknown", delivery.unknown.size()}});
        return;
    }
    const bool colours = context.OutputHasColours();
    context.Print(RenderRows(application.List(), colours));
    const std::string counts =
        Format("%d done, %d failed, %d skipped in %.1f s on %s", summary.done, summary.failed,
               summary.skipped, summary.seconds, NamesOf(summary, printer));
    const bool isGood = summary.failed + summary.skipped == 0;
    context.Print(Shaded(ToPrintableLine(counts), isGood ? Shade::kGood : Shade::kBad, colours) + "\n");
    if (summary.notFiled > 0) {
        const std::string count = summary.notFiled == 1 ? "1 file" : Format("%d files", summary.notFiled);
        const std::string line = count + " could not be moved, copied or deleted:";
        context.Print(Shaded(line, Shade::kBad, colours) + "\n");
        for (const std::string& file : summary.filesNotFiled)
            context.Print("    " + ToPrintableLine(HideCredentials(file)) + "\n");
    }
    for (const std::string& used : summary.printers) {
        const std::string folder = OutputFolderOf(application, used);
        if (!folder.empty()) context.Print("The output lies in " + ToPrintableLine(folder) + "\n");
    }
    for (const std::string& line : delivery.lines) context.Print(ToPrintableLine(line) + "\n");
}

}  // namespace

bool CheckPrinterExists(Context& context, Application& application, const std::string& printer) {
    std::vector<PrinterInfo> printers;
    application.PrintSpooler().ListPrinters(printers);
    for (const PrinterInfo& info : printers)
        if (info.name == printer) return true;
    context.PrintResult(kExitNoPrinter, printer.empty() ? "There is no printer."
                                                        : "There is no printer \"" + printer + "\".");
    return false;
}

bool CheckBalancedPrinters(Context& context, Application& application, const std::string& names) {
    const std::string message = FindUnknownBalancedPrinter(names, application.BalancedPrinters());
    if (!message.empty()) context.PrintResult(kExitUsage, "--balanced-printers: " + message);
    return message.empty();
}

int RunAndReport(Context& context, Application& application, const std::string& printer,
                 ProgressLine& progress, const std::function<RunSummary(PrintRun& run)>& start) {
    PrintRun& run = application.Run();
    const StopOnInterrupt stop(*context.System().loop, run);
    run.UseObserver(&progress);
    const RunSummary summary = start(run);
    run.UseObserver(nullptr);
    const bool hasBegun =
        summary.end != RunSummary::End::kNoPrinter && summary.end != RunSummary::End::kNothingToPrint;
    if (!hasBegun) progress.Clear();
    if (!hasBegun && !CheckPrinterExists(context, application, printer)) return kExitNoPrinter;
    const DeliveryReport delivery = DeliverJobs(context, application, progress);
    progress.Clear();
    PrintSummary(context, application, printer, summary, delivery);
    const int unknown = RecordUnknownJobs(application, delivery.unknown);
    if (delivery.wasStopped) return kExitStopped;
    const int exitCode = ExitCodeOf(summary);
    const bool isLeft = delivery.hasStalled || unknown > 0;
    return exitCode == kExitDone && isLeft ? kExitNotAllDone : exitCode;
}

void TellRefusedRun(Application& application, const std::string& printer, int copies,
                    const std::string& why) {
    RunOutcomes& outcomes = application.Outcomes();
    outcomes.BeginRun(printer, copies, [] { return InterruptCount() > 0; });
    outcomes.EndRefusedRun(application.List(), copies, why);
}

}  // namespace quirepress
