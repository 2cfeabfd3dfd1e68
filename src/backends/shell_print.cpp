#include "backends/shell_print.h"

#include <algorithm>

#include "backends/command_arguments.h"
#include "backends/dialog_watch.h"
#include "backends/printer_selection.h"
#include "base/command_words.h"
#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "logs/debug_log.h"
#include "platform/files.h"
#include "platform/spooler.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

bool HasEndingOf(std::string_view path, std::initializer_list<std::string_view> endings) {
    const std::string ending = ToLowerAscii(FileExtension(path));
    return std::find(endings.begin(), endings.end(), ending) != endings.end();
}

bool IsPdfFile(std::string_view path) {
    return HasEndingOf(path, {".pdf"});
}

bool TakesEnding(const PrintCommand& command, std::string_view ending) {
    return !ending.empty() &&
           std::find(command.types.begin(), command.types.end(), ending) != command.types.end();
}

bool TakesType(const PrintCommand& command, std::string_view type) {
    return !type.empty() &&
           std::any_of(command.types.begin(), command.types.end(), [&](std::string_view each) {
               const bool isFamily = EndsWith(each, "/*");
               return isFamily ? StartsWith(type, each.substr(0, each.size() - 1)) : type == each;
           });
}

// The commands for a file: those for its ending, then those for its type.
std::vector<const PrintCommand*> CommandsFor(const PrintCommandTable& table, std::string_view ending,
                                             std::string_view type) {
    std::vector<const PrintCommand*> found;
    for (const PrintCommand& command : table.commands)
        if (TakesEnding(command, ending)) found.push_back(&command);
    for (const PrintCommand& command : table.commands)
        if (!TakesEnding(command, ending) && TakesType(command, type)) found.push_back(&command);
    return found;
}

}  // namespace

ShellStart::ShellStart() = default;
ShellStart::ShellStart(ShellStart&&) noexcept = default;
ShellStart::~ShellStart() = default;

std::string ShellCommand::Name() const {
    return way == Way::kSystem ? "system" : command.name;
}

std::string ShellCommand::Line() const {
    return way == Way::kSystem ? registered.line : command.line;
}

ShellCommand ShellPrinter::FindCommand(const std::string& printer, const std::string& path) {
    ShellCommand result;
    result.flaw = "no program is registered for such files";
    const PrintCommandTable& table = m_services.commands.Table();
    const std::vector<const PrintCommand*> candidates =
        CommandsFor(table, ToLowerAscii(FileExtension(path)), m_services.shell.TypeOfFile(path));
    for (const PrintCommand* command : candidates) {
        const bool makesPdf = command->action == PrintCommand::Action::kMakesPdf;
        if (makesPdf && IsPdfFile(path)) continue;
        const bool isFirst = result.way == ShellCommand::Way::kNone;
        result.way = ShellCommand::Way::kBroken;
        const std::string program = m_services.shell.FindProgram(command->words[0]);
        const bool fits = !makesPdf || TakesPdf(printer);
        if (!program.empty() && fits) {
            result.way = makesPdf ? ShellCommand::Way::kMakesPdf : ShellCommand::Way::kPrints;
            result.command = *command;
            result.program = program;
            result.flaw.clear();
            return result;
        }
        if (!isFirst) continue;
        result.command = *command;
        result.flaw = fits ? "there is no program \"" + command->words[0] + "\""
                           : "the printer \"" + printer + "\" takes no PDF";
    }
    FindSystemCommand(printer, path, result);
    return result;
}

bool ShellPrinter::TakesPdf(const std::string& printer) {
    return m_services.spooler.TakesDocument(printer, "document.pdf");
}

bool ShellPrinter::FindSystemCommand(const std::string& printer, const std::string& path,
                                     ShellCommand& found) {
    Shell& shell = m_services.shell;
    RegisteredCommand registered;
    bool isThere = false;
    if (IsPhoto(path)) {
        m_services.debugLog.Trace("Check for photo print\r\n");
        isThere = m_services.options.m_xpPhoto && shell.FindPhotoCommand(path, printer, registered);
    }
    isThere = isThere || shell.FindPrintCommand(path, registered);
    if (!isThere) return false;
    found.way = ShellCommand::Way::kSystem;
    found.registered = std::move(registered);
    found.program =
        found.registered.request.arguments.empty() ? std::string() : found.registered.request.arguments[0];
    found.flaw.clear();
    return true;
}

ShellStart ShellPrinter::DoShellExecute(const ShellCommand& command, const std::string& printer,
                                        const std::string& path) {
    ShellStart start;
    start.flaw = command.flaw;
    if (command.way == ShellCommand::Way::kBroken) start.result = ShellStart::kBroken;
    const bool isSystem = command.way == ShellCommand::Way::kSystem;
    if (!isSystem && command.way != ShellCommand::Way::kPrints) return start;
    ProcessRequest request = command.registered.request;
    if (!isSystem) {
        CommandPlaces places;
        places.files = {IsAbsolutePath(path) ? path : JoinPath(m_services.files.ResolvePath("."), path)};
        places.printer = printer;
        request.arguments = FillPlaceholders(command.command.words, places);
    }
    const bool namesPrinter = !isSystem && command.command.Uses("%p");
    if (!namesPrinter && m_services.selection.MoveDefault(printer) != 0) {
        start.result = ShellStart::kBroken;
        start.flaw = "\"" + printer + "\" can't be made the default printer";
        return start;
    }
    request.pipes = true;
    if (m_dialogs != nullptr)
        for (auto& variable : m_dialogs->Services().windows.ProgramEnvironment())
            request.environment.push_back(std::move(variable));
    m_services.debugLog.Trace("ShellExecute: %s\r\n",
                              JoinWords(request.arguments) + " " + request.rawArguments);
    int systemError = 0;
    start.process = m_services.processes.Start(request, systemError);
    start.result = start.process ? ShellStart::kStarted : ShellStart::kBroken;
    if (start.process) {
        start.process->CloseInput();
        if (m_dialogs != nullptr)
            start.dialogs = std::make_unique<DialogWatch>(*m_dialogs, path, *start.process);
    } else {
        start.flaw = Format("\"%s\" can't be started (error %d)", request.arguments[0], systemError);
    }
    m_services.debugLog.Trace("ShellExecute result %d\r\n", start.result);
    return start;
}

ShellStart ShellPrinter::DoShellExecutePDF(const ShellCommand& command, const std::string& printer,
                                           const std::string& path) {
    m_services.debugLog.Trace("DoShellExecutePDF file: %s\r\n", path);
    ShellStart start = DoShellExecute(command, printer, path);
    if (start.process) m_services.debugLog.Trace("Done DoShellExecutePDF file: %s OK\r\n", path);
    return start;
}

bool IsPhoto(std::string_view path) {
    return HasEndingOf(path, {".wmf", ".crw", ".cr2", ".tif", ".tiff", ".nef", ".bmp", ".jpe", ".jpeg",
                              ".gif", ".png", ".jpg"});
}

bool IsWebPage(std::string_view path) {
    return HasEndingOf(path, {".htm", ".html", ".xml"});
}

}  // namespace quirepress
