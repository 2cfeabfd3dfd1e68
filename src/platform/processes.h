#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quirepress {

class EventLoop;

struct ProcessRequest {
    std::vector<std::string> arguments;  // the program (a path, or a name looked up) comes first
    std::string rawArguments;            // Windows: follows them on the command line, as it stands; elsewhere
                                         // nothing can be started so
    std::string folder;                  // where it starts; empty: where this program runs
    std::vector<std::pair<std::string, std::string>> environment;  // added to this program's own
    bool pipes =
        false;  // standard input, output and errors are ours; else input is empty, the rest inherited
    std::int64_t memoryLimit = 0;  // bytes of address space; 0: none
};

// A started program with everything that it starts. Destroying it ends the whole tree.
class ChildProcess {
public:
    virtual ~ChildProcess() = default;
    virtual bool IsRunning() = 0;
    // Once it has ended: its exit code; 128 + n when signal n ended it (Windows: the system's own number).
    virtual int ExitCode() = 0;
    virtual void EndTree() = 0;  // at once; harmless when it has ended
    virtual std::int64_t Id() const = 0;
    // Whether the process of this id belongs to its tree now; by default only itself does.
    virtual bool HasInTree(std::int64_t id) { return id == Id(); }

    // Pipes. None of them waits.
    // Takes `data` (kept until the program reads it); false when its input is closed.
    virtual bool WriteInput(std::string_view data) = 0;
    virtual void CloseInput() = 0;
    // Appends what has come; false at the end of the stream.
    virtual bool ReadOutput(std::string& output) = 0;
    virtual bool ReadErrors(std::string& errors) = 0;
};

class Processes {
public:
    virtual ~Processes() = default;
    // Null when it cannot be started; `systemError` says why.
    virtual std::unique_ptr<ChildProcess> Start(const ProcessRequest& request, int& systemError) = 0;
};

// Waits until it has ended; false when `milliseconds` have gone by first, and it still runs. May pump.
bool WaitForProcess(EventLoop& loop, ChildProcess& process, int milliseconds);

}  // namespace quirepress
