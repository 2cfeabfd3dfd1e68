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
    ProcessRequest request;
    request.arguments = {JoinPath(folder, program)};
    request.arguments.insert(request.arguments.end(), words.begin(), words.end());
    request.environment = stage.Windows().ProgramEnvironment();
    request.pipes = true;
    int systemError = 0;
    m_process = stage.System().processes->Start(request, systemError);
    EXPECT_TRUE(m_process) << program << ": error " << systemError;
}

std::optional<AppWindow> WindowProgram::Find(const std::string& title) {
    EventLoop& loop = *m_stage.System().loop;
    const long long deadline = loop.MonotonicMilliseconds() + kPatience;
    do {
        for (const AppWindow& window : m_stage.Windows().ListWindows())
            if (window.title == title && window.processId == m_process->Id()) return window;
        loop.Wait(kSlice);
    } while (loop.MonotonicMilliseconds() < deadline);
    ADD_FAILURE() << "no window " << title;
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
