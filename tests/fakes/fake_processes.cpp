#include "fakes/fake_processes.h"

#include <utility>

namespace quirepress {

namespace {

class ScriptedProcess : public ChildProcess {
public:
    ScriptedProcess(FakeProcesses::Script script, FakeProcesses::Record& record, std::int64_t id)
        : m_script(std::move(script)), m_record(record), m_id(id) {}
    ~ScriptedProcess() override { m_record.destroyed = true; }
    ScriptedProcess(const ScriptedProcess&) = delete;
    ScriptedProcess& operator=(const ScriptedProcess&) = delete;

    bool IsRunning() override {
        if (m_record.treeEnded || m_script.runsFor == 0) return false;
        if (m_script.runsFor) --*m_script.runsFor;
        return true;
    }
    int ExitCode() override { return m_record.treeEnded && m_script.runsFor != 0 ? 137 : m_script.exitCode; }
    void EndTree() override { m_record.treeEnded = true; }
    std::int64_t Id() const override { return m_id; }

    bool WriteInput(std::string_view data) override {
        if (m_record.inputClosed) return false;
        m_record.input += data;
        return true;
    }
    void CloseInput() override { m_record.inputClosed = true; }
    bool ReadOutput(std::string& output) override { return Take(m_script.output, output); }
    bool ReadErrors(std::string& errors) override { return Take(m_script.errors, errors); }

private:
    // The first call gives all that there is, the next one the end, unless it runs until it is ended.
    bool Take(std::string& from, std::string& to) {
        to += from;
        const bool hangs = !m_script.runsFor && !m_record.treeEnded;
        return !std::exchange(from, std::string()).empty() || hangs;
    }

    FakeProcesses::Script m_script;
    FakeProcesses::Record& m_record;
    std::int64_t m_id;
};

}  // namespace

std::unique_ptr<ChildProcess> FakeProcesses::Start(const ProcessRequest& request, int& systemError) {
    records.push_back({request, {}, false, false, false});
    Script script;
    if (!m_scripts.empty()) {
        script = std::move(m_scripts.front());
        m_scripts.pop_front();
    }
    if (script.startError != 0) {
        systemError = script.startError;
        return nullptr;
    }
    if (script.whenStarted) script.whenStarted();
    constexpr std::int64_t kFirstId = 1000;
    return std::make_unique<ScriptedProcess>(std::move(script), records.back(),
                                             kFirstId + static_cast<std::int64_t>(records.size()));
}

}  // namespace quirepress
