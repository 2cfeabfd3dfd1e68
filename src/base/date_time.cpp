#include "base/date_time.h"

#include <array>
#include <charconv>

namespace quirepress {

namespace {

// `digits` digits at `out`, zero-padded; larger and negative numbers are not this function's.
void PutDigits(char* out, int digits, int value) {
    for (int i = digits - 1; i >= 0; --i, value /= 10) out[i] = static_cast<char>('0' + value % 10);
}

}  // namespace

std::string FormatDateTime(const LocalTime& time) {
    std::string text = "0000-00-00 00:00:00";
    PutDigits(text.data(), 4, time.year);
    PutDigits(text.data() + 5, 2, time.month);
    PutDigits(text.data() + 8, 2, time.day);
    PutDigits(text.data() + 11, 2, time.hour);
    PutDigits(text.data() + 14, 2, time.minute);
    PutDigits(text.data() + 17, 2, time.second);
    return text;
}

bool ParseDateTime(std::string_view text, LocalTime& time) {
    time = LocalTime();
    const std::array<int*, 6> fields = {&time.year, &time.month,  &time.day,
                                        &time.hour, &time.minute, &time.second};
    constexpr std::string_view kAfter = "-- ::";
    const char* position = text.data();
    const char* const end = text.data() + text.size();
    for (std::size_t i = 0; i < fields.size(); ++i) {
        while (position != end && *position == ' ') ++position;
        const auto [next, error] = std::from_chars(position, end, *fields[i]);
        if (error != std::errc()) return false;
        position = next;
        if (i == kAfter.size()) return true;
        if (kAfter[i] == ' ') continue;  // a blank in the format stands for any number of them
        if (position == end || *position != kAfter[i]) return false;
        ++position;
    }
    return true;
}

}  // namespace quirepress
