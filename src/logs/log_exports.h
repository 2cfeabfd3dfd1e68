#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace quirepress {

class Files;
class Prompts;

// A target that stands for asking the user for one.
constexpr std::string_view kAskForTarget = "nofile";

struct LogExport {
    std::string logPath;
    std::string target;      // a path, or kAskForTarget
    bool isGuarded = false;  // texts that a spreadsheet would take for formulas are kept from it
    // Opens a file with the program registered for it; without it nobody is asked whether to.
    std::function<void(std::string_view path)> openFile;
};

// The print log, or the error log, as comma-separated text: a header row, a row for each line, and for the
// print log the total of the pages. With a target there is all of it; else the user chooses. The target is
// what it was or whole. 0, also when the user wants none, or -1 after a message.
int ExportPrintLogCsv(Files& files, Prompts& prompts, const LogExport& request);
int ExportErrorLogCsv(Files& files, Prompts& prompts, const LogExport& request);

}  // namespace quirepress
