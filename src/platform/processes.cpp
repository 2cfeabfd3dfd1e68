#include "platform/processes.h"

#include <algorithm>

#include "platform/event_loop.h"

namespace quirepress {

bool WaitForProcess(EventLoop& loop, ChildProcess& process, int milliseconds) {
    // Most programs end soon or take long: the steps grow with the time that it has taken.
    constexpr long long kShortestStep = 2;
    constexpr long long kLongestStep = 100;
    const long long start = loop.MonotonicMilliseconds();
    while (process.IsRunning()) {
        const long long gone = loop.MonotonicMilliseconds() - start;
        if (gone >= milliseconds) return false;
        const long long step = std::clamp(gone / 4, kShortestStep, kLongestStep);
        loop.Wait(static_cast<int>(std::min(step, milliseconds - gone)));
    }
    return true;
}

}  // namespace quirepress
