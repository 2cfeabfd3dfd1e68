#pragma once

#include "platform/clock.h"

namespace quirepress {

class FakeEventLoop;

// Goes with a FakeEventLoop's time, or stands still without one. Local time is UTC.
class FakeClock : public Clock {
public:
    // The moment at which it starts: 2024-03-01 12:00:00 UTC.
    static constexpr Instant kStart = 1'709'294'400'000'000'000;

    FakeClock() = default;
    explicit FakeClock(FakeEventLoop& loop);

    Instant Now() override;
    LocalTime ToLocal(Instant instant) override;

    void SetNow(Instant now);
    void SetLocal(const LocalTime& now);  // sets the moment that shows as `now`

private:
    FakeEventLoop* m_loop = nullptr;
    Instant m_base = kStart;  // now, less what the loop has gone
};

}  // namespace quirepress
