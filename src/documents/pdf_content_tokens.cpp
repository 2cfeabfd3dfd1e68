#include "documents/pdf_content_tokens.h"

#include <algorithm>

#include "documents/pdf_tokens.h"

namespace quirepress {
namespace {

constexpr std::string_view kDelimiters = "()<>[]{}/%";

bool IsRegular(char c) {
    return !IsPdfBlank(c) && kDelimiters.find(c) == std::string_view::npos;
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

int HexValue(char c) {
    if (IsDigit(c)) return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// "-12.5", "+3", ".5", "4."; nothing else.
bool ReadNumber(std::string_view word, double& number) {
    std::size_t i = word[0] == '-' || word[0] == '+' ? 1 : 0;
    double value = 0;
    double unit = 1;
    bool hasDigits = false;
    bool hasPoint = false;
    for (; i < word.size(); ++i) {
        if (word[i] == '.' && !hasPoint) {
            hasPoint = true;
            continue;
        }
        if (!IsDigit(word[i])) return false;
        hasDigits = true;
        value = value * 10 + (word[i] - '0');
        if (hasPoint) unit *= 10;
    }
    // With hundreds of digits both grow beyond all bounds.
    number = unit < 1e300 ? value / unit : 0;
    if (word[0] == '-') number = -number;
    return hasDigits && value < 1e300;
}

}  // namespace

void ContentTokens::SkipBlanks() {
    for (; m_position < m_bytes.size(); ++m_position) {
        const char c = m_bytes[m_position];
        if (c == '%')
            m_position = std::min(m_bytes.find_first_of("\r\n", m_position), m_bytes.size() - 1);
        else if (!IsPdfBlank(c))
            return;
    }
}

ContentToken ContentTokens::Take() {
    SkipBlanks();
    if (m_position >= m_bytes.size()) return {};
    const char c = m_bytes[m_position];
    const bool isDouble = m_bytes.substr(m_position, 2) == "<<" || m_bytes.substr(m_position, 2) == ">>";
    const std::string_view bracket = m_bytes.substr(m_position, isDouble ? 2 : 1);
    switch (c) {
        case '/':
            return TakeName();
        case '(':
            return TakeString();
        case '<':
            if (!isDouble) return TakeHexString();
            [[fallthrough]];
        case '[':
            m_position += bracket.size();
            return {ContentTokenKind::kOpen, 0, bracket};
        case '>':
        case ']':
            m_position += bracket.size();
            return {c == ']' || isDouble ? ContentTokenKind::kClose : ContentTokenKind::kBad, 0, bracket};
        case ')':
        case '{':
        case '}':
            ++m_position;
            return {ContentTokenKind::kBad, 0, bracket};
        default:
            return TakeWordOrNumber();
    }
}

ContentToken ContentTokens::TakeName() {
    const std::size_t begin = ++m_position;
    while (m_position < m_bytes.size() && IsRegular(m_bytes[m_position])) ++m_position;
    return {ContentTokenKind::kName, 0, m_bytes.substr(begin, m_position - begin)};
}

ContentToken ContentTokens::TakeString() {
    int depth = 0;
    for (; m_position < m_bytes.size(); ++m_position) {
        const char c = m_bytes[m_position];
        if (c == '\\')
            ++m_position;
        else if (c == '(')
            ++depth;
        else if (c == ')' && --depth == 0) {
            ++m_position;
            return {ContentTokenKind::kString, 0, {}};
        }
    }
    m_position = m_bytes.size();
    return {ContentTokenKind::kBad, 0, {}};
}

ContentToken ContentTokens::TakeHexString() {
    const std::size_t end = m_bytes.find('>', m_position);
    const bool isGood = end != std::string_view::npos;
    m_position = isGood ? end + 1 : m_bytes.size();
    return {isGood ? ContentTokenKind::kString : ContentTokenKind::kBad, 0, {}};
}

ContentToken ContentTokens::TakeWordOrNumber() {
    const std::size_t begin = m_position;
    while (m_position < m_bytes.size() && IsRegular(m_bytes[m_position])) ++m_position;
    ContentToken token{ContentTokenKind::kWord, 0, m_bytes.substr(begin, m_position - begin)};
    if (ReadNumber(token.text, token.number)) token.kind = ContentTokenKind::kNumber;
    return token;
}

bool ContentTokens::TakeInlineDictionary(std::string_view& dictionary) {
    const std::size_t begin = m_position;
    for (ContentToken token = Take(); token.kind != ContentTokenKind::kEnd; token = Take()) {
        if (token.kind != ContentTokenKind::kWord || token.text != "ID") continue;
        dictionary = m_bytes.substr(begin, m_position - 2 - begin);
        ++m_position;  // the one blank behind it
        return true;
    }
    return false;
}

// "EI" between blanks. What follows data of any bytes must look like a content stream, or it is part of them.
bool ContentTokens::IsEndOfInlineData(std::size_t position) const {
    constexpr std::size_t kLook = 12;
    if (position + 2 > m_bytes.size() || m_bytes.substr(position, 2) != "EI") return false;
    const std::string_view rest = m_bytes.substr(position + 2, kLook);
    if (!rest.empty() && !IsPdfBlank(rest[0])) return false;
    return std::all_of(rest.begin(), rest.end(),
                       [](char c) { return (c >= 0x20 && c < 0x7F) || IsPdfBlank(c); });
}

bool ContentTokens::SkipInlineData(long long size) {
    std::size_t position = m_position;
    if (size >= 0) {
        position +=
            std::min(static_cast<std::size_t>(size), m_bytes.size() - std::min(position, m_bytes.size()));
        while (position < m_bytes.size() && IsPdfBlank(m_bytes[position])) ++position;
        if (!IsEndOfInlineData(position)) return false;
    } else {
        while (position < m_bytes.size() &&
               !(IsPdfBlank(m_bytes[position - 1]) && IsEndOfInlineData(position)))
            ++position;
        if (position >= m_bytes.size()) return false;
    }
    m_position = position + 2;
    return true;
}

std::string FullContentName(std::string_view name) {
    std::string full = "/";
    for (std::size_t i = 0; i < name.size(); ++i) {
        const bool isCode = name[i] == '#' && i + 2 < name.size();
        const int high = isCode ? HexValue(name[i + 1]) : -1;
        const int low = isCode ? HexValue(name[i + 2]) : -1;
        if (high < 0 || low < 0) {
            full += name[i];
            continue;
        }
        full += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return full;
}

}  // namespace quirepress
