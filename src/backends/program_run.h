#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/processes.h"

namespace quirepress {

class EventLoop;

// How long a program may run, and who may end it before.
struct ProgramWatch {
    long long milliseconds = 0;  // 0: as long as it takes
    std::function<bool()> isStopped = [] { return false; };
    // Asked now and then: whether it has got on since the last time, so that its time begins anew...
    std::function<bool()> hasMoved = [] { return false; };
    long long mostMilliseconds = 0;  // ...but not for longer than this in all
};

struct ProgramResult {
    enum class End { kEnded, kNotStarted, kTimedOut, kStopped } end = End::kNotStarted;
    int exitCode = 0;
    int systemError = 0;    // why it was not started
    std::string lastWords;  // the last line that it said, on one line; may be empty

    bool IsSuccess() const { return end == End::kEnded && exitCode == 0; }
};

// Starts a program and waits for its end, or ends it; what it has started and left behind is ended with it
// in every case. It gets no input. May pump.
ProgramResult RunProgram(Processes& processes, EventLoop& loop, ProcessRequest request,
                         const ProgramWatch& watch);

// "soffice ended with code 1: last words", "soffice did not end in its time of 600 seconds"...
std::string DescribeProgramEnd(std::string_view program, const ProgramResult& result, long long milliseconds);

// The last line with something in it, cut to a length that suits a message.
std::string LastWords(std::string_view said);

}  // namespace quirepress
