#pragma once

#include <functional>

#include "platform/event_loop.h"
#include "platform/pump_work.h"

namespace quirepress {

// What every event loop has in common; a system adds its clock, its sleep and its own events.
class PumpedEventLoop : public EventLoop {
public:
    void StartTimer(int id, int milliseconds, std::function<void()> handler) override;
    void StopTimer(int id) override;
    int AddPumpTask(std::function<bool()> task) override;
    void RemovePumpTask(int handle) override;
    void Pump() override;
    void Wait(int milliseconds) override;

protected:
    // What the system itself wants done in a pass, before the timers.
    virtual void DispatchSystemEvents() {}
    // Sleeps, but not when there are 0 `milliseconds`; an interrupt wakes it early.
    virtual void SleepUnlessWoken(long long milliseconds) = 0;
    virtual int CountInterrupts() const = 0;

private:
    bool RunPass();
    long long TimeToSleep(long long left);

    PumpWork m_work{[this] { return MonotonicMilliseconds(); }};
    int m_interruptsSeen = 0;
};

}  // namespace quirepress
