#include "desktop/desktop_stage.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "base/path.h"
#include "platform/machine.h"

namespace quirepress {

namespace {
constexpr int kPatience = 20'000;  // milliseconds, of the slowest machine
constexpr int kSlice = 20;
}  // namespace

WindowProgram::WindowProgram(DesktopStage& stage, const std::string& program, std::vector<std::string> words)
    : m_stage(stage) {
    const std::string folder(FolderOf(stage.System().machine->ProgramPath()));
    m_request.arguments = {JoinPath(folder, program)};
    m_request.arguments.insert(m_request.arguments.end(), words.begin(), words.end());
    m_request.environment = stage.Windows().ProgramEnvironment();
    m_request.pipes = true;
    Start();
}

void WindowProgram::Start() {
    int systemError = 0;
    m_process = m_stage.System().processes->Start(m_request, systemError);
    EXPECT_TRUE(m_process) << m_request.arguments[0] << ": error " << systemError;
}

std::optional<AppWindow> WindowProgram::Find(const std::string& title) {
    EventLoop& loop = *m_stage.System().loop;
    const long long deadline = loop.MonotonicMilliseconds() + kPatience;
    // Wine fails to start a program now and then, on a busy machine.
    int restarts = 2;
    do {
        if (!m_process->IsRunning() && restarts-- > 0) Start();
        for (const AppWindow& window : m_stage.Windows().ListWindows())
            if (window.title == title && window.processId == m_process->Id()) return window;
        loop.Wait(kSlice);
    } while (loop.MonotonicMilliseconds() < deadline);
    ADD_FAILURE() << "no window " << title
                  << (m_process->IsRunning() ? ", its program runs" : ", its program has ended");
    return {};
}

std::string WindowProgram::Outcome() {
    EXPECT_TRUE(WaitForProcess(*m_stage.System().loop, *m_process, kPatience));
    std::string output;
    while (m_process->ReadOutput(output)) m_stage.System().loop->Wait(1);
    output.erase(std::min(output.find_last_not_of("\r\n") + 1, output.size()));
    return output;
}

std::optional<AppControl> FindControl(const std::vector<AppControl>& controls, ControlRole role,
                                      const std::string& name) {
    const auto found = std::find_if(controls.begin(), controls.end(), [&](const AppControl& control) {
        return control.role == role && (name.empty() || control.name == name);
    });
    return found == controls.end() ? std::nullopt : std::optional(*found);
}

}  // namespace quirepress
