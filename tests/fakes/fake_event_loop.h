#pragma once

#include "platform/pumped_event_loop.h"

namespace quirepress {

// An event loop in virtual time: a wait jumps from one due timer to the next and takes no real time.
class FakeEventLoop : public PumpedEventLoop {
public:
    void Wait(int milliseconds) override {
        ++m_waitCount;
        PumpedEventLoop::Wait(milliseconds);
    }
    long long MonotonicMilliseconds() override { return m_now; }

    // Time goes by without a pump, as while a call keeps the program busy.
    void Advance(long long milliseconds) { m_now += milliseconds; }

    int WaitCount() const { return m_waitCount; }
    int PumpCount() const { return m_pumpCount; }

protected:
    void DispatchSystemEvents() override { ++m_pumpCount; }
    // A pass that is wanted soon takes a moment, too.
    void SleepUnlessWoken(long long milliseconds) override { m_now += milliseconds > 0 ? milliseconds : 1; }
    int CountInterrupts() const override { return 0; }

private:
    long long m_now = 1'000;
    int m_waitCount = 0;
    int m_pumpCount = 0;
};

}  // namespace quirepress
