#include <windows.h>

#include "desktop/desktop_stage.h"

namespace quirepress {

namespace {

BOOL CALLBACK FreezeWindow(HWND window, LPARAM processId) {
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (owner == static_cast<DWORD>(processId))
        PostMessageW(window, RegisterWindowMessageW(L"Quirepress test: freeze"), 0, 0);
    return TRUE;
}

}  // namespace

DesktopStage::DesktopStage() {
    m_windows = MakeAppWindows(*m_services.processes, *m_services.loop, *m_services.machine);
}

DesktopStage::~DesktopStage() = default;

std::vector<std::string> DesktopStage::Programs() {
    return {"window_program"};
}

void DesktopStage::Freeze(const ChildProcess& process) {
    EnumWindows(FreezeWindow, static_cast<LPARAM>(process.Id()));
}

}  // namespace quirepress
