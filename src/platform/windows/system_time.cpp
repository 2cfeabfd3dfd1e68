#include "platform/windows/system_time.h"

#include <algorithm>

namespace quirepress {
namespace {

constexpr long long kTick = 100;
constexpr long long kTicksBefore1970 = 116'444'736'000'000'000;

}  // namespace

Instant FromSystemTicks(long long ticks) {
    if (ticks == 0) return kNoInstant;
    constexpr long long kMost = std::numeric_limits<Instant>::max() / kTick;
    return std::clamp(ticks - kTicksBefore1970, -kMost, kMost) * kTick;
}

long long ToSystemTicks(Instant instant) {
    const long long ticks = instant / kTick - (instant % kTick < 0 ? 1 : 0);
    return ticks + kTicksBefore1970;
}

}  // namespace quirepress
