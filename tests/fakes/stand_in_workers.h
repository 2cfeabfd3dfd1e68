#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/processes.h"
#include "platform/terminal.h"

namespace quirepress {

// A terminal whose input and output lie in memory.
class MemoryTerminal : public Terminal {
public:
    std::deque<std::string> input;
    std::string output;
    bool closed = false;

    bool OutputIsTerminal() override { return false; }
    bool ErrorsAreTerminal() override { return false; }
    bool InputIsTerminal() override { return false; }
    int Columns() override { return 80; }
    bool WriteOutput(std::string_view text) override {
        output += text;
        return !closed;
    }
    bool WriteErrors(std::string_view) override { return true; }
    bool ReadLine(std::string& line) override {
        if (input.empty()) return false;
        line = std::move(input.front());
        input.pop_front();
        return true;
    }
};

// Worker processes that answer each line as the test says: nothing at all means that one hangs, and one dies
// behind an answer that ends in "!".
class StandInWorkers : public Processes {
public:
    std::function<std::string(std::string line)> answer;
    bool startFails = false;
    std::vector<ProcessRequest> starts;
    int alive = 0;

    std::unique_ptr<ChildProcess> Start(const ProcessRequest& request, int& systemError) override {
        systemError = startFails ? 2 : 0;
        if (startFails) return nullptr;
        starts.push_back(request);
        return std::make_unique<Worker>(*this);
    }

private:
    class Worker : public ChildProcess {
    public:
        explicit Worker(StandInWorkers& owner) : m_owner(owner) { ++m_owner.alive; }
        ~Worker() override { --m_owner.alive; }
        Worker(const Worker&) = delete;
        Worker& operator=(const Worker&) = delete;
        bool IsRunning() override { return m_runs; }
        int ExitCode() override { return 0; }
        void EndTree() override { m_runs = false; }
        std::int64_t Id() const override { return 1; }
        bool WriteInput(std::string_view data) override {
            m_output += m_owner.answer(std::string(data.substr(0, data.find('\n'))));
            if (!m_output.empty() && m_output.back() == '!') {
                m_output.pop_back();
                m_runs = false;
            }
            return true;
        }
        void CloseInput() override {}
        // A few bytes at a time, as a pipe may give them.
        bool ReadOutput(std::string& output) override {
            const bool more = m_runs || !m_output.empty();
            output += m_output.substr(0, 7);
            m_output.erase(0, 7);
            return more;
        }
        bool ReadErrors(std::string&) override { return m_runs; }

    private:
        StandInWorkers& m_owner;
        std::string m_output;
        bool m_runs = true;
    };
};

}  // namespace quirepress
