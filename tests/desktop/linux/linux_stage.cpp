#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>

#include "desktop/desktop_stage.h"
#include "platform/machine.h"

namespace quirepress {

namespace {

// A server that says on its first line where it is to be found.
std::unique_ptr<ChildProcess> StartServer(Services& services, std::vector<std::string> arguments,
                                          std::string& place) {
    constexpr int kPatience = 20'000;
    ProcessRequest request;
    request.arguments = std::move(arguments);
    request.pipes = true;
    int systemError = 0;
    auto server = services.processes->Start(request, systemError);
    EXPECT_TRUE(server) << request.arguments[0] << ": error " << systemError;
    const long long deadline = services.loop->MonotonicMilliseconds() + kPatience;
    while (server && place.find('\n') == std::string::npos && server->ReadOutput(place) &&
           services.loop->MonotonicMilliseconds() < deadline)
        services.loop->Wait(5);
    place.erase(std::min(place.find('\n'), place.size()));
    EXPECT_FALSE(place.empty()) << request.arguments[0] << " does not start";
    return server;
}

}  // namespace

DesktopStage::DesktopStage() {
    for (const char* name : {"WAYLAND_DISPLAY", "NO_AT_BRIDGE", "AT_SPI_BUS_ADDRESS", "QT_QPA_PLATFORM"})
        unsetenv(name);
    setenv("HOME", m_folder.Path().c_str(), 1);
    setenv("XDG_RUNTIME_DIR", m_folder.Path().c_str(), 1);
    setenv("GIO_USE_VFS", "local", 1);
    setenv("LC_ALL", "C.UTF-8", 1);
    std::string display;
    m_servers.push_back(StartServer(
        m_services,
        {"Xvfb", "-displayfd", "1", "-screen", "0", "1024x768x24", "-nolisten", "tcp", "-noreset"}, display));
    setenv("DISPLAY", (":" + display).c_str(), 1);
    std::string bus;
    m_servers.push_back(
        StartServer(m_services, {"dbus-daemon", "--session", "--nofork", "--print-address=1"}, bus));
    setenv("DBUS_SESSION_BUS_ADDRESS", bus.c_str(), 1);
    m_windows = MakeAppWindows(*m_services.processes, *m_services.loop, *m_services.machine);
}

DesktopStage::~DesktopStage() {
    m_windows.reset();
    while (!m_servers.empty()) m_servers.pop_back();
}

std::vector<std::string> DesktopStage::Programs() {
    return {"qt_program", "gtk_program"};
}

void DesktopStage::Freeze(const ChildProcess& process) {
    kill(static_cast<pid_t>(process.Id()), SIGSTOP);
}

}  // namespace quirepress
