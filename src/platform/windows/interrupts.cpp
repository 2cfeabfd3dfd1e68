#include "platform/interrupts.h"

#include <windows.h>

#include <atomic>

#include "platform/windows/interrupt_event.h"

namespace quirepress {
namespace {

// The system calls the handler on a thread of its own.
std::atomic<int> g_interrupts = 0;
std::atomic<HANDLE> g_arrived = nullptr;

constexpr int kLastInterrupt = 2;
constexpr UINT kInterruptedExitCode = 130;

BOOL WINAPI CountInterrupt(DWORD kind) {
    if (++g_interrupts >= kLastInterrupt) TerminateProcess(GetCurrentProcess(), kInterruptedExitCode);
    SetEvent(g_arrived);
    // The program is ended when the handler returns from one of these; until then it has the few seconds
    // that the system grants for an orderly end.
    if (kind == CTRL_CLOSE_EVENT || kind == CTRL_LOGOFF_EVENT || kind == CTRL_SHUTDOWN_EVENT) Sleep(INFINITE);
    return TRUE;
}

}  // namespace

void CatchInterrupts() {
    if (g_arrived != nullptr) return;
    g_arrived = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    SetConsoleCtrlHandler(CountInterrupt, TRUE);
}

int InterruptCount() {
    return g_interrupts;
}

void* InterruptEvent() {
    return g_arrived;
}

}  // namespace quirepress
