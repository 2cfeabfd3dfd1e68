#include "base/escaped_text.h"

#include "base/format.h"

namespace quirepress {

namespace {

int HexDigit(char c) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    const std::size_t value = kDigits.find(c);
    return value == std::string_view::npos ? -1 : static_cast<int>(value);
}

}  // namespace

bool IsControlCharacter(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

std::string EscapeControls(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (IsControlCharacter(c) || c == '%')
            result += Format("%%%02X", static_cast<unsigned char>(c));
        else
            result += c;
    }
    return result;
}

std::string UnescapeControls(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isEscaped = text[i] == '%' && i + 2 < text.size();
        const int high = isEscaped ? HexDigit(text[i + 1]) : -1;
        const int low = isEscaped ? HexDigit(text[i + 2]) : -1;
        if (high < 0 || low < 0) {
            result += text[i];
            continue;
        }
        result += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return result;
}

}  // namespace quirepress
