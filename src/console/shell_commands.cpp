#include <memory>
#include <nlohmann/json.hpp>

#include "app/application.h"
#include "backends/direct_print.h"
#include "backends/script_run.h"
#include "backends/shell_print.h"
#include "base/text.h"
#include "console/commands.h"
#include "console/context.h"
#include "console/table.h"
#include "core/list_item.h"
#include "core/print_run_shell.h"
#include "platform/spooler.h"
#include "settings/print_commands.h"

namespace quirepress {

namespace {

struct CommandRequest {
    std::vector<std::string> files;
    std::string printer;
};

// How one file would get to paper.
struct ShownWay {
    std::string way;
    std::string command, line, program;  // of the ways by a command
    std::string message;                 // why there is none
};

ShownWay ShowShellWay(const ShellCommand& command) {
    ShownWay shown{"", command.Name(), command.Line(), command.program, command.flaw};
    switch (command.way) {
        case ShellCommand::Way::kNone:
            shown.way = "none";
            break;
        case ShellCommand::Way::kBroken:
            shown.way = "broken";
            break;
        case ShellCommand::Way::kMakesPdf:
            shown.way = "pdf";
            break;
        case ShellCommand::Way::kPrints:
        case ShellCommand::Way::kSystem:
            shown.way = "program";
            break;
    }
    return shown;
}

ShownWay FindWay(Application& application, ShellPrinter& shellPrinter, const std::string& printer,
                 const std::string& path) {
    if (IsScript(path)) return {"script", {}, {}, {}, {}};
    if (KindOfItem(path) != ItemKind::kDocument) return {"item", {}, {}, {}, {}};
    if (IsDirectPrintFile(application.Options(), path)) return {"raw", {}, {}, {}, {}};
    if (application.PrintSpooler().TakesDocument(printer, path)) return {"document", {}, {}, {}, {}};
    return ShowShellWay(shellPrinter.FindCommand(printer, path));
}

bool IsUsable(const ShownWay& shown) {
    return shown.way != "none" && shown.way != "broken";
}

nlohmann::json ToJson(const std::string& path, const ShownWay& shown) {
    return {{"file", ToUtf8ForDisplay(path)},
            {"way", shown.way},
            {"command", ToUtf8ForDisplay(shown.command)},
            {"line", ToUtf8ForDisplay(shown.line)},
            {"program", ToUtf8ForDisplay(shown.program)},
            {"message", ToUtf8ForDisplay(shown.message)}};
}

int ShowCommands(Context& context, const CommandRequest& request) {
    Application* application = context.OpenApplicationWithSpooler();
    if (application == nullptr) return kExitNoPrinter;
    const std::string printer =
        request.printer.empty() ? application->PrintSpooler().DefaultPrinter() : request.printer;
    int exitCode = kExitDone;
    nlohmann::json list = nlohmann::json::array();
    Table table({{"File", false, 40}, {"Way"}, {"Command", false, 90}});
    for (const std::string& path : request.files) {
        const ShownWay shown = FindWay(*application, application->PrintCommands(), printer, path);
        if (!IsUsable(shown)) exitCode = kExitNotAllDone;
        list.push_back(ToJson(path, shown));
        table.AddRow({path, shown.way, shown.message.empty() ? shown.line : shown.message});
    }
    if (context.WantsJson())
        context.PrintJson({{"printer", ToUtf8ForDisplay(printer)},
                           {"settings", ToUtf8ForDisplay(application->PathOf(kPrintCommandsFile))},
                           {"files", list}});
    else
        context.Print(table.Render(context.OutputHasColours()));
    return exitCode;
}

}  // namespace

void DefineShellCommands(CommandSet& commands) {
    CLI::App* command = commands.Add(
        commands.m_program, "command", "Show by which way, and which command, files would be printed",
        {"qpr command report.docx page.html", "qpr --json command --printer Office report.docx"});
    auto request = std::make_shared<CommandRequest>();
    command->add_option("FILE", request->files, "Files; they need not exist")->required()->type_name("");
    command->add_option("--printer", request->printer, "The printer; else the default printer")
        ->type_name("NAME");
    commands.RunWith(command,
                     [request, &context = commands.m_context] { return ShowCommands(context, *request); });
}

}  // namespace quirepress
