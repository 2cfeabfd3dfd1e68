#include "base/code_page.h"

#include <algorithm>
#include <utility>

#include "base/text.h"

namespace quirepress {

namespace {

void AppendCodePoint(std::string& out, unsigned codePoint) {
    if (codePoint < 0x80) {
        out += static_cast<char>(codePoint);
    } else if (codePoint < 0x800) {
        out += static_cast<char>(0xC0U | (codePoint >> 6U));
        out += static_cast<char>(0x80U | (codePoint & 0x3FU));
    } else {
        out += static_cast<char>(0xE0U | (codePoint >> 12U));
        out += static_cast<char>(0x80U | ((codePoint >> 6U) & 0x3FU));
        out += static_cast<char>(0x80U | (codePoint & 0x3FU));
    }
}

// The code point at `position` of valid UTF-8 text; moves past it.
unsigned TakeCodePoint(std::string_view text, std::size_t& position) {
    const unsigned first = static_cast<unsigned char>(text[position++]);
    if (first < 0x80) return first;
    const unsigned further = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
    unsigned codePoint = first & (0x3FU >> further);
    for (unsigned i = 0; i < further; ++i)
        codePoint = codePoint << 6U | (static_cast<unsigned char>(text[position++]) & 0x3FU);
    return codePoint;
}

constexpr CodePage MakeWindows1252() {
    constexpr std::array<char16_t, 32> kFirst = {
        0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
    CodePage page = {};
    for (std::size_t i = 0; i < page.highBytes.size(); ++i)
        page.highBytes[i] = i < kFirst.size() ? kFirst[i] : static_cast<char16_t>(0x80 + i);
    return page;
}

}  // namespace

const CodePage& Windows1252() {
    static constexpr CodePage kPage = MakeWindows1252();
    return kPage;
}

std::string DecodeText(std::string_view bytes, const CodePage& page) {
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const char c : bytes) {
        const unsigned byte = static_cast<unsigned char>(c);
        AppendCodePoint(text, byte < 0x80 ? byte : page.highBytes[byte - 0x80]);
    }
    return text;
}

bool EncodeText(std::string_view text, const CodePage& page, std::string& bytes) {
    if (!IsValidUtf8(text)) return false;
    std::string encoded;
    for (std::size_t i = 0; i < text.size();) {
        const unsigned codePoint = TakeCodePoint(text, i);
        if (codePoint < 0x80) {
            encoded += static_cast<char>(codePoint);
            continue;
        }
        const auto* const found = std::find(page.highBytes.begin(), page.highBytes.end(), codePoint);
        if (found == page.highBytes.end()) return false;
        encoded += static_cast<char>(0x80 + (found - page.highBytes.begin()));
    }
    bytes = std::move(encoded);
    return true;
}

}  // namespace quirepress
