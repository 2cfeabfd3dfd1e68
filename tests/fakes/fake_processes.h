#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/processes.h"

namespace quirepress {

// Starts nothing: every start follows the next script, or ends at once with exit code 0.
class FakeProcesses : public Processes {
public:
    struct Script {
        int exitCode = 0;
        // Answers of IsRunning() before it has ended; nothing: it runs until its tree is ended.
        std::optional<int> runsFor = 0;
        std::string output;
        std::string errors;
        int startError = 0;                 // not 0: it cannot be started
        std::function<void()> whenStarted;  // what the program does: writes a file, say
    };
    // What was seen of one start.
    struct Record {
        ProcessRequest request;
        std::string input;
        bool inputClosed = false;
        bool treeEnded = false;
        bool destroyed = false;
    };

    void AddScript(Script script) { m_scripts.push_back(std::move(script)); }

    std::unique_ptr<ChildProcess> Start(const ProcessRequest& request, int& systemError) override;

    std::deque<Record> records;  // of every start, also those that failed

private:
    std::deque<Script> m_scripts;
};

}  // namespace quirepress
