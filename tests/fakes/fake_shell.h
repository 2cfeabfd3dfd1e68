#pragma once

#include <map>
#include <set>
#include <string>

#include "base/path.h"
#include "platform/shell.h"

namespace quirepress {

// Shortcuts are named "*.lnk" and lead where the test says; so are the types of files, the registered
// commands and the programs those that the test puts there. A script is run by "run-script".
class FakeShell : public Shell {
public:
    std::string ResolveShortcut(std::string_view path) override {
        const auto found = targets.find(std::string(path));
        return found == targets.end() ? std::string() : found->second;
    }
    bool IsShortcut(std::string_view path) override { return FileExtension(path) == ".lnk"; }

    std::string TypeOfFile(std::string_view path) override {
        const auto found = types.find(std::string(FileExtension(path)));
        return found == types.end() ? std::string() : found->second;
    }
    bool FindPrintCommand(std::string_view path, RegisteredCommand& command) override {
        const auto found = printCommands.find(std::string(FileExtension(path)));
        if (found == printCommands.end()) return false;
        command.line = found->second;
        command.request.arguments = {found->second, std::string(path)};
        return true;
    }
    bool FindPhotoCommand(std::string_view path, std::string_view printer,
                          RegisteredCommand& command) override {
        if (photoProgram.empty()) return false;
        command.line = photoProgram;
        command.request.arguments = {photoProgram, std::string(path), std::string(printer)};
        return true;
    }
    std::string FindProgram(std::string_view name) override {
        return programs.count(std::string(name)) != 0 ? "/programs/" + std::string(name) : std::string();
    }
    std::vector<std::string> ScriptCommand(std::string_view path) override {
        return {"run-script", std::string(path)};
    }

    std::map<std::string, std::string> types;          // by ending
    std::map<std::string, std::string> printCommands;  // programs, by ending
    std::string photoProgram;                          // empty: there is none
    std::set<std::string> programs;
    std::map<std::string, std::string> targets;  // by the shortcut's path
};

}  // namespace quirepress
