#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "base/format.h"

namespace quirepress {

class Files;
class OutputFile;

// The debug log, "qpr.log" in the working folder: lines as they are given but for passwords in
// addresses, each written out at once. Off until opened; a trace while it is off costs nothing but its
// arguments.
class DebugLog {
public:
    DebugLog();
    ~DebugLog();
    DebugLog(const DebugLog&) = delete;
    DebugLog& operator=(const DebugLog&) = delete;

    // 0, or -1 when the file cannot be opened for appending.
    int Open(Files& files, std::string_view path);
    bool IsOn() const { return m_file != nullptr; }

    template <typename... Arguments>
    void Trace(std::string_view format, const Arguments&... arguments) {
        if (IsOn()) Write(Format(format, arguments...));
    }

private:
    void Write(std::string_view text);
    std::unique_ptr<OutputFile> m_file;
};

}  // namespace quirepress
