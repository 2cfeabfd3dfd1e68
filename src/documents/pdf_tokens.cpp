#include "documents/pdf_tokens.h"

#include <array>
#include <cstdint>

#include "base/text.h"

namespace quirepress {
namespace {

constexpr std::size_t kMostEntries = 10'000;  // of a dictionary; real ones have a few dozen

enum : std::uint8_t { kRegular, kBlank, kDelimiter };

constexpr std::array<std::uint8_t, 256> MakeKinds() {
    std::array<std::uint8_t, 256> kinds{};
    for (const char c : {'\0', '\t', '\n', '\f', '\r', ' '}) kinds[static_cast<unsigned char>(c)] = kBlank;
    for (const char c : {'(', ')', '<', '>', '[', ']', '{', '}', '/', '%'})
        kinds[static_cast<unsigned char>(c)] = kDelimiter;
    return kinds;
}

constexpr std::array<std::uint8_t, 256> kKinds = MakeKinds();

bool IsRegular(char c) {
    return kKinds[static_cast<unsigned char>(c)] == kRegular;
}
bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

}  // namespace

bool IsPdfBlank(char c) {
    return kKinds[static_cast<unsigned char>(c)] == kBlank;
}

void PdfCursor::SkipBlanks() {
    while (!AtEnd()) {
        if (m_bytes[m_position] == '%') {
            const std::size_t end = m_bytes.find_first_of("\r\n", m_position);
            m_position = end == std::string_view::npos ? m_bytes.size() : end;
        } else if (IsPdfBlank(m_bytes[m_position])) {
            ++m_position;
        } else {
            return;
        }
    }
}

bool PdfCursor::TakeText(std::string_view text) {
    const std::size_t start = m_position;
    SkipBlanks();
    if (StartsWith(m_bytes.substr(m_position), text)) {
        m_position += text.size();
        return true;
    }
    m_position = start;
    return false;
}

bool PdfCursor::TakeNumber(long long& number) {
    constexpr std::size_t kMostDigits = 18;
    const std::size_t start = m_position;
    SkipBlanks();
    const std::size_t first = m_position;
    long long value = 0;
    while (!AtEnd() && IsDigit(m_bytes[m_position]) && m_position - first < kMostDigits)
        value = value * 10 + (m_bytes[m_position++] - '0');
    if (m_position == first || (!AtEnd() && IsRegular(m_bytes[m_position]))) {
        m_position = start;
        return false;
    }
    number = value;
    return true;
}

bool PdfCursor::TakeReference(PdfReference& reference) {
    const std::size_t start = m_position;
    PdfReference taken;
    if (TakeNumber(taken.number) && TakeNumber(taken.generation) && TakeText("R") &&
        (AtEnd() || !IsRegular(m_bytes[m_position]))) {
        reference = taken;
        return true;
    }
    m_position = start;
    return false;
}

PdfRead PdfCursor::TakeValue(std::string_view& value) {
    const std::size_t start = m_position;
    SkipBlanks();
    const std::size_t first = m_position;
    PdfRead read = SkipOneValue();
    if (read == PdfRead::kDone && IsDigit(m_bytes[first]) && !SkipReferenceRest()) read = PdfRead::kNeedsMore;
    if (read == PdfRead::kDone)
        value = m_bytes.substr(first, m_position - first);
    else
        m_position = start;
    return read;
}

PdfRead PdfCursor::TakeToken(std::string_view& token) {
    const std::size_t start = m_position;
    SkipBlanks();
    const std::size_t first = m_position;
    const PdfRead read = SkipToken();
    if (read == PdfRead::kDone)
        token = m_bytes.substr(first, m_position - first);
    else
        m_position = start;
    return read;
}

// What stands at the position, which is no blank.
PdfRead PdfCursor::SkipToken() {
    if (m_position + 1 >= m_bytes.size()) return PdfRead::kNeedsMore;
    const char c = m_bytes[m_position];
    if (c == '/' || IsRegular(c)) {
        do ++m_position;
        while (!AtEnd() && IsRegular(m_bytes[m_position]));
        return AtEnd() ? PdfRead::kNeedsMore : PdfRead::kDone;  // it may go on
    }
    const bool doubled = m_bytes[m_position + 1] == c;
    if (c == '(' || (c == '<' && !doubled)) return SkipString();
    if (c != '[' && c != ']' && !(doubled && (c == '<' || c == '>'))) return PdfRead::kBad;
    m_position += c == '[' || c == ']' ? 1 : 2;
    return PdfRead::kDone;
}

// Nested arrays and dictionaries are only counted, so that no depth of them can hurt.
PdfRead PdfCursor::SkipOneValue() {
    std::size_t depth = 0;
    do {
        std::string_view token;
        const PdfRead read = TakeToken(token);
        if (read != PdfRead::kDone) return read;
        const char c = token.front();
        const bool isDoubled = token.size() == 2 && token[1] == c;
        if (c == '[' || (c == '<' && isDoubled)) {
            ++depth;
        } else if (c == ']' || (c == '>' && isDoubled)) {
            if (depth == 0) return PdfRead::kBad;
            --depth;
        }
    } while (depth > 0);
    return PdfRead::kDone;
}

// "(...)", in which parentheses nest, or "<...>".
PdfRead PdfCursor::SkipString() {
    const bool hex = m_bytes[m_position] == '<';
    std::size_t depth = 0;
    for (; !AtEnd(); ++m_position) {
        const char c = m_bytes[m_position];
        if (hex) {
            if (c != '>') continue;
        } else if (c == '\\') {
            ++m_position;
            continue;
        } else if (c == '(') {
            ++depth;
            continue;
        } else if (c != ')' || --depth > 0) {
            continue;
        }
        ++m_position;
        return PdfRead::kDone;
    }
    return PdfRead::kNeedsMore;
}

// Behind a number: the rest of a reference when it is one. False when the bytes end before that is known.
bool PdfCursor::SkipReferenceRest() {
    const std::size_t start = m_position;
    long long generation = 0;
    const bool hasGeneration = TakeNumber(generation);
    SkipBlanks();
    if (AtEnd()) return false;
    if (!hasGeneration || !TakeText("R")) m_position = start;
    return true;
}

bool ReadPdfNumber(std::string_view value, long long& number) {
    PdfCursor cursor(value);
    long long taken = 0;
    if (!cursor.TakeNumber(taken) || !cursor.AtEnd()) return false;
    number = taken;
    return true;
}

bool ReadPdfReference(std::string_view value, PdfReference& reference) {
    PdfCursor cursor(value);
    return cursor.TakeReference(reference) && cursor.AtEnd();
}

bool ReadPdfReferences(std::string_view value, std::vector<PdfReference>& references) {
    references.clear();
    PdfCursor cursor(value);
    if (!cursor.TakeText("[")) return false;
    PdfReference reference;
    while (cursor.TakeReference(reference)) references.push_back(reference);
    return cursor.TakeText("]");
}

bool TakeObjectHeader(PdfCursor& cursor, PdfReference& reference) {
    return cursor.TakeNumber(reference.number) && cursor.TakeNumber(reference.generation) &&
           cursor.TakeText("obj");
}

PdfRead PdfDictionary::Read(PdfCursor& cursor) {
    m_entries.clear();
    if (!cursor.TakeText("<<")) {
        cursor.SkipBlanks();
        return cursor.AtEnd() ? PdfRead::kNeedsMore : PdfRead::kBad;
    }
    while (!cursor.TakeText(">>")) {
        std::string_view key;
        std::string_view value;
        PdfRead read = cursor.TakeValue(key);
        if (read == PdfRead::kDone && (key.front() != '/' || m_entries.size() >= kMostEntries))
            read = PdfRead::kBad;
        if (read == PdfRead::kDone) read = cursor.TakeValue(value);
        if (read != PdfRead::kDone) return read;
        m_entries.emplace_back(key.substr(1), value);
    }
    return PdfRead::kDone;
}

std::string_view PdfDictionary::Find(std::string_view key) const {
    for (auto entry = m_entries.rbegin(); entry != m_entries.rend(); ++entry)
        if (entry->first == key) return entry->second;
    return {};
}

}  // namespace quirepress
