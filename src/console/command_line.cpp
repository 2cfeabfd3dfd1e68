#include "console/command_line.h"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <sstream>

#include "base/text.h"
#include "console/commands.h"
#include "console/context.h"
#include "core/list_item.h"
#include "platform/interrupts.h"
#include "platform/terminal.h"

namespace quirepress {

namespace {

constexpr const char* kVersionText = "Quirepress 6.04";

// A separator row is written "-------Separator-------", which reads like an option: it travels through the
// parser under a name that no file can have.
constexpr std::string_view kSeparatorStandIn = "\x01separator";

void HideSeparators(std::vector<std::string>& arguments) {
    for (std::string& argument : arguments)
        if (argument == kSeparatorText) argument = kSeparatorStandIn;
}

// "--name=" is an empty value; the parser would take the next argument for it.
void SplitEmptyValues(std::vector<std::string>& arguments) {
    for (std::size_t i = 0; i < arguments.size() && arguments[i] != "--"; ++i) {
        if (!StartsWith(arguments[i], "--") || !EndsWith(arguments[i], "=")) continue;
        arguments[i].pop_back();
        arguments.insert(arguments.begin() + static_cast<std::ptrdiff_t>(i) + 1, "");
    }
}

void DefineGlobalOptions(CLI::App& program, GlobalOptions& global) {
    program.add_option("--home", global.home, "The working folder: settings, logs, printers and jobs")
        ->type_name("DIR");
    program.add_option("--spooler", global.spooler, "Which print spooler: embedded, cups or windows")
        ->type_name("NAME");
    program
        .add_option("--stall-limit", global.stallLimit,
                    "How long a printer of the embedded spooler may take nothing before its jobs are left in "
                    "the queue (default 600; 0: for ever)")
        ->check(CLI::Range(0, 1'000'000))
        ->type_name("SECONDS");
    program.add_flag("--unattended", global.unattended, "Never ask: messages go to the error log");
    program.add_flag("--debug", global.debug, "Write the debug log, qpr.log in the working folder");
    program.add_flag("--json", global.json, "One JSON document on standard output and nothing else there");
    program.set_version_flag("--version", kVersionText, "Show the version");
}

// Help and version are results; everything else that the parser says is a complaint.
int AnswerParseEnd(Services& services, CLI::App& program, const CLI::ParseError& end) {
    std::ostringstream out;
    std::ostringstream errors;
    program.exit(end, out, errors);
    services.terminal->WriteOutput(out.str());
    if (end.get_exit_code() == 0) return kExitDone;
    // The parser tells of what is missing before it tells of what stands in its place.
    const bool isMissing = end.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError);
    const std::vector<std::string> strange = program.remaining(true);
    if (isMissing && !strange.empty())
        services.terminal->WriteErrors("qpr: There is no command or option \"" +
                                       ToPrintableLine(strange.front()) + "\".\n");
    services.terminal->WriteErrors("qpr: " + errors.str());
    return kExitUsage;
}

}  // namespace

CLI::App* CommandSet::Add(CLI::App& parent, const std::string& name, const std::string& description,
                          const std::vector<std::string>& examples) {
    CLI::App* command = parent.add_subcommand(name, description);
    std::string footer = examples.empty() ? "" : "\nExamples:";
    for (const std::string& example : examples) footer += "\n  " + example;
    command->footer(footer + std::string(kGeneralOptionsHint));
    command->fallthrough();  // --json and the like may stand behind the command too
    return command;
}

void CommandSet::RunWith(CLI::App* command, std::function<int()> action) {
    // The parser tells of the innermost command first, then of those around it.
    command->callback([this, action = std::move(action)] {
        if (!m_chosen) m_chosen = action;
    });
}

std::vector<std::string> ShowSeparators(std::vector<std::string> items) {
    for (std::string& item : items)
        if (item == kSeparatorStandIn) item = kSeparatorText;
    return items;
}

int RunConsole(Services& services, std::vector<std::string> arguments) {
    Context context(services);
    CLI::App program("Prints many documents of mixed types, unattended and repeatably.", "qpr");
    program.allow_windows_style_options(false);
    program.require_subcommand(1);
    program.footer("\nqpr COMMAND --help tells more, with examples.");
    DefineGlobalOptions(program, context.m_global);
    CommandSet commands{program, context, {}};
    DefinePrintCommands(commands);
    DefinePagesCommand(commands);
    DefineRestoreCommands(commands);
    DefinePrinterCommands(commands);
    DefineSetupCommands(commands);
    DefineBalanceCommands(commands);
    DefineShellCommands(commands);
    DefineSettingsCommands(commands);
    DefineMergeCommands(commands);
    DefineSeparatorCommand(commands);
    DefineLogCommands(commands);
    DefineNotifyCommands(commands);
    DefineInternalCommands(commands);

    HideSeparators(arguments);
    SplitEmptyValues(arguments);
    std::reverse(arguments.begin(), arguments.end());  // the parser takes them from the back
    try {
        program.parse(std::move(arguments));
    } catch (const CLI::ParseError& end) {
        return AnswerParseEnd(services, program, end);
    }
    CatchInterrupts();
    const int exitCode = commands.m_chosen ? commands.m_chosen() : kExitUsage;
    if (!context.OutputIsWhole() && exitCode == kExitDone) return kExitNotAllDone;
    return exitCode;
}

}  // namespace quirepress
