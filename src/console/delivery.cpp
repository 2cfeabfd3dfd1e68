#include "console/delivery.h"

#include <algorithm>

#include "app/application.h"
#include "backends/status_words.h"
#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "console/context.h"
#include "console/progress.h"
#include "core/run_outcomes.h"
#include "platform/event_loop.h"
#include "platform/interrupts.h"
#include "platform/spooler.h"

namespace quirepress {

namespace {

constexpr int kLookEvery = 5;  // milliseconds

constexpr std::string_view kWayOn =
    "See to the printer. Then \"qpr queue deliver\" prints what waits; a job that was being sent is printed "
    "once more by \"qpr queue restart PRINTER JOB\".";

// What keeps a printer's jobs waiting, as far as one of them tells.
std::string JobTrouble(Spooler& spooler, const PrinterInfo& printer) {
    std::vector<JobInfo> jobs;
    spooler.ListJobs(printer.name, jobs);
    for (const JobInfo& job : jobs)
        if (!job.statusText.empty() && !job.isOfUnknownOutcome)
            return Format("job %d (%s): %s", job.id, FileTitle(job.document), job.statusText);
    const std::string_view word = PrinterStatusWord(printer.statusBits, 0);
    if (!word.empty() || jobs.empty()) return std::string(word);
    const auto next =
        std::find_if(jobs.begin(), jobs.end(), [](const JobInfo& job) { return !job.isOfUnknownOutcome; });
    if (next == jobs.end()) return "somebody has to look at the printer whether they came out";
    return Format("it takes no more for the moment; job %d (%s) is the next", next->id,
                  FileTitle(next->document));
}

std::string WaitingLine(Spooler& spooler, const PrinterInfo& printer) {
    const std::string why = printer.statusText.empty() ? JobTrouble(spooler, printer) : printer.statusText;
    return Format("%s keeps %u waiting: %s", printer.name, static_cast<std::uint64_t>(printer.jobs), why);
}

// True when there is a reason to wait no longer.
bool IsOver(Context& context, PrinterAdministration& administration, DeliveryReport& report) {
    const long long limit = 1000LL * context.m_global.stallLimit;
    report.wasStopped = InterruptCount() > 0;
    report.hasStalled = !report.wasStopped && limit > 0 && administration.UnmovedMilliseconds() >= limit;
    return report.wasStopped || report.hasStalled;
}

// Of all printers.
std::vector<UnknownJob> ListJobsOfUnknownOutcome(Application& application) {
    std::vector<UnknownJob> unknown;
    std::vector<PrinterInfo> printers;
    Spooler& spooler = application.PrintSpooler();
    spooler.ListPrinters(printers);
    for (const PrinterInfo& printer : printers) {
        std::vector<JobInfo> jobs;
        if (printer.jobs > 0) spooler.ListJobs(printer.name, jobs);
        for (const JobInfo& job : jobs)
            if (job.isOfUnknownOutcome)
                unknown.push_back({printer.name, job.id, job.document, job.statusText, job.isOutcomeTold});
    }
    return unknown;
}

}  // namespace

DeliveryReport DeliverJobs(Context& context, Application& application, ProgressLine& progress) {
    DeliveryReport report;
    PrinterAdministration* const administration = application.Administration();
    if (administration == nullptr) return report;
    EventLoop& loop = *context.System().loop;
    loop.Pump();
    for (DeliveryProgress delivery = application.Delivery(); !delivery.isIdle;
         delivery = application.Delivery()) {
        if (IsOver(context, *administration, report)) break;
        const double share = delivery.bytesTotal > 0 ? static_cast<double>(delivery.bytesSent) /
                                                           static_cast<double>(delivery.bytesTotal)
                                                     : 0.0;
        progress.Show(RenderBar(share, 20) + Format(" Delivering, %d waiting", delivery.waiting));
        loop.Wait(kLookEvery);
    }
    // From here on the queues say what became of the jobs.
    administration->EndDelivery();
    std::vector<PrinterInfo> printers;
    Spooler& spooler = application.PrintSpooler();
    spooler.ListPrinters(printers);
    for (const PrinterInfo& printer : printers) {
        report.jobsLeft += static_cast<int>(printer.jobs);
        if (printer.jobs == 0) continue;
        report.lines.push_back(WaitingLine(spooler, printer));
    }
    report.unknown = ListJobsOfUnknownOutcome(application);
    for (const UnknownJob& job : report.unknown)
        report.lines.push_back(
            Format("%s, job %d (%s): %s", job.printer, job.id, FileTitle(job.document), job.statusText));
    if (report.hasStalled)
        report.lines.push_back(Format("%d jobs remain in the queue: nothing was taken for %d s. ",
                                      report.jobsLeft, context.m_global.stallLimit) +
                               std::string(kWayOn));
    return report;
}

int RecordUnknownJobs(Application& application, const std::vector<UnknownJob>& jobs) {
    int count = 0;
    for (const UnknownJob& job : jobs) {
        if (job.isTold) continue;
        ++count;
        const std::string error = Format("job %d: %s", job.id, job.statusText);
        application.Outcomes().RecordError(job.document, job.printer, error);
        application.Outcomes().TellFailure(job.document, error);
        application.Administration()->NoteOutcomeTold(job.printer, job.id);
    }
    return count;
}

std::string OutputFolderOf(Application& application, const std::string& printer) {
    constexpr std::string_view kFolderPort = "folder:";
    std::vector<PrinterInfo> printers;
    if (application.Administration() != nullptr) application.PrintSpooler().ListPrinters(printers);
    for (const PrinterInfo& info : printers) {
        if (info.name != printer || info.jobs > 0 || !StartsWith(info.port, kFolderPort)) continue;
        const std::string folder = info.port.substr(kFolderPort.size());
        if (folder.empty()) return JoinPath(JoinPath(application.PathOf("Printers"), printer), "Output");
        return IsAbsolutePath(folder) ? folder : application.PathOf(folder);
    }
    return {};
}

}  // namespace quirepress
