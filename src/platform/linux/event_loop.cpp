#include "platform/event_loop.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <memory>
#include <utility>

#include "platform/interrupts.h"
#include "platform/linux/interrupt_signal.h"
#include "platform/linux/make_services.h"
#include "platform/pump_work.h"

namespace quirepress {

namespace {

constexpr long long kIdlePass = 10;  // milliseconds between two passes for tasks that have nothing to do

long long ReadMonotonicMilliseconds() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000LL + now.tv_nsec / 1'000'000;
}

// Wakes early when an interrupt arrives. The count tells what happened, so the pipe is emptied here.
void SleepUnlessInterrupted(long long milliseconds) {
    pollfd interrupts = {InterruptDescriptor(), POLLIN, 0};  // a negative descriptor only sleeps
    constexpr long long kLongest = 3'600'000;
    if (poll(&interrupts, 1, static_cast<int>(std::min(milliseconds, kLongest))) <= 0) return;
    std::array<char, 16> bytes = {};
    while (read(interrupts.fd, bytes.data(), bytes.size()) > 0) continue;
}

class LinuxEventLoop : public EventLoop {
public:
    void StartTimer(int id, int milliseconds, std::function<void()> handler) override {
        m_work.StartTimer(id, milliseconds, std::move(handler));
    }
    void StopTimer(int id) override { m_work.StopTimer(id); }
    int AddPumpTask(std::function<bool()> task) override { return m_work.AddTask(std::move(task)); }
    void RemovePumpTask(int handle) override { m_work.RemoveTask(handle); }
    void Pump() override { m_work.RunPass(); }
    long long MonotonicMilliseconds() override { return ReadMonotonicMilliseconds(); }

    void Wait(int milliseconds) override {
        // An interrupt that came since the last wait counts, and one that ends a wait ends those around it.
        const int seenBefore = m_interruptsSeen;
        const long long deadline = ReadMonotonicMilliseconds() + milliseconds;
        for (;;) {
            const bool workLeft = m_work.RunPass();
            const long long left = deadline - ReadMonotonicMilliseconds();
            m_interruptsSeen = InterruptCount();
            if (left <= 0 || m_interruptsSeen != seenBefore) return;
            if (!workLeft) SleepUnlessInterrupted(TimeToSleep(left));
        }
    }

private:
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
    return std::make_unique<LinuxEventLoop>();
}

}  // namespace quirepress
