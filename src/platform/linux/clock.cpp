#include "platform/clock.h"

#include <array>
#include <cstdint>
#include <ctime>
#include <memory>

#include "platform/linux/make_services.h"

namespace quirepress {

namespace {

constexpr std::int64_t kSecond = 1'000'000'000;

std::int64_t FloorDivide(std::int64_t value, std::int64_t divisor) {
    return value / divisor - (value % divisor < 0 ? 1 : 0);
}

// The days since 1970-01-01 as a date of the Gregorian calendar.
void SetDate(std::int64_t days, LocalTime& time) {
    constexpr std::int64_t kDaysOf400Years = 146'097;
    const std::int64_t sinceMarch = days + 719'468;  // since 0000-03-01, so that a leap day ends its year
    const std::int64_t cycle = FloorDivide(sinceMarch, kDaysOf400Years);
    const std::int64_t dayOfCycle = sinceMarch - cycle * kDaysOf400Years;
    const std::int64_t yearOfCycle =
        (dayOfCycle - dayOfCycle / 1'460 + dayOfCycle / 36'524 - dayOfCycle / 146'096) / 365;
    const std::int64_t dayOfYear = dayOfCycle - (365 * yearOfCycle + yearOfCycle / 4 - yearOfCycle / 100);
    const std::int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
    time.day = static_cast<int>(dayOfYear - (153 * monthFromMarch + 2) / 5 + 1);
    time.month = static_cast<int>(monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9);
    time.year = static_cast<int>(yearOfCycle + cycle * 400 + (time.month <= 2 ? 1 : 0));
}

// Seconds that local time is ahead of UTC at `moment`.
std::int64_t AskOffset(std::int64_t moment) {
    const time_t seconds = moment;
    tm parts = {};
    return localtime_r(&seconds, &parts) != nullptr ? parts.tm_gmtoff : 0;
}

class LinuxClock : public Clock {
public:
    LinuxClock() { tzset(); }

    Instant Now() override {
        timespec now = {};
        clock_gettime(CLOCK_REALTIME, &now);
        return now.tv_sec * kSecond + now.tv_nsec;
    }

    LocalTime ToLocal(Instant instant) override {
        LocalTime time;
        if (instant == kNoInstant) return time;
        const std::int64_t moment = FloorDivide(instant, kSecond);
        const std::int64_t local = moment + OffsetAt(moment);
        const std::int64_t days = FloorDivide(local, kDay);
        SetDate(days, time);
        const int secondOfDay = static_cast<int>(local - days * kDay);
        time.hour = secondOfDay / 3600;
        time.minute = secondOfDay / 60 % 60;
        time.second = secondOfDay % 60;
        return time;
    }

private:
    static constexpr std::int64_t kDay = 86'400;
    static constexpr std::int64_t kSpan = kDay / 4;

    // A span of time whose offset is the same from its start to its end.
    struct Span {
        std::int64_t number = -1;
        std::int64_t offset = 0;
        bool isConstant = false;
    };

    // The system's own conversion takes a lock and a search; a log asks for hundreds of thousands. A span
    // with a change of the clocks in it is never answered from memory.
    std::int64_t OffsetAt(std::int64_t moment) {
        const std::int64_t number = FloorDivide(moment, kSpan);
        Span& span = m_spans[static_cast<std::size_t>(number) % m_spans.size()];
        if (span.number != number) {
            span.number = number;
            span.offset = AskOffset(number * kSpan);
            span.isConstant = span.offset == AskOffset((number + 1) * kSpan - 1);
        }
        return span.isConstant ? span.offset : AskOffset(moment);
    }

    std::array<Span, 1024> m_spans;
};

}  // namespace

std::unique_ptr<Clock> MakeClock() {
    return std::make_unique<LinuxClock>();
}

}  // namespace quirepress
