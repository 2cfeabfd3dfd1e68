#pragma once

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace quirepress {

// The syntax of PDF objects. Texts point into the bytes that were read.

enum class PdfRead { kDone, kBad, kNeedsMore };  // kNeedsMore: the bytes end before the object does

struct PdfReference {
    long long number = -1;
    long long generation = 0;

    bool IsSet() const { return number >= 0; }
};

bool IsPdfBlank(char c);

// Takes one token after the other; blanks and comments before a token are passed over. What is not taken
// leaves the position where it was.
class PdfCursor {
public:
    explicit PdfCursor(std::string_view bytes) : m_bytes(bytes) {}

    std::size_t Position() const { return m_position; }
    bool AtEnd() const { return m_position >= m_bytes.size(); }
    void SkipBlanks();
    // Exactly these bytes, whatever follows them.
    bool TakeText(std::string_view text);
    // Decimal digits without a sign, and then a blank, a delimiter or the end.
    bool TakeNumber(long long& number);
    bool TakeReference(PdfReference& reference);  // "12 0 R"
    // One name, string, number or other word, or "<<", ">>", "[" or "]".
    PdfRead TakeToken(std::string_view& token);
    // A name, number, string, array, dictionary or reference, whole.
    PdfRead TakeValue(std::string_view& value);

private:
    PdfRead SkipToken();
    PdfRead SkipOneValue();
    PdfRead SkipString();
    bool SkipReferenceRest();

    std::string_view m_bytes;
    std::size_t m_position = 0;
};

// The whole of `value` as a number without a sign, or as a reference.
bool ReadPdfNumber(std::string_view value, long long& number);
bool ReadPdfReference(std::string_view value, PdfReference& reference);

// "[1 0 R 2 0 R]"; false when it is no array of references alone.
bool ReadPdfReferences(std::string_view value, std::vector<PdfReference>& references);

// "12 0 obj", before the object itself.
bool TakeObjectHeader(PdfCursor& cursor, PdfReference& reference);

// A dictionary's keys, without "/", and values. Reading again forgets what was read before.
class PdfDictionary {
public:
    PdfRead Read(PdfCursor& cursor);
    void Clear() { m_entries.clear(); }
    // Empty when there is none; the last of several.
    std::string_view Find(std::string_view key) const;

private:
    std::vector<std::pair<std::string_view, std::string_view>> m_entries;
};

}  // namespace quirepress
