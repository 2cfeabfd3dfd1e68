#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace quirepress {

// What a pump runs: the timers and tasks behind every EventLoop, with its rules of re-entrance. Times are
// milliseconds of the loop's own clock.
class PumpWork {
public:
    using Clock = std::function<long long()>;
    explicit PumpWork(Clock clock);

    void StartTimer(int id, int milliseconds, std::function<void()> handler);
    void StopTimer(int id);
    int AddTask(std::function<bool()> task);
    void RemoveTask(int handle);

    // Due timers in the order of their due times, then the tasks. True when a task wants the next pass soon.
    bool RunPass();

    bool HasTasks() const { return !m_tasks.empty(); }
    // When the next timer is due that a pass would run now; nothing when there is none.
    std::optional<long long> NextDue() const;

private:
    struct Timer {
        long long due = 0;
        int interval = 1;
        std::shared_ptr<const std::function<void()>> handler;
    };
    struct Task {
        std::shared_ptr<const std::function<bool()>> run;
        bool running = false;
    };

    bool IsRunning(int id) const;
    std::map<int, Timer>::iterator FindEarliest(long long latest);
    void RunTimer(int id, Timer& timer);
    void DropMissedTicks(Timer& timer) const;
    bool RunTask(int handle);

    Clock m_clock;
    std::map<int, Timer> m_timers;
    std::vector<int> m_runningTimers;  // ids, the innermost last
    std::map<int, Task> m_tasks;
    int m_lastHandle = 0;
};

}  // namespace quirepress
