#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "fakes/temporary_folder.h"
#include "platform/app_windows.h"
#include "platform/event_loop.h"
#include "platform/processes.h"
#include "platform/services.h"

namespace quirepress {

// A desktop for one test, without anything of the user's, and the windows on it.
class DesktopStage {
public:
    DesktopStage();
    ~DesktopStage();
    DesktopStage(const DesktopStage&) = delete;
    DesktopStage& operator=(const DesktopStage&) = delete;

    // The programs that can be started, each with a toolkit of its own.
    static std::vector<std::string> Programs();
    AppWindows& Windows() { return *m_windows; }
    Services& System() { return m_services; }
    // From now on the program answers nobody.
    static void Freeze(const ChildProcess& process);

private:
    Services m_services = MakeSystemServices();
    TemporaryFolder m_folder;
    std::vector<std::unique_ptr<ChildProcess>> m_servers;
    std::unique_ptr<AppWindows> m_windows;
};

// A program of the stage with a window of its own.
class WindowProgram {
public:
    WindowProgram(DesktopStage& stage, const std::string& program, std::vector<std::string> words);

    ChildProcess& Process() { return *m_process; }
    // Its window of this title, waited for.
    std::optional<AppWindow> Find(const std::string& title);
    // What it said until its end, waited for.
    std::string Outcome();

private:
    void Start();

    DesktopStage& m_stage;
    ProcessRequest m_request;
    std::unique_ptr<ChildProcess> m_process;
};

// The first control of this role, and with this name where one is given.
std::optional<AppControl> FindControl(const std::vector<AppControl>& controls, ControlRole role,
                                      const std::string& name = {});

}  // namespace quirepress
