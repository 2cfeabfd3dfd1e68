#include "fakes/fake_clock.h"

#include <chrono>

#include "fakes/fake_event_loop.h"

namespace quirepress {

namespace {

constexpr Instant kMillisecond = 1'000'000;

}  // namespace

FakeClock::FakeClock(FakeEventLoop& loop) : m_loop(&loop) {
    SetNow(kStart);
}

Instant FakeClock::Now() {
    return m_base + (m_loop != nullptr ? m_loop->MonotonicMilliseconds() * kMillisecond : 0);
}

LocalTime FakeClock::ToLocal(Instant instant) {
    if (instant == kNoInstant) return {};
    using namespace std::chrono;
    const sys_time<nanoseconds> moment{nanoseconds(instant)};
    const auto day = floor<days>(moment);
    const year_month_day date(day);
    const hh_mm_ss time(floor<seconds>(moment - day));
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            static_cast<int>(time.hours().count()),
            static_cast<int>(time.minutes().count()),
            static_cast<int>(time.seconds().count())};
}

void FakeClock::SetNow(Instant now) {
    m_base += now - Now();
}

void FakeClock::SetLocal(const LocalTime& now) {
    using namespace std::chrono;
    const sys_days day(year(now.year) / now.month / now.day);
    const nanoseconds moment =
        day.time_since_epoch() + hours(now.hour) + minutes(now.minute) + seconds(now.second);
    SetNow(moment.count());
}

}  // namespace quirepress
