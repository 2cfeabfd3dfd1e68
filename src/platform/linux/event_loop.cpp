#include "platform/event_loop.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <ctime>
#include <memory>

#include "platform/interrupts.h"
#include "platform/linux/interrupt_signal.h"
#include "platform/linux/make_services.h"
#include "platform/pumped_event_loop.h"

namespace quirepress {

namespace {

class LinuxEventLoop : public PumpedEventLoop {
public:
    long long MonotonicMilliseconds() override {
        timespec now = {};
        clock_gettime(CLOCK_MONOTONIC, &now);
        return now.tv_sec * 1000LL + now.tv_nsec / 1'000'000;
    }

protected:
    // The count tells what happened, so the pipe is emptied here.
    void SleepUnlessWoken(long long milliseconds) override {
        pollfd interrupts = {InterruptDescriptor(), POLLIN, 0};  // a negative descriptor only sleeps
        if (poll(&interrupts, 1, static_cast<int>(milliseconds)) <= 0) return;
        std::array<char, 16> bytes = {};
        while (read(interrupts.fd, bytes.data(), bytes.size()) > 0) continue;
    }
    int CountInterrupts() const override { return InterruptCount(); }
};

}  // namespace

std::unique_ptr<EventLoop> MakeEventLoop() {
    return std::make_unique<LinuxEventLoop>();
}

}  // namespace quirepress
