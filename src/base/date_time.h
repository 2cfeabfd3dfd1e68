#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace quirepress {

// Nanoseconds since 1970-01-01 00:00:00 UTC.
using Instant = std::int64_t;
constexpr Instant kNoInstant = std::numeric_limits<Instant>::min();

// A moment on the user's wall clock.
struct LocalTime {
    int year = 0;
    int month = 0;  // 1 to 12
    int day = 0;    // 1 to 31
    int hour = 0;
    int minute = 0;
    int second = 0;

    friend bool operator==(const LocalTime& left, const LocalTime& right) {
        return left.year == right.year && left.month == right.month && left.day == right.day &&
               left.hour == right.hour && left.minute == right.minute && left.second == right.second;
    }
};

// "%.4d-%.2d-%.2d %.2d:%.2d:%.2d", the date-time text of every log and stamp.
std::string FormatDateTime(const LocalTime& time);

// Reads by "%d-%d-%d %d:%d:%d"; fields that cannot be read stay 0. True when all six were there.
bool ParseDateTime(std::string_view text, LocalTime& time);

}  // namespace quirepress
