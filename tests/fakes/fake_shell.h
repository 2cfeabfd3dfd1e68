#pragma once

#include <map>
#include <string>

#include "base/path.h"
#include "platform/shell.h"

namespace quirepress {

// Shortcuts are named "*.lnk" and lead where the test says.
class FakeShell : public Shell {
public:
    std::string ResolveShortcut(std::string_view path) override {
        const auto found = targets.find(std::string(path));
        return found == targets.end() ? std::string() : found->second;
    }
    bool IsShortcut(std::string_view path) override { return FileExtension(path) == ".lnk"; }

    std::map<std::string, std::string> targets;  // by the shortcut's path
};

}  // namespace quirepress
