#include "platform/interrupts.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>

#include "platform/linux/interrupt_signal.h"

namespace quirepress {

namespace {

constexpr int kLastInterrupt = 2;

std::atomic<int> g_interruptCount = 0;
int g_wakePipe[2] = {-1, -1};

void CountInterrupt(int signalNumber) {
    const int savedError = errno;
    // A terminal that closes may send several.
    if (signalNumber == SIGHUP && g_interruptCount > 0) return;
    if (g_interruptCount.fetch_add(1) + 1 >= kLastInterrupt) {
        signal(signalNumber, SIG_DFL);
        raise(signalNumber);  // arrives when this handler returns
    }
    [[maybe_unused]] const ssize_t ignored = write(g_wakePipe[1], "!", 1);  // full: readable already
    errno = savedError;
}

}  // namespace

void CatchInterrupts() {
    if (g_wakePipe[0] < 0 && pipe2(g_wakePipe, O_CLOEXEC | O_NONBLOCK) != 0) return;
    struct sigaction action = {};
    action.sa_handler = CountInterrupt;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    struct sigaction hangUp = {};
    const bool isUnwanted = sigaction(SIGHUP, nullptr, &hangUp) == 0 && hangUp.sa_handler == SIG_IGN;
    if (!isUnwanted) sigaction(SIGHUP, &action, nullptr);
}

int InterruptCount() {
    return g_interruptCount;
}

int InterruptDescriptor() {
    return g_wakePipe[0];
}

}  // namespace quirepress
