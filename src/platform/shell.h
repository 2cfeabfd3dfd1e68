#pragma once

#include <string>
#include <string_view>

namespace quirepress {

class Shell {
public:
    virtual ~Shell() = default;
    // The file or address that a shortcut stands for: a ".lnk" on Windows, a ".desktop" entry of Type=Link
    // elsewhere. Empty when it is none, is damaged, or its target does not exist.
    virtual std::string ResolveShortcut(std::string_view path) = 0;
    // Whether `path` is named like a shortcut of this system.
    virtual bool IsShortcut(std::string_view path) = 0;
};

}  // namespace quirepress
