#include <memory>
#include <nlohmann/json.hpp>

#include "app/application.h"
#include "backends/balance.h"
#include "backends/queue_watch.h"
#include "base/text.h"
#include "console/commands.h"
#include "console/context.h"
#include "console/run_session.h"

namespace quirepress {

namespace {

int ChoosePrinter(Context& context, const std::string& allowed) {
    Application* application = context.OpenApplicationWithSpooler();
    if (application == nullptr) return kExitNoPrinter;
    if (!CheckBalancedPrinters(context, *application, allowed)) return kExitUsage;
    const BalanceChoice choice =
        application->Balance().Choose(ParseBalancedPrinters(allowed, application->BalancedPrinters()));
    if (context.WantsJson()) {
        nlohmann::json printer = nullptr;
        if (choice.index != 0) printer = ToUtf8ForDisplay(choice.printer);
        context.PrintJson(
            {{"printer", printer}, {"index", choice.index}, {"prs", ToUtf8ForDisplay(choice.prs)}});
    } else if (choice.index == 0) {
        context.Complain("no printer has room: a document would go to the printer used last");
    } else {
        context.Print(ToPrintableLine(choice.printer) + "\n");
    }
    return kExitDone;
}

int CheckBalance(Context& context) {
    Application* application = context.OpenApplication();
    if (application == nullptr) return kExitNotAllDone;
    const std::vector<std::string> messages = CheckBalanceOptions(application->BalancedPrinters());
    std::string lines;
    for (const std::string& message : messages) lines += message + "\n";
    const int exitCode = messages.empty() ? kExitDone : kExitNotAllDone;
    if (context.WantsJson()) {
        const std::string text = lines.substr(0, lines.empty() ? 0 : lines.size() - 1);
        context.PrintJson({{"result", exitCode}, {"message", text}, {"messages", messages}});
    } else {
        context.Print(lines);
    }
    return exitCode;
}

struct VerdictRequest {
    std::string printer;
    WatchedItem item;
};

std::string DescribeVerdict(const QueueScan& scan) {
    if (!scan.found) return "no job";
    const std::string job = "job " + std::to_string(scan.job.id);
    switch (scan.verdict) {
        case queue_verdict::kSpooling:
            return job + " is spooling, or something holds it back";
        case queue_verdict::kPrinted:
            return job + " is printed";
        case queue_verdict::kPrinting:
            return job + " is printing, or waits to be printed";
        case queue_verdict::kDeleting:
            return job + " is being deleted";
        default:
            return job + " is held up";
    }
}

int ShowVerdict(Context& context, const VerdictRequest& request) {
    Application* application = context.OpenApplicationWithSpooler();
    if (application == nullptr) return kExitNoPrinter;
    const QueueScan scan = application->Watch().ListJobsForPrinter(request.printer, request.item);
    if (!scan.listed) {
        context.PrintResult(kExitNoPrinter, "There is no printer \"" + request.printer + "\".");
        return kExitNoPrinter;
    }
    if (context.WantsJson()) {
        nlohmann::json job = nullptr;
        if (scan.found) job = scan.job.id;
        context.PrintJson({{"verdict", scan.verdict}, {"job", job}});
    } else {
        context.Print(std::to_string(scan.verdict) + " (" + DescribeVerdict(scan) + ")\n");
    }
    return kExitDone;
}

}  // namespace

void DefineBalanceCommands(CommandSet& commands) {
    Context& context = commands.m_context;
    CLI::App* balance =
        commands.Add(commands.m_program, "balance", "Spread documents over several printers",
                     {"qpr settings set balance PRINTER1 Office", "qpr settings set balance SPOOL1 3",
                      "qpr settings set balance PRINTER2 Cellar", "qpr balance check", "qpr balance choose"});
    balance->require_subcommand(1);

    auto allowed = std::make_shared<std::string>();
    CLI::App* choose =
        commands.Add(*balance, "choose", "Show the printer that the next document would go to",
                     {"qpr balance choose", "qpr --json balance choose --balanced-printers 1,3"});
    choose
        ->add_option("--balanced-printers", *allowed,
                     "Only these, by their numbers (1 to 10) or names, with , or ; between")
        ->type_name("LIST");
    commands.RunWith(choose, [allowed, &context] { return ChoosePrinter(context, *allowed); });

    CLI::App* check = commands.Add(*balance, "check", "Tell what is wrong with the settings (exit code 1)",
                                   {"qpr balance check"});
    commands.RunWith(check, [&context] { return CheckBalance(context); });
}

void DefineQueueVerdict(CommandSet& commands, CLI::App& queue) {
    Context& context = commands.m_context;
    CLI::App* verdict =
        commands.Add(queue, "verdict", "Scan a queue once for the job of a file, as a run does",
                     {"qpr queue verdict Office /in/report.pdf", "qpr --json queue verdict Office a.doc"});
    auto request = std::make_shared<VerdictRequest>();
    verdict->add_option("PRINTER", request->printer, "The printer")->required()->type_name("");
    verdict->add_option("FILE", request->item.path, "The file")->required()->type_name("");
    verdict->add_option("--job", request->item.jobId, "Look for the job of this id instead")->type_name("ID");
    commands.RunWith(verdict, [request, &context] { return ShowVerdict(context, *request); });
}

}  // namespace quirepress
