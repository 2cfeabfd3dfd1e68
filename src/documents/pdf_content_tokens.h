#pragma once

#include <string>
#include <string_view>

namespace quirepress {

enum class ContentTokenKind { kNumber, kName, kString, kOpen, kClose, kWord, kBad, kEnd };

struct ContentToken {
    ContentTokenKind kind = ContentTokenKind::kEnd;
    double number = 0;      // kNumber
    std::string_view text;  // kName: as it stands, without its "/"; kWord; kOpen and kClose: the bracket
};

// The tokens of a content stream. The bytes must outlive the reader and its tokens.
class ContentTokens {
public:
    explicit ContentTokens(std::string_view bytes) : m_bytes(bytes) {}

    // kBad: what comes is none of a content stream (an unended string, a stray bracket); it is passed over.
    ContentToken Take();

    // Behind the word BI: what stands between it and ID. False when there is no ID.
    bool TakeInlineDictionary(std::string_view& dictionary);
    // Behind it: passes over `size` bytes and the EI behind them; with -1 over what seems to be data. False
    // when no EI is found.
    bool SkipInlineData(long long size);

private:
    void SkipBlanks();
    ContentToken TakeName();
    ContentToken TakeString();
    ContentToken TakeHexString();
    ContentToken TakeWordOrNumber();
    bool IsEndOfInlineData(std::size_t position) const;

    std::string_view m_bytes;
    std::size_t m_position = 0;
};

// A name with its "#20" turned into the bytes that they stand for, and "/" before it.
std::string FullContentName(std::string_view name);

}  // namespace quirepress
