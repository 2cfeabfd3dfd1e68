#include "platform/event_loop.h"

#include <windows.h>

#include <algorithm>
#include <utility>

#include "platform/interrupts.h"
#include "platform/pump_work.h"
#include "platform/windows/interrupt_event.h"
#include "platform/windows/make_services.h"

namespace quirepress {
namespace {

constexpr long long kIdlePass = 10;  // milliseconds between two passes for tasks that have nothing to do

long long ReadMonotonicMilliseconds() {
    LARGE_INTEGER ticks;
    LARGE_INTEGER ticksPerSecond;
    QueryPerformanceCounter(&ticks);
    QueryPerformanceFrequency(&ticksPerSecond);
    const long long perSecond = ticksPerSecond.QuadPart;
    return ticks.QuadPart / perSecond * 1000 + ticks.QuadPart % perSecond * 1000 / perSecond;
}

// Window messages of this thread: COM's, and those of other instances.
void DispatchMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

// Wakes early for a window message and for an interrupt.
void SleepUnlessWoken(long long milliseconds) {
    constexpr long long kLongest = 3'600'000;
    const HANDLE interrupt = InterruptEvent();
    MsgWaitForMultipleObjectsEx(interrupt == nullptr ? 0 : 1, &interrupt,
                                static_cast<DWORD>(std::min(milliseconds, kLongest)), QS_ALLINPUT,
                                MWMO_INPUTAVAILABLE);
}

class WindowsEventLoop : public EventLoop {
public:
    void StartTimer(int id, int milliseconds, std::function<void()> handler) override {
        m_work.StartTimer(id, milliseconds, std::move(handler));
    }
    void StopTimer(int id) override { m_work.StopTimer(id); }
    int AddPumpTask(std::function<bool()> task) override { return m_work.AddTask(std::move(task)); }
    void RemovePumpTask(int handle) override { m_work.RemoveTask(handle); }
    void Pump() override { RunPass(); }
    long long MonotonicMilliseconds() override { return ReadMonotonicMilliseconds(); }

    void Wait(int milliseconds) override {
        // An interrupt that came since the last wait counts, and one that ends a wait ends those around it.
        const int seenBefore = m_interruptsSeen;
        const long long deadline = ReadMonotonicMilliseconds() + milliseconds;
        for (;;) {
            const bool workLeft = RunPass();
            const long long left = deadline - ReadMonotonicMilliseconds();
            m_interruptsSeen = InterruptCount();
            if (left <= 0 || m_interruptsSeen != seenBefore) return;
            if (!workLeft) SleepUnlessWoken(TimeToSleep(left));
        }
    }

private:
    bool RunPass() {
        DispatchMessages();
        return m_work.RunPass();
    }

    long long TimeToSleep(long long left) const {
        if (m_work.HasTasks()) left = std::min(left, kIdlePass);
        if (const auto due = m_work.NextDue()) left = std::min(left, *due - ReadMonotonicMilliseconds());
        return std::max(left, 0LL);
    }

    PumpWork m_work{ReadMonotonicMilliseconds};
    int m_interruptsSeen = 0;
};

}  // namespace

std::unique_ptr<EventLoop> MakeEventLoop() {
    return std::make_unique<WindowsEventLoop>();
}

}  // namespace quirepress
