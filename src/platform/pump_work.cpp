#include "platform/pump_work.h"

#include <algorithm>
#include <utility>

namespace quirepress {

PumpWork::PumpWork(Clock clock) : m_clock(std::move(clock)) {}

void PumpWork::StartTimer(int id, int milliseconds, std::function<void()> handler) {
    const int interval = std::max(1, milliseconds);
    m_timers[id] = {m_clock() + interval, interval,
                    std::make_shared<const std::function<void()>>(std::move(handler))};
}

void PumpWork::StopTimer(int id) {
    m_timers.erase(id);
}

int PumpWork::AddTask(std::function<bool()> task) {
    m_tasks[++m_lastHandle].run = std::make_shared<const std::function<bool()>>(std::move(task));
    return m_lastHandle;
}

void PumpWork::RemoveTask(int handle) {
    m_tasks.erase(handle);
}

bool PumpWork::RunPass() {
    // A timer that has run is due after this moment, so it runs once in a pass.
    const long long start = m_clock();
    for (auto next = FindEarliest(start); next != m_timers.end(); next = FindEarliest(start))
        RunTimer(next->first, next->second);

    std::vector<int> handles;
    for (const auto& [handle, task] : m_tasks) handles.push_back(handle);
    bool workLeft = false;
    for (const int handle : handles) workLeft = RunTask(handle) || workLeft;
    return workLeft;
}

std::optional<long long> PumpWork::NextDue() const {
    std::optional<long long> earliest;
    for (const auto& [id, timer] : m_timers)
        if (!IsRunning(id) && (!earliest || timer.due < *earliest)) earliest = timer.due;
    return earliest;
}

bool PumpWork::IsRunning(int id) const {
    return std::find(m_runningTimers.begin(), m_runningTimers.end(), id) != m_runningTimers.end();
}

std::map<int, PumpWork::Timer>::iterator PumpWork::FindEarliest(long long latest) {
    auto earliest = m_timers.end();
    for (auto it = m_timers.begin(); it != m_timers.end(); ++it) {
        if (it->second.due > latest || IsRunning(it->first)) continue;
        if (earliest == m_timers.end() || it->second.due < earliest->second.due) earliest = it;
    }
    return earliest;
}

void PumpWork::RunTimer(int id, Timer& timer) {
    const auto handler = timer.handler;  // lives on when the handler stops or replaces its own timer
    timer.due += timer.interval;
    DropMissedTicks(timer);
    m_runningTimers.push_back(id);
    (*handler)();
    m_runningTimers.pop_back();
    const auto after = m_timers.find(id);
    if (after != m_timers.end() && after->second.handler == handler) DropMissedTicks(after->second);
}

void PumpWork::DropMissedTicks(Timer& timer) const {
    const long long now = m_clock();
    if (timer.due <= now) timer.due = now + timer.interval;
}

bool PumpWork::RunTask(int handle) {
    const auto found = m_tasks.find(handle);
    if (found == m_tasks.end() || found->second.running) return false;
    const auto run = found->second.run;
    found->second.running = true;
    const bool workLeft = (*run)();
    const auto after = m_tasks.find(handle);
    if (after == m_tasks.end()) return false;
    after->second.running = false;
    return workLeft;
}

}  // namespace quirepress
