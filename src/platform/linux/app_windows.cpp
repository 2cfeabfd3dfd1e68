#include "platform/app_windows.h"

#include <unistd.h>

#include <filesystem>

#include "base/path.h"
#include "platform/machine.h"
#include "platform/window_worker.h"

namespace quirepress {

namespace {

bool HasVariable(Machine& machine, std::string_view name) {
    std::string value;
    return machine.ReadEnvironment(name, value) && !value.empty();
}

// A session bus that runs: asking for one that does not would start one.
bool HasSessionBus(Machine& machine) {
    if (HasVariable(machine, "DBUS_SESSION_BUS_ADDRESS")) return true;
    std::string folder;
    std::error_code error;
    return machine.ReadEnvironment("XDG_RUNTIME_DIR", folder) &&
           std::filesystem::exists(folder + "/bus", error);
}

class NoAppWindows : public AppWindows {
public:
    std::vector<AppWindow> ListWindows() override { return {}; }
    std::vector<AppControl> ListControls(const AppWindow&) override { return {}; }
    bool SetText(const AppWindow&, const AppControl&, std::string_view) override { return false; }
    bool Press(const AppWindow&, const AppControl&) override { return false; }
    bool SendReturn(const AppWindow&) override { return false; }
    bool Close(const AppWindow&) override { return false; }
    std::vector<std::pair<std::string, std::string>> ProgramEnvironment() override { return {}; }
};

}  // namespace

std::unique_ptr<AppWindows> MakeAppWindows(Processes& processes, EventLoop& loop, Machine& machine) {
    const bool hasDisplay = HasVariable(machine, "DISPLAY") || HasVariable(machine, "WAYLAND_DISPLAY");
    if (!hasDisplay || !HasSessionBus(machine)) return std::make_unique<NoAppWindows>();
    // It lies beside every program of ours.
    const std::string worker = JoinPath(FolderOf(machine.ProgramPath()), "qpr-window-worker");
    return std::make_unique<WorkerAppWindows>(processes, loop, worker, getpid());
}

}  // namespace quirepress
