#include "console/delivery.h"

#include "app/application.h"
#include "backends/status_words.h"
#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "console/context.h"
#include "console/progress.h"
#include "platform/event_loop.h"
#include "platform/interrupts.h"
#include "platform/spooler.h"

namespace quirepress {

namespace {

constexpr int kLookEvery = 5;  // milliseconds

// What is known of the first job that something is known of.
std::string JobTrouble(Spooler& spooler, const std::string& printer) {
    std::vector<JobInfo> jobs;
    spooler.ListJobs(printer, jobs);
    for (const JobInfo& job : jobs)
        if (!job.statusText.empty()) return Format("job %d: %s", job.id, job.statusText);
    return {};
}

std::string WaitingLine(Spooler& spooler, const PrinterInfo& printer) {
    std::string why = printer.statusText;
    if (why.empty()) why = JobTrouble(spooler, printer.name);
    if (why.empty()) why = PrinterStatusWord(printer.statusBits, 0);
    if (why.empty()) why = "it takes no more for the moment";
    return Format("%s keeps %u waiting: %s", printer.name, static_cast<std::uint64_t>(printer.jobs), why);
}

}  // namespace

DeliveryReport DeliverJobs(Context& context, Application& application, ProgressLine& progress) {
    DeliveryReport report;
    if (application.Administration() == nullptr) return report;
    EventLoop& loop = *context.System().loop;
    loop.Pump();
    for (DeliveryProgress delivery = application.Delivery(); !delivery.isIdle;
         delivery = application.Delivery()) {
        if (InterruptCount() > 0) {
            report.wasStopped = true;
            break;
        }
        const double share = delivery.bytesTotal > 0 ? static_cast<double>(delivery.bytesSent) /
                                                           static_cast<double>(delivery.bytesTotal)
                                                     : 0.0;
        progress.Show(RenderBar(share, 20) + Format(" Delivering, %d waiting", delivery.waiting));
        loop.Wait(kLookEvery);
    }
    std::vector<PrinterInfo> printers;
    Spooler& spooler = application.PrintSpooler();
    spooler.ListPrinters(printers);
    for (const PrinterInfo& printer : printers) {
        report.jobsLeft += static_cast<int>(printer.jobs);
        if (printer.jobs > 0) report.lines.push_back(WaitingLine(spooler, printer));
    }
    return report;
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
