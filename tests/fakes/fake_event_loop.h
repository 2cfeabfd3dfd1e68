#pragma once

#include "platform/event_loop.h"
#include "platform/pump_work.h"

namespace quirepress {

// An event loop in virtual time: a wait jumps from one due timer to the next and takes no real time.
class FakeEventLoop : public EventLoop {
public:
    void StartTimer(int id, int milliseconds, std::function<void()> handler) override;
    void StopTimer(int id) override;
    int AddPumpTask(std::function<bool()> task) override;
    void RemovePumpTask(int handle) override;
    void Pump() override;
    void Wait(int milliseconds) override;
    long long MonotonicMilliseconds() override { return m_now; }

    // Time goes by without a pump, as while a call keeps the program busy.
    void Advance(long long milliseconds) { m_now += milliseconds; }
    // An interrupt: the innermost wait, and those around it, end at their next pass.
    void Interrupt() { ++m_interrupts; }

    int WaitCount() const { return m_waitCount; }
    int PumpCount() const { return m_pumpCount; }

private:
    bool RunPass();

    long long m_now = 1'000;
    PumpWork m_work{[this] { return m_now; }};
    int m_waitCount = 0;
    int m_pumpCount = 0;
    int m_interrupts = 0;
    int m_interruptsSeen = 0;
};

}  // namespace quirepress
