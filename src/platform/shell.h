#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/processes.h"

namespace quirepress {

// A command that is registered with the system.
struct RegisteredCommand {
    std::string line;        // as it stands in the registry, the file's place being "%1"
    ProcessRequest request;  // starts it for one file
};

class Shell {
public:
    virtual ~Shell() = default;
    // The file or address that a shortcut stands for: a ".lnk" on Windows, a ".desktop" entry of Type=Link
    // elsewhere. Empty when it is none, is damaged, or its target does not exist.
    virtual std::string ResolveShortcut(std::string_view path) = 0;
    // Whether `path` is named like a shortcut of this system.
    virtual bool IsShortcut(std::string_view path) = 0;

    // The MIME type of files of such a name, in small letters: "application/rtf". Empty when it is not known.
    virtual std::string TypeOfFile(std::string_view path) = 0;
    // What prints `path` to the default printer. False when nothing is registered for such files, as ever
    // on a system without such a registry.
    virtual bool FindPrintCommand(std::string_view path, RegisteredCommand& command) = 0;
    // What prints an image to the printer by the system's own viewer; false where there is none.
    virtual bool FindPhotoCommand(std::string_view path, std::string_view printer,
                                  RegisteredCommand& command) = 0;
    // The program that is started by this name; empty when there is none.
    virtual std::string FindProgram(std::string_view name) = 0;
    // The words that run a script, its path included and its parameters still to follow. Empty when it can't
    // be read.
    virtual std::vector<std::string> ScriptCommand(std::string_view path) = 0;
};

}  // namespace quirepress
