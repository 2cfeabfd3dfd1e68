#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/processes.h"
#include "platform/services.h"

namespace quirepress {

// The child program, started with its standard streams in our hands, and what it has said so far.
class RunningChild {
public:
    RunningChild(Services& services, std::vector<std::string> words);

    ChildProcess& operator*() const { return *m_process; }
    ChildProcess* operator->() const { return m_process.get(); }
    explicit operator bool() const { return m_process != nullptr; }
    void Destroy() { m_process.reset(); }

    // Reads both streams to their ends; false when that takes more than half a minute.
    bool ReadToEnd();
    // The next line of its output, waited for; empty when none comes.
    std::string ReadLine();

    std::string output;
    std::string errors;

private:
    Services& m_services;
    std::unique_ptr<ChildProcess> m_process;
};

}  // namespace quirepress
