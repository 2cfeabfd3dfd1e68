#include "platform/event_loop.h"

#include <windows.h>

#include <memory>

#include "platform/interrupts.h"
#include "platform/pumped_event_loop.h"
#include "platform/windows/interrupt_event.h"
#include "platform/windows/make_services.h"

namespace quirepress {
namespace {

class WindowsEventLoop : public PumpedEventLoop {
public:
    long long MonotonicMilliseconds() override {
        LARGE_INTEGER ticks;
        LARGE_INTEGER ticksPerSecond;
        QueryPerformanceCounter(&ticks);
        QueryPerformanceFrequency(&ticksPerSecond);
        const long long perSecond = ticksPerSecond.QuadPart;
        return ticks.QuadPart / perSecond * 1000 + ticks.QuadPart % perSecond * 1000 / perSecond;
    }

protected:
    // Window messages of this thread: COM's, and those of other instances.
    void DispatchSystemEvents() override {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    // Wakes early for a window message, too.
    void SleepUnlessWoken(long long milliseconds) override {
        const HANDLE interrupt = InterruptEvent();
        MsgWaitForMultipleObjectsEx(interrupt == nullptr ? 0 : 1, &interrupt,
                                    static_cast<DWORD>(milliseconds), QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    }
    int CountInterrupts() const override { return InterruptCount(); }
};

}  // namespace

std::unique_ptr<EventLoop> MakeEventLoop() {
    return std::make_unique<WindowsEventLoop>();
}

}  // namespace quirepress
