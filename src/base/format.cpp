#include "base/format.h"

#include <fmt/printf.h>

#include <algorithm>
#include <exception>

namespace quirepress {

namespace {

bool IsFlag(char c) {
    return c == '-' || c == '+' || c == ' ' || c == '#' || c == '0';
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsLengthModifier(char c) {
    return c == 'h' || c == 'l' || c == 'z' || c == 'j' || c == 't' || c == 'L';
}

// Width and precision of one conversion; -1 stands for "none given".
struct Conversion {
    std::string_view flags;
    int width = -1;
    int precision = -1;
    char letter = 0;
    std::size_t length = 0;  // bytes of the format that it covers, "%" included
};

int TakeNumber(std::string_view text, std::size_t& position) {
    constexpr int kLargest = 100'000;  // a wider field is a slip, not a layout
    int value = 0;
    while (position < text.size() && IsDigit(text[position]))
        value = std::min(kLargest, value * 10 + (text[position++] - '0'));
    return value;
}

Conversion ParseConversion(std::string_view text) {
    Conversion result;
    std::size_t position = 1;
    while (position < text.size() && IsFlag(text[position])) ++position;
    result.flags = text.substr(1, position - 1);
    if (position < text.size() && IsDigit(text[position])) result.width = TakeNumber(text, position);
    if (position < text.size() && text[position] == '.') {
        ++position;
        result.precision = TakeNumber(text, position);
    }
    while (position < text.size() && IsLengthModifier(text[position])) ++position;
    if (position < text.size()) result.letter = text[position++];
    result.length = position;
    return result;
}

void AppendText(std::string& out, const Conversion& conversion, std::string_view text) {
    if (conversion.precision >= 0) text = text.substr(0, static_cast<std::size_t>(conversion.precision));
    const auto width = static_cast<std::size_t>(std::max(conversion.width, 0));
    const std::size_t padding = text.size() < width ? width - text.size() : 0;
    const bool left = conversion.flags.find('-') != std::string_view::npos;
    if (!left) out.append(padding, ' ');
    out.append(text);
    if (left) out.append(padding, ' ');
}

// The conversion for fmt: the same without its length modifier.
std::string NumberFormat(const Conversion& conversion) {
    std::string format = "%";
    format += conversion.flags;
    if (conversion.width >= 0) format += fmt::format_int(conversion.width).str();
    if (conversion.precision >= 0) {
        format += '.';
        format += fmt::format_int(conversion.precision).str();
    }
    format += conversion.letter;
    return format;
}

bool IsOneOf(char letter, std::string_view letters) {
    return letters.find(letter) != std::string_view::npos;
}

}  // namespace

std::string FormatList(std::string_view format, std::initializer_list<FormatArgument> arguments) {
    std::string out;
    out.reserve(format.size() + 64);
    const FormatArgument* next = arguments.begin();
    std::size_t position = 0;
    while (position < format.size()) {
        const std::size_t percent = format.find('%', position);
        out.append(format.substr(position, percent - position));
        if (percent == std::string_view::npos) break;
        const Conversion conversion = ParseConversion(format.substr(percent));
        const std::string_view raw = format.substr(percent, conversion.length);
        position = percent + conversion.length;
        if (conversion.letter == '%') {
            out += '%';
            continue;
        }
        if (next == arguments.end()) {
            out.append(raw);
            continue;
        }
        const FormatArgument& argument = *next++;
        using Kind = FormatArgument::Kind;
        try {
            if (conversion.letter == 's' && argument.m_kind == Kind::kText) {
                AppendText(out, conversion, argument.m_text);
            } else if (conversion.letter == 'c' && argument.m_kind != Kind::kText &&
                       argument.m_kind != Kind::kReal) {
                const char byte = static_cast<char>(argument.m_bits);
                AppendText(out, conversion, std::string_view(&byte, 1));
            } else if (IsOneOf(conversion.letter, "di") && argument.m_kind == Kind::kSigned) {
                out += fmt::sprintf(NumberFormat(conversion), static_cast<std::int64_t>(argument.m_bits));
            } else if (IsOneOf(conversion.letter, "diuxXo") && argument.m_kind != Kind::kText &&
                       argument.m_kind != Kind::kReal) {
                out += fmt::sprintf(NumberFormat(conversion), argument.m_bits);
            } else if (IsOneOf(conversion.letter, "fFeEgG") && argument.m_kind == Kind::kReal) {
                out += fmt::sprintf(NumberFormat(conversion), argument.m_real);
            } else {
                out.append(raw);
            }
        } catch (const fmt::format_error&) {
            out.append(raw);
        }
    }
    return out;
}

}  // namespace quirepress
