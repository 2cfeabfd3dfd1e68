#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quirepress {

// The conventional ASCII-to-long rule: leading white space, an optional sign, decimal digits up to the first
// other byte; no digits give 0. What does not fit 32 bits becomes the nearest value that does.
std::int32_t ParseLong(std::string_view text);

// The whole text as a decimal number in [lowest, highest], or nothing.
std::optional<std::int64_t> ParseWholeNumber(std::string_view text, std::int64_t lowest,
                                             std::int64_t highest);

}  // namespace quirepress
