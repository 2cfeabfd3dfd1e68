#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/files.h"

namespace quirepress {

class EventLoop;

struct LogSweep {
    std::string logPath;
    std::string archivePath;  // the removed lines are appended here; empty: they are not kept
    // Asked for each line, without its line end.
    std::function<bool(std::string_view line)> isRemoved;
};

// Writes the lines that stay into a new file of the log's name and ".new", which then takes the log's place
// in one step: at any moment the log is the old one or the new one. Answers the number of lines removed.
// Nothing is changed when a file cannot be opened, read or written; `result` says why. Lines that are
// appended meanwhile are swept too. May pump.
std::int64_t SweepLog(Files& files, EventLoop& loop, const LogSweep& sweep, FileResult& result);

}  // namespace quirepress
