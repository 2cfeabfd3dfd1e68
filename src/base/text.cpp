#include "base/text.h"

#include <algorithm>

#include "base/code_page.h"

namespace quirepress {

namespace {

char LowerAscii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool StartsCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80;
}

// Length of the UTF-8 sequence at `position`, 0 when there is none: overlong forms, surrogates and values
// above U+10FFFF are none.
std::size_t Utf8SequenceLength(std::string_view text, std::size_t position) {
    const auto byteAt = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const unsigned first = byteAt(position);
    if (first < 0x80) return 1;
    std::size_t length = 0;
    unsigned lowest = 0x80;
    unsigned highest = 0xBF;
    if (first >= 0xC2 && first <= 0xDF) {
        length = 2;
    } else if (first >= 0xE0 && first <= 0xEF) {
        length = 3;
        if (first == 0xE0) lowest = 0xA0;
        if (first == 0xED) highest = 0x9F;
    } else if (first >= 0xF0 && first <= 0xF4) {
        length = 4;
        if (first == 0xF0) lowest = 0x90;
        if (first == 0xF4) highest = 0x8F;
    } else {
        return 0;
    }
    const unsigned second = byteAt(position + 1);
    if (second < lowest || second > highest) return 0;
    for (std::size_t i = 2; i < length; ++i)
        if ((byteAt(position + i) & 0xC0U) != 0x80) return 0;
    return length;
}

}  // namespace

bool StartsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

bool EndsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

bool Contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

std::string ToLowerAscii(std::string_view text) {
    std::string result(text);
    for (char& c : result) c = LowerAscii(c);
    return result;
}

bool EqualIgnoringAsciiCase(std::string_view left, std::string_view right) {
    if (left.size() != right.size()) return false;
    for (std::size_t i = 0; i < left.size(); ++i)
        if (LowerAscii(left[i]) != LowerAscii(right[i])) return false;
    return true;
}

std::string_view TrimTrailingBlanks(std::string_view text) {
    // Fields of a log are mostly blanks: eight at a time first.
    constexpr std::string_view kBlanks = "        ";
    while (EndsWith(text, kBlanks)) text.remove_suffix(kBlanks.size());
    const std::size_t last = text.find_last_not_of(' ');
    return last == std::string_view::npos ? std::string_view() : text.substr(0, last + 1);
}

std::vector<std::string_view> SplitAt(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    for (;;) {
        const std::size_t end = text.find(separator, start);
        if (end == std::string_view::npos) break;
        parts.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    parts.push_back(text.substr(start));
    return parts;
}

std::string ReplaceAll(std::string_view text, std::string_view from, std::string_view to) {
    std::string result;
    std::size_t start = 0;
    for (;;) {
        const std::size_t found = text.find(from, start);
        if (found == std::string_view::npos) break;
        result.append(text.substr(start, found - start));
        result.append(to);
        start = found + from.size();
    }
    result.append(text.substr(start));
    return result;
}

std::size_t CountCharacters(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), StartsCharacter));
}

std::size_t BytesOfCharacters(std::string_view text, std::size_t count) {
    std::size_t i = 0;
    while (i < text.size()) {
        if (StartsCharacter(text[i]) && count-- == 0) break;
        ++i;
    }
    return i;
}

bool IsValidUtf8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = Utf8SequenceLength(text, i);
        if (length == 0) return false;
        i += length;
    }
    return true;
}

std::string_view CutToSize(std::string_view text, std::size_t size) {
    if (text.size() <= size) return text;
    const auto continues = [&](std::size_t i) {
        return (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80;
    };
    std::size_t end = size;
    for (int steps = 0; steps < 3 && end > 0 && continues(end); ++steps) --end;
    return text.substr(0, continues(end) ? size : end);  // not UTF-8 at all: anywhere will do
}

std::string ToUtf8ForDisplay(std::string_view text) {
    return IsValidUtf8(text) ? std::string(text) : DecodeText(text, Windows1252());
}

std::string ToPrintableLine(std::string_view text) {
    constexpr std::string_view kHex = "0123456789ABCDEF";
    std::string result;
    const std::string shown = ToUtf8ForDisplay(text);
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const char c = shown[i];
        unsigned byte = static_cast<unsigned char>(c);
        // The controls from U+0080 on, which terminals obey as they do escape sequences.
        const bool isHighControl = byte == 0xC2 && static_cast<unsigned char>(shown[i + 1]) < 0xA0;
        if (isHighControl) byte = static_cast<unsigned char>(shown[++i]);
        if (c == '\n') {
            result += "\\n";
        } else if (c == '\r') {
            result += "\\r";
        } else if (c == '\t') {
            result += "\\t";
        } else if (byte < 0x20 || byte == 0x7F || isHighControl) {
            result += "\\x";
            result += kHex[byte >> 4U];
            result += kHex[byte & 0xFU];
        } else {
            result += c;
        }
    }
    return result;
}

}  // namespace quirepress
