#include "documents/pdf_reference_scan.h"

#include <algorithm>

namespace quirepress {
namespace {

constexpr std::size_t kDeepest = 200;
constexpr std::size_t kMostDigits = 10;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool IsNumber(std::string_view word) {
    return std::all_of(word.begin(), word.end(),
                       [](char c) { return IsDigit(c) || c == '.' || c == '-' || c == '+'; });
}

// -1 when there is another character than a digit, or too many of them.
long long ReadInteger(std::string_view word) {
    if (word.size() > kMostDigits) return -1;
    long long value = 0;
    for (const char c : word) {
        if (!IsDigit(c)) return -1;
        value = value * 10 + (c - '0');
    }
    return value;
}

}  // namespace

PdfRead PdfReferenceScan::Read(std::string_view text) {
    m_found.clear();
    m_open.clear();
    m_last = m_oneBefore = {};
    PdfCursor cursor(text);
    cursor.SkipBlanks();
    const std::size_t first = cursor.Position();
    do {
        std::string_view token;
        const PdfRead read = cursor.TakeToken(token);
        if (read != PdfRead::kDone) return read;
        const char c = token.front();
        if (c == '/' || c == '(' || (c == '<' && token != "<<")) {
            m_last = {};
        } else if (c == '<' || c == '[' || c == ']' || c == '>') {
            if (!TakeBracket(token)) return PdfRead::kBad;
        } else if (!TakeWord(token, cursor.Position() - token.size() - first)) {
            return PdfRead::kBad;
        }
    } while (!m_open.empty());
    m_end = cursor.Position();
    m_value = text.substr(first, m_end - first);
    long long generation = 0;
    const bool isReference = m_last.value >= 0 && cursor.TakeNumber(generation) && cursor.TakeText("R");
    return isReference ? PdfRead::kBad : PdfRead::kDone;
}

bool PdfReferenceScan::TakeBracket(std::string_view token) {
    m_last = {};
    if (token == "<<" || token == "[") {
        m_open.push_back(token == "[" ? ']' : '>');
        return m_open.size() <= kDeepest;
    }
    if (m_open.empty() || m_open.back() != token.front()) return false;
    m_open.pop_back();
    return true;
}

// Two integers are only known for a reference by the "R" behind them.
bool PdfReferenceScan::TakeWord(std::string_view word, std::size_t begin) {
    if (word == "R") {
        if (m_last.value < 0 || m_oneBefore.value < 0) return false;
        m_found.push_back({m_oneBefore.begin, begin + 1, {m_oneBefore.value, m_last.value}});
        m_last = {};
        return true;
    }
    if (!IsNumber(word) && word != "null" && word != "true" && word != "false") return false;
    m_oneBefore = m_last;
    m_last = {begin, ReadInteger(word)};
    return true;
}

}  // namespace quirepress
