#pragma once

#include <cstddef>
#include <string_view>

namespace quirepress {

// The grammar of keyword settings files: one entry a line, "KEY" or "KEY;value;value".

constexpr std::size_t kKeywordLineLimit = 254;  // bytes before the line end

// Takes a text apart, line by line. A line longer than the limit ends the reading, as the end does.
class KeywordLines {
public:
    explicit KeywordLines(std::string_view text, std::size_t limit = kKeywordLineLimit)
        : m_rest(text), m_limit(limit) {}

    // The next line without its LF or CR LF; false at the end. A last line without a line end counts.
    bool TakeLine(std::string_view& line);

private:
    std::string_view m_rest;
    std::size_t m_limit;
};

// Takes one line apart at ";", runs of which count as one.
class KeywordTokens {
public:
    explicit KeywordTokens(std::string_view line) : m_rest(line) {}

    // The next token, never empty; false when there is none.
    bool TakeToken(std::string_view& token);

private:
    std::string_view m_rest;
};

}  // namespace quirepress
