#include <memory>
#include <nlohmann/json.hpp>

#include "app/application.h"
#include "backends/status_words.h"
#include "base/text.h"
#include "console/commands.h"
#include "console/context.h"
#include "console/delivery.h"
#include "console/progress.h"
#include "console/table.h"
#include "platform/spooler.h"

namespace quirepress {

namespace {

int ListPrinters(Context& context) {
    Application* application = context.OpenApplicationWithSpooler();
    if (application == nullptr) return kExitNoPrinter;
    std::vector<PrinterInfo> printers;
    if (application->PrintSpooler().ListPrinters(printers) != 0) {
        context.PrintResult(kExitNoPrinter, "The printers can't be read.");
        return kExitNoPrinter;
    }
    nlohmann::json list = nlohmann::json::array();
    Table table({{"Printer"}, {"Default"}, {"Jobs", true}, {"Status"}, {"Port"}, {"Message", false, 90}});
    for (const PrinterInfo& printer : printers) {
        const std::string status(PrinterStatusWord(printer.statusBits, printer.jobs));
        list.push_back({{"name", ToUtf8ForDisplay(printer.name)},
                        {"port", ToUtf8ForDisplay(printer.port)},
                        {"jobs", printer.jobs},
                        {"status_bits", printer.statusBits},
                        {"status", status},
                        {"message", ToUtf8ForDisplay(printer.statusText)},
                        {"default", printer.isDefault}});
        table.AddRow({printer.name, printer.isDefault ? "Yes" : "", std::to_string(printer.jobs), status,
                      printer.port, printer.statusText});
    }
    if (context.WantsJson())
        context.PrintJson({{"printers", list}});
    else
        context.Print(table.Render(context.OutputHasColours()));
    return printers.empty() ? kExitNoPrinter : kExitDone;
}

int DefaultPrinter(Context& context, const std::string& name) {
    Application* application = context.OpenApplicationWithSpooler();
    if (application == nullptr) return kExitNoPrinter;
    Spooler& spooler = application->PrintSpooler();
    if (!name.empty() && spooler.MakeDefaultPrinter(name) != 0) {
        std::vector<JobInfo> jobs;
        const bool exists = spooler.ListJobs(name, jobs) == 0;
        context.PrintResult(
            1, exists ? "The default printer can't be changed." : "There is no printer \"" + name + "\".");
        return exists ? kExitNotAllDone : kExitNoPrinter;
    }
    const std::string printer = spooler.DefaultPrinter();
    context.PrintResult(0, printer);
    return printer.empty() ? kExitNoPrinter : kExitDone;
}

// One of the embedded spooler's own operations; on another print system the message names its tool.
int Administer(Context& context,
               const std::function<int(PrinterAdministration&, std::string& message)>& operation) {
    Application* application = context.OpenApplicationWithSpooler();
    if (application == nullptr) return kExitNoPrinter;
    PrinterAdministration* administration = application->Administration();
    if (administration == nullptr) {
        const bool isCups = application->PrintSpooler().SystemName() == "cups";
        context.PrintResult(kExitUsage, isCups ? "On CUPS, use lpadmin, cupsenable and cupsdisable."
                                               : "Use the system's own printer settings.");
        return kExitUsage;
    }
    std::string message;
    const int result = operation(*administration, message);
    context.PrintResult(result, message);
    if (result == 0) return kExitDone;
    return result == 1 ? kExitUsage : result == 2 ? kExitNoPrinter : kExitNotAllDone;
}

int ListQueue(Context& context, std::string printer) {
    Application* application = context.OpenApplicationWithSpooler();
    if (application == nullptr) return kExitNoPrinter;
    Spooler& spooler = application->PrintSpooler();
    if (printer.empty()) printer = spooler.DefaultPrinter();
    std::vector<JobInfo> jobs;
    if (spooler.ListJobs(printer, jobs) != 0) {
        context.PrintResult(kExitNoPrinter, "There is no printer \"" + printer + "\".");
        return kExitNoPrinter;
    }
    nlohmann::json list = nlohmann::json::array();
    Table table({{"Id", true},
                 {"Position", true},
                 {"Priority", true},
                 {"Submitted"},
                 {"User"},
                 {"Status"},
                 {"Document", false, 80},
                 {"Message", false, 90}});
    for (const JobInfo& job : jobs) {
        const std::string submitted = FormatDateTime(job.submitted);
        const std::string status = JobStatusWords(job.statusBits);
        list.push_back({{"id", job.id},
                        {"document", ToUtf8ForDisplay(job.document)},
                        {"user", ToUtf8ForDisplay(job.user)},
                        {"status_bits", job.statusBits},
                        {"status", status},
                        {"message", ToUtf8ForDisplay(job.statusText)},
                        {"priority", job.priority},
                        {"position", job.position},
                        {"pages", job.totalPages},
                        {"pages_printed", job.pagesPrinted},
                        {"size", job.size},
                        {"options", ToUtf8ForDisplay(job.options)},
                        {"submitted", submitted}});
        const bool isBad = (job.statusBits & job_status::kError) != 0;
        table.AddRow({std::to_string(job.id), std::to_string(job.position), std::to_string(job.priority),
                      submitted, job.user, status, job.document, job.statusText},
                     isBad ? Shade::kBad : Shade::kPlain);
    }
    if (context.WantsJson())
        context.PrintJson({{"jobs", list}});
    else
        context.Print(table.Render(context.OutputHasColours()));
    return kExitDone;
}

struct JobOptions {
    std::string printer;
    std::int64_t id = 0;
};

int CancelJob(Context& context, const JobOptions& job) {
    Application* application = context.OpenApplicationWithSpooler();
    if (application == nullptr) return kExitNoPrinter;
    const bool isDone = application->PrintSpooler().CancelJob(job.printer, job.id) == 0;
    const std::string text = "job " + std::to_string(job.id) + " of " + job.printer;
    context.PrintResult(isDone ? 0 : 1, isDone ? "Cancelled " + text : "There is no " + text + ".");
    return isDone ? kExitDone : kExitNotAllDone;
}

// Delivers what the queues hold, as any run does before it ends.
int DeliverQueue(Context& context) {
    Application* application = context.OpenApplicationWithSpooler();
    if (application == nullptr) return kExitNoPrinter;
    ProgressLine progress(*context.System().terminal, application->List(), context.ErrorsHaveColours());
    const DeliveryReport report = DeliverJobs(context, *application, progress);
    progress.Clear();
    RecordUnknownJobs(*application, report.unknown);
    if (context.WantsJson()) {
        context.PrintResult(report.jobsLeft, report.jobsLeft == 0 ? "" : "Jobs are left in the queue.");
    } else {
        for (const std::string& line : report.lines) context.Print(ToPrintableLine(line) + "\n");
    }
    if (report.wasStopped) return kExitStopped;
    return report.jobsLeft == 0 ? kExitDone : kExitNotAllDone;
}

void DefineAdministration(CommandSet& commands, CLI::App* printers) {
    Context& context = commands.m_context;
    using Operation = int (PrinterAdministration::*)(std::string_view, std::string&);
    const auto define = [&](const char* verb, const char* description, Operation operation) {
        CLI::App* command =
            commands.Add(*printers, verb, description, {std::string("qpr printers ") + verb + " Label"});
        auto name = std::make_shared<std::string>();
        command->add_option("NAME", *name, "The printer")->required()->type_name("");
        commands.RunWith(command, [name, operation, &context] {
            return Administer(context, [&](PrinterAdministration& administration, std::string& message) {
                return (administration.*operation)(*name, message);
            });
        });
    };
    CLI::App* add = commands.Add(*printers, "add", "Make a printer of the embedded spooler",
                                 {"qpr printers add Label --port socket://192.0.2.7:9100",
                                  "qpr printers add Floor2 --port lpd://printserver/raw",
                                  "qpr printers add Archive --port folder:/srv/archive"});
    auto name = std::make_shared<std::string>();
    auto port = std::make_shared<std::string>("folder:");
    add->add_option("NAME", *name, "The printer")->required()->type_name("");
    add->add_option("--port", *port,
                    "folder:[DIR], socket://HOST[:PORT], lpd://HOST[:PORT]/QUEUE or null: (default folder:)")
        ->type_name("PORT");
    commands.RunWith(add, [name, port, &context] {
        const auto create = [&](PrinterAdministration& administration, std::string& message) {
            return administration.CreatePrinterQueue(*name, *port, message);
        };
        const int exitCode = Administer(context, create);
        return exitCode == kExitNoPrinter ? kExitNotAllDone : exitCode;  // there is one already
    });
    define("remove", "Remove a printer of the embedded spooler", &PrinterAdministration::RemovePrinterQueue);
    define("pause", "Keep the jobs of a printer in its queue", &PrinterAdministration::PausePrinterQueue);
    define("resume", "Print what a paused printer has kept", &PrinterAdministration::ResumePrinterQueue);
}

CLI::App* DefineJobCommand(CommandSet& commands, CLI::App* queue, const char* verb, const char* description,
                           const std::shared_ptr<JobOptions>& job) {
    CLI::App* command =
        commands.Add(*queue, verb, description, {std::string("qpr queue ") + verb + " Label 7"});
    command->add_option("PRINTER", job->printer, "The printer")->required()->type_name("");
    command->add_option("JOB", job->id, "The job's id")->required()->type_name("");
    return command;
}

void DefineQueue(CommandSet& commands) {
    Context& context = commands.m_context;
    CLI::App* queue = commands.Add(commands.m_program, "queue", "Show the jobs of a printer, or act on them",
                                   {"qpr queue", "qpr queue Label", "qpr queue cancel Label 7"});
    queue->require_subcommand(0, 1);
    auto printer = std::make_shared<std::string>();
    queue->add_option("PRINTER", *printer, "The printer; else the default printer")->type_name("");
    commands.RunWith(queue, [printer, &context] { return ListQueue(context, *printer); });

    auto cancelled = std::make_shared<JobOptions>();
    CLI::App* cancel = DefineJobCommand(commands, queue, "cancel", "Take a job out of the queue", cancelled);
    commands.RunWith(cancel, [cancelled, &context] { return CancelJob(context, *cancelled); });

    auto restarted = std::make_shared<JobOptions>();
    CLI::App* restart = DefineJobCommand(commands, queue, "restart",
                                         "Print a job whose outcome is unknown once more", restarted);
    commands.RunWith(restart, [restarted, &context] {
        return Administer(context, [&](PrinterAdministration& administration, std::string& message) {
            return administration.RestartJob(restarted->printer, restarted->id, message);
        });
    });

    CLI::App* deliver = commands.Add(*queue, "deliver", "Deliver what the embedded spooler's queues hold",
                                     {"qpr queue deliver"});
    commands.RunWith(deliver, [&context] { return DeliverQueue(context); });
    DefineQueueVerdict(commands, *queue);
}

}  // namespace

void DefinePrinterCommands(CommandSet& commands) {
    Context& context = commands.m_context;
    CLI::App* printers = commands.Add(commands.m_program, "printers", "Show the printers, or change them",
                                      {"qpr printers", "qpr --json printers", "qpr printers default Office"});
    printers->require_subcommand(0, 1);
    commands.RunWith(printers, [&context] { return ListPrinters(context); });

    CLI::App* standard = commands.Add(*printers, "default", "Show or set the default printer",
                                      {"qpr printers default", "qpr printers default Office"});
    auto name = std::make_shared<std::string>();
    standard->add_option("NAME", *name, "The new default printer")->type_name("");
    commands.RunWith(standard, [name, &context] { return DefaultPrinter(context, *name); });
    DefineAdministration(commands, printers);
    DefineQueue(commands);
}

}  // namespace quirepress
