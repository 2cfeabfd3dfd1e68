#include "fakes/fake_event_loop.h"

#include <algorithm>
#include <utility>

namespace quirepress {

namespace {

// Between two passes for tasks: one that wants the next pass soon gets it at once, so to speak.
constexpr long long kBusyPass = 1;
constexpr long long kIdlePass = 50;

}  // namespace

void FakeEventLoop::StartTimer(int id, int milliseconds, std::function<void()> handler) {
    m_work.StartTimer(id, milliseconds, std::move(handler));
}

void FakeEventLoop::StopTimer(int id) {
    m_work.StopTimer(id);
}

int FakeEventLoop::AddPumpTask(std::function<bool()> task) {
    return m_work.AddTask(std::move(task));
}

void FakeEventLoop::RemovePumpTask(int handle) {
    m_work.RemoveTask(handle);
}

void FakeEventLoop::Pump() {
    RunPass();
}

void FakeEventLoop::Wait(int milliseconds) {
    ++m_waitCount;
    const int seenBefore = m_interruptsSeen;
    const long long deadline = m_now + milliseconds;
    for (;;) {
        const bool workLeft = RunPass();
        m_interruptsSeen = m_interrupts;
        if (m_now >= deadline || m_interruptsSeen != seenBefore) return;
        long long next = deadline;
        if (m_work.HasTasks()) next = std::min(next, m_now + (workLeft ? kBusyPass : kIdlePass));
        if (const auto due = m_work.NextDue()) next = std::min(next, *due);
        m_now = std::max(m_now, next);
    }
}

bool FakeEventLoop::RunPass() {
    ++m_pumpCount;
    return m_work.RunPass();
}

}  // namespace quirepress
