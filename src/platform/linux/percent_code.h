#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quirepress {

// `text` with every "%" and two hexadecimal digits as the byte that they stand for; nothing when a "%" is
// followed by anything else.
std::optional<std::string> DecodePercents(std::string_view text);

// "%" and two digits for `byte`.
std::string EncodePercent(char byte);

}  // namespace quirepress
