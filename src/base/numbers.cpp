#include "base/numbers.h"

#include <charconv>
#include <limits>

namespace quirepress {

std::int32_t ParseLong(std::string_view text) {
    std::size_t i = text.find_first_not_of(" \t\n\v\f\r");
    if (i == std::string_view::npos) return 0;
    const bool negative = text[i] == '-';
    if (text[i] == '-' || text[i] == '+') ++i;
    constexpr std::int64_t kLimit = std::numeric_limits<std::int32_t>::max();
    std::int64_t value = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i)
        if (value <= kLimit) value = value * 10 + (text[i] - '0');
    if (negative) return static_cast<std::int32_t>(value > kLimit ? -kLimit - 1 : -value);
    return static_cast<std::int32_t>(value > kLimit ? kLimit : value);
}

std::optional<std::int64_t> ParseWholeNumber(std::string_view text, std::int64_t lowest,
                                             std::int64_t highest) {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    if (value < lowest || value > highest) return std::nullopt;
    return value;
}

}  // namespace quirepress
