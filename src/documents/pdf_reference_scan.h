#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "documents/pdf_tokens.h"

namespace quirepress {

// One value and the references in it, found in a single pass. Stricter than PdfCursor: what stands here can
// be put into another file without harming what comes behind it.
class PdfReferenceScan {
public:
    struct Found {
        std::size_t begin = 0;  // in Value(), up to behind its "R"
        std::size_t end = 0;
        PdfReference reference;
    };

    // Takes the value at the begin of `text`, a reference by itself excepted. kBad when brackets do not
    // match, a word is none of PDF's, or nesting is deeper than anybody needs.
    PdfRead Read(std::string_view text);

    // Both of the last value that was read; valid as long as its text.
    std::string_view Value() const { return m_value; }
    const std::vector<Found>& References() const { return m_found; }
    std::size_t End() const { return m_end; }  // of the value, in the text

private:
    struct Integer {
        std::size_t begin = 0;
        long long value = -1;  // -1: what stands here is none
    };

    bool TakeWord(std::string_view word, std::size_t begin);
    bool TakeBracket(std::string_view token);

    std::string_view m_value;
    std::vector<Found> m_found;
    std::vector<char> m_open;     // the brackets that close what is open
    Integer m_last, m_oneBefore;  // the two tokens before the next
    std::size_t m_end = 0;
};

}  // namespace quirepress
