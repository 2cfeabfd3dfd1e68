#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/shell.h"
#include "settings/print_commands.h"

namespace quirepress {

class DebugLog;
class DialogRules;
class DialogWatch;
class Files;
class PrinterSelection;
class Processes;
class Spooler;
struct GeneralOptions;

// How a document would be printed by a command.
struct ShellCommand {
    enum class Way {
        kNone,      // nothing is registered for its type
        kBroken,    // something is, and can't be used
        kMakesPdf,  // `command` makes a PDF
        kPrints,    // `command` prints by itself
        kSystem     // `registered` does, a command of the system's own registry
    } way = Way::kNone;
    PrintCommand command;
    RegisteredCommand registered;
    std::string program;  // in full
    std::string flaw;     // for kNone and kBroken, a sentence part

    std::string Name() const;  // of the group, or "system"
    std::string Line() const;  // as it is registered
};

// A program that was asked to print, as systems tell it: greater than 32 when it was started.
struct ShellStart {
    ShellStart();
    ShellStart(ShellStart&&) noexcept;
    ShellStart& operator=(ShellStart&&) = delete;
    ~ShellStart();

    static constexpr int kNoFile = 2, kBroken = 27, kNoAssociation = 31, kStarted = 33;
    int result = kNoAssociation;
    std::string flaw;                       // when it was not started
    std::unique_ptr<ChildProcess> process;  // its output is to be read
    // Answers its dialogs while it lives, which is one at a time; null where they are not watched.
    std::unique_ptr<DialogWatch> dialogs;
};

struct ShellPrinterServices {
    Shell& shell;
    Processes& processes;
    Files& files;
    Spooler& spooler;
    PrinterSelection& selection;
    PrintCommandFile& commands;
    DebugLog& debugLog;
    const GeneralOptions& options;
};

// Prints documents by the commands that are registered for their types: those of print_commands.ini first,
// then those of the system.
class ShellPrinter {
public:
    explicit ShellPrinter(ShellPrinterServices services) : m_services(services) {}

    // Answers the dialogs of the programs that are started from now on; null: nobody does.
    void UseDialogs(DialogRules* dialogs) { m_dialogs = dialogs; }

    // How `path` would be printed on this printer. A command that makes a PDF counts where the printer takes
    // PDFs. May pump.
    ShellCommand FindCommand(const std::string& printer, const std::string& path);

    // Makes the printer the default one where the command does not name it, and starts the command, which
    // prints by itself. May pump.
    ShellStart DoShellExecute(const ShellCommand& command, const std::string& printer,
                              const std::string& path);
    // The same for a PDF.
    ShellStart DoShellExecutePDF(const ShellCommand& command, const std::string& printer,
                                 const std::string& path);

private:
    bool TakesPdf(const std::string& printer);
    bool FindSystemCommand(const std::string& printer, const std::string& path, ShellCommand& found);

    ShellPrinterServices m_services;
    DialogRules* m_dialogs = nullptr;
};

// Whether the path has the name of a photo, a web page.
bool IsPhoto(std::string_view path);
bool IsWebPage(std::string_view path);

}  // namespace quirepress
