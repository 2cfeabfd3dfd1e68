#pragma once

#include <list>
#include <memory>
#include <string>
#include <string_view>

#include "platform/windows/system_handle.h"

namespace quirepress {

// The end that a program writes to and we read from.
class OutputPipe {
public:
    // The program's end, which may be passed on; null when the system refuses.
    SystemHandle Open();
    // Appends what has come; false at the end of the stream.
    bool Read(std::string& output);

private:
    SystemHandle m_ours;
};

// The end that a program reads from and we write to, without ever waiting for it.
class InputPipe {
public:
    InputPipe();
    ~InputPipe();
    InputPipe(const InputPipe&) = delete;
    InputPipe& operator=(const InputPipe&) = delete;

    SystemHandle Open();
    // Takes `data` and keeps it until the program has read it; false when the pipe is closed.
    bool Write(std::string_view data);
    // Closes as soon as the program has read everything; what comes next to the pipe looks after it.
    void CloseWhenRead();
    void ForgetWritten();

private:
    struct PendingWrite;
    SystemHandle m_ours;
    std::list<std::unique_ptr<PendingWrite>> m_writes;
    bool m_closing = false;
};

}  // namespace quirepress
