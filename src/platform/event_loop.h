#pragma once

#include <functional>

namespace quirepress {

// The message pump. Everything runs on the thread that pumps; a handler may start, stop and wait itself, and
// a timer whose handler is running is not run again inside it.
class EventLoop {
public:
    virtual ~EventLoop() = default;

    // Runs `handler` every `milliseconds` (at least 1) while the loop is pumped, the first time after one
    // interval. A timer of the same id is replaced. Ticks that were missed are not made up for.
    virtual void StartTimer(int id, int milliseconds, std::function<void()> handler) = 0;
    virtual void StopTimer(int id) = 0;  // harmless when there is none

    // `task` runs once in every pass of the pump, until removed; returns its handle (not 0). A task does
    // little and returns; it answers whether it wants the next pass soon (work is left) or not.
    virtual int AddPumpTask(std::function<bool()> task) = 0;
    virtual void RemovePumpTask(int handle) = 0;

    // One pass: due timers in the order of their due times, then the tasks. Never sleeps.
    virtual void Pump() = 0;
    // Sleeps and pumps until `milliseconds` have gone by, or an interrupt arrives. May pump.
    virtual void Wait(int milliseconds) = 0;
    // Milliseconds on a clock that only goes forward; the one that timers and waits follow.
    virtual long long MonotonicMilliseconds() = 0;
};

}  // namespace quirepress
