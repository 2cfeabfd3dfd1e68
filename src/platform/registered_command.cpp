#include "platform/registered_command.h"

#include <algorithm>

#include "base/format.h"
#include "base/text.h"

namespace quirepress {

namespace {

constexpr std::string_view kPlaceOfFile = "%1";

// What no file name holds there, and would end a quoted text.
bool CanBeQuoted(std::string_view text) {
    return text.find_first_of(std::string_view("\"\r\n\0", 4)) == std::string_view::npos;
}

std::vector<std::string> PdfCommandKeys() {
    std::vector<std::string> keys;
    for (const char* verb : {"\\shell\\print\\command", "\\shell\\Print\\command"})
        for (const char* version : {"", ".7", ".8", ".9", ".10", ".11"})
            keys.push_back(std::string("AcroExch.Document") + version + verb);
    return keys;
}

// The program of a command line and what follows it. Without quotation marks, a path with blanks goes to the
// first ".exe"; else the first word is the program.
std::string TakeProgram(std::string_view& line) {
    while (StartsWith(line, " ")) line.remove_prefix(1);
    std::size_t start = 0;
    std::size_t end = line.find(' ');
    std::size_t next = end;
    if (StartsWith(line, "\"")) {
        start = 1;
        end = line.find('"', 1);
        next = end == std::string_view::npos ? end : end + 1;
    } else if (const std::size_t exe = ToLowerAscii(line).find(".exe ");
               exe != std::string_view::npos && line.substr(0, exe).find('"') == std::string_view::npos) {
        end = next = exe + 4;
    }
    std::string program(line.substr(start, end == std::string_view::npos ? end : end - start));
    line = next == std::string_view::npos ? std::string_view() : line.substr(next);
    while (StartsWith(line, " ")) line.remove_prefix(1);
    return program;
}

}  // namespace

std::string FindPrintLine(std::string_view extension, const ClassText& read) {
    const std::string className = read(std::string(extension));
    std::string line = className.empty() ? std::string() : read(className + "\\shell\\print\\command");
    if (!line.empty() || !EqualIgnoringAsciiCase(extension, ".pdf")) return line;
    for (const std::string& key : PdfCommandKeys()) {
        line = read(key);
        if (!line.empty()) break;
    }
    return line;
}

bool FillCommandLine(std::string_view line, std::string_view path, ProcessRequest& request) {
    if (!CanBeQuoted(path)) return false;
    const std::string program = TakeProgram(line);
    if (program.empty()) return false;
    const std::string quoted = '"' + std::string(path) + '"';
    std::string words;
    while (!line.empty()) {
        const std::size_t place = std::min(line.find(kPlaceOfFile), line.size());
        words += line.substr(0, place);
        line.remove_prefix(place);
        if (line.empty()) break;
        line.remove_prefix(kPlaceOfFile.size());
        // Marks that stand around the place are those of the path.
        const bool isQuoted = EndsWith(words, "\"") && StartsWith(line, "\"");
        words += isQuoted ? std::string(path) : quoted;
    }
    request.arguments = {program};
    request.rawArguments = std::move(words);
    return true;
}

bool MakePhotoCommand(std::string_view windowsFolder, std::string_view path, std::string_view printer,
                      RegisteredCommand& command) {
    if (!CanBeQuoted(path) || !CanBeQuoted(printer)) return false;
    const std::string library = Format("%s\\System32\\shimgvw.dll,ImageView_PrintTo /pt", windowsFolder);
    command.line = "rundll32.exe " + library + " \"%1\"";
    command.request.arguments = {"rundll32.exe"};
    command.request.rawArguments =
        Format("%s %c%s%c %c%s%c %c%c %c%c", library, '"', path, '"', '"', printer, '"', '"', '"', '"', '"');
    return true;
}

}  // namespace quirepress
