#include "platform/linux/percent_code.h"

namespace quirepress {

namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEFabcdef";

// 16 for what is no digit.
unsigned HexDigit(char c) {
    const std::size_t position = kHexDigits.find(c);
    if (position == std::string_view::npos) return 16;
    return static_cast<unsigned>(position < 16 ? position : position - 6);
}

}  // namespace

std::optional<std::string> DecodePercents(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            result += text[i];
            continue;
        }
        const unsigned high = i + 2 < text.size() ? HexDigit(text[i + 1]) : 16;
        const unsigned low = i + 2 < text.size() ? HexDigit(text[i + 2]) : 16;
        if (high > 15 || low > 15) return std::nullopt;
        result += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return result;
}

std::string EncodePercent(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return {'%', kHexDigits[value >> 4U], kHexDigits[value & 0xFU]};
}

}  // namespace quirepress
