#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/files.h"
#include "settings/settings_file.h"

namespace quirepress {

constexpr std::string_view kPrintCommandsFile = "print_commands.ini";
constexpr std::string_view kPrintCommandsHelp = "docs/print-commands.md";
constexpr int kDefaultLimitSeconds = 600;

// How files of some types are printed: one group of lines of print_commands.ini.
struct PrintCommand {
    enum class Action {
        kMakesPdf,  // which is then printed like any other
        kPrints     // by itself
    };
    std::string name;
    std::vector<std::string> types;  // ".doc", "text/plain", "text/*"; in small letters
    Action action = Action::kMakesPdf;
    std::string line;                // as it is written
    std::vector<std::string> words;  // of the line, the program first
    int limitSeconds = kDefaultLimitSeconds;
    int batch = 1;  // files that one call may take

    bool Uses(std::string_view placeholder) const;  // "%1"
};

struct PrintCommandTable {
    std::vector<PrintCommand> commands;  // in their order
    int scriptLimitSeconds = 0;          // 0: none
};

// `flaws` gets a sentence for each line that is not used, with its number.
PrintCommandTable ParsePrintCommands(std::string_view text, std::vector<std::string>& flaws);

// What the file holds at first.
std::string_view DefaultPrintCommands();

// print_commands.ini in the working folder. It is written with the defaults when it is not there, and read
// again whenever it has changed.
class PrintCommandFile {
public:
    explicit PrintCommandFile(SettingsPlace place) : m_place(std::move(place)) {}

    std::string Path() const { return m_place.workingFolder + std::string(kPrintCommandsFile); }
    // As the file is now; good until the next call. Lines that are not used are said in a box once. A file
    // that can't be read leaves what was known before, at first the defaults. May pump.
    const PrintCommandTable& Table();
    const std::vector<std::string>& Flaws() const { return m_flaws; }  // of the last reading

private:
    void ReadFile();

    SettingsPlace m_place;
    PrintCommandTable m_table;
    std::vector<std::string> m_flaws;
    FileFacts m_facts;
    bool m_isRead = false;
};

}  // namespace quirepress
