#include "platform/pumped_event_loop.h"

#include <algorithm>
#include <utility>

namespace quirepress {

void PumpedEventLoop::StartTimer(int id, int milliseconds, std::function<void()> handler) {
    m_work.StartTimer(id, milliseconds, std::move(handler));
}

void PumpedEventLoop::StopTimer(int id) {
    m_work.StopTimer(id);
}

int PumpedEventLoop::AddPumpTask(std::function<bool()> task) {
    return m_work.AddTask(std::move(task));
}

void PumpedEventLoop::RemovePumpTask(int handle) {
    m_work.RemoveTask(handle);
}

void PumpedEventLoop::Pump() {
    RunPass();
}

void PumpedEventLoop::Wait(int milliseconds) {
    // An interrupt that came since the last wait counts, and one that ends a wait ends those around it.
    const int seenBefore = m_interruptsSeen;
    const long long deadline = MonotonicMilliseconds() + milliseconds;
    for (;;) {
        const bool workLeft = RunPass();
        const long long left = deadline - MonotonicMilliseconds();
        m_interruptsSeen = CountInterrupts();
        if (left <= 0 || m_interruptsSeen != seenBefore) return;
        SleepUnlessWoken(workLeft ? 0 : TimeToSleep(left));
    }
}

bool PumpedEventLoop::RunPass() {
    DispatchSystemEvents();
    return m_work.RunPass();
}

long long PumpedEventLoop::TimeToSleep(long long left) {
    constexpr long long kIdlePass = 10;  // milliseconds between two passes for tasks that have nothing to do
    constexpr long long kLongest = 3'600'000;
    left = std::min(left, m_work.HasTasks() ? kIdlePass : kLongest);
    if (const auto due = m_work.NextDue()) left = std::min(left, *due - MonotonicMilliseconds());
    return std::max(left, 0LL);
}

}  // namespace quirepress
