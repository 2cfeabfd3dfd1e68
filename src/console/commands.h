#pragma once

#include <CLI/App.hpp>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quirepress {

class Context;

// Ends the help of each command.
constexpr std::string_view kGeneralOptionsHint =
    "\n\nOptions of every command (--home, --spooler, --stall-limit, --json, ...): qpr --help";

// The commands while they are defined: the one that the user gives leaves its action in `m_chosen`.
struct CommandSet {
    CLI::App& m_program;
    Context& m_context;
    std::function<int()> m_chosen;

    // A command below `parent`; `examples` are whole command lines for its help.
    CLI::App* Add(CLI::App& parent, const std::string& name, const std::string& description,
                  const std::vector<std::string>& examples);
    void RunWith(CLI::App* command, std::function<int()> action);
};

// The items of a command line as the list takes them.
std::vector<std::string> ShowSeparators(std::vector<std::string> items);

void DefinePrintCommands(CommandSet& commands);  // print, list
void DefinePagesCommand(CommandSet& commands);
void DefineRestoreCommands(CommandSet& commands);
void DefineSettingsCommands(CommandSet& commands);
void DefinePrinterCommands(CommandSet& commands);  // printers, queue
void DefineSetupCommands(CommandSet& commands);    // prs, tray
void DefineBalanceCommands(CommandSet& commands);
void DefineQueueVerdict(CommandSet& commands, CLI::App& queue);  // queue verdict
void DefineShellCommands(CommandSet& commands);                  // command
void DefineLogCommands(CommandSet& commands);
void DefineMergeCommands(CommandSet& commands);
void DefineSeparatorCommand(CommandSet& commands);
void DefineNotifyCommands(CommandSet& commands);    // notify, download
void DefineInternalCommands(CommandSet& commands);  // reference, pdf-worker: not shown in the help

}  // namespace quirepress
