#pragma once

#include <sys/types.h>

#include <cstdint>

namespace quirepress {

// What a supervisor needs; all of it is made before the fork, after which only plain system calls are safe.
struct TreeOrder {
    char* const* arguments = nullptr;
    char* const* environment = nullptr;
    const char* folder = nullptr;  // null: where this program runs
    std::int64_t memoryLimit = 0;
    int input = -1;  // the program's standard streams; -1: inherited
    int output = -1;
    int errors = -1;
    int control = -1;  // the tree ends when the other end of this pipe is closed
    int report = -1;   // gets the reports
};

// Sent once when the program has started or could not be (`error`), and once when it has ended.
struct TreeReport {
    enum class Kind : int { kStarted, kNotStarted, kEnded };
    Kind kind = Kind::kEnded;
    int value = 0;  // its id; the system's error; its exit code
};

// The life of a supervisor: the process between this program and one that it starts. It adopts whatever the
// program leaves behind, so that descendants which have left its process group or session can be found, and
// it ends the tree also when this program dies. Never returns.
[[noreturn]] void SuperviseTree(const TreeOrder& order);

}  // namespace quirepress
