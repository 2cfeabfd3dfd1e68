#include "base/command_words.h"

#include "base/format.h"
#include "base/path.h"

namespace quirepress {

namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

// From behind the opening mark to behind the closing one; false when there is none.
bool TakeQuoted(std::string_view line, std::size_t& at, char mark, std::string& word) {
    for (; at < line.size() && line[at] != mark; ++at) {
        const char next = at + 1 < line.size() ? line[at + 1] : '\0';
        if (mark == '"' && line[at] == '\\' && (next == '"' || next == '\\')) ++at;
        word += line[at];
    }
    return at++ < line.size();
}

bool TakeWord(std::string_view line, std::size_t& at, std::string& word) {
    while (at < line.size() && !IsBlank(line[at])) {
        const char c = line[at++];
        if (c != '"' && c != '\'') {
            word += c;
        } else if (!TakeQuoted(line, at, c, word)) {
            return false;
        }
    }
    return true;
}

bool IsUnreserved(char c) {
    const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    return isLetter || (c >= '0' && c <= '9') || c == '-' || c == '_' || c == '.' || c == '~' || c == ':';
}

}  // namespace

bool SplitWords(std::string_view line, std::vector<std::string>& words) {
    std::vector<std::string> taken;
    for (std::size_t at = 0; at < line.size();) {
        if (IsBlank(line[at])) {
            ++at;
            continue;
        }
        taken.emplace_back();
        if (!TakeWord(line, at, taken.back())) return false;
    }
    words = std::move(taken);
    return true;
}

std::string JoinWords(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) {
        if (!line.empty()) line += ' ';
        if (!word.empty() && word.find_first_of(" \t\"'") == std::string::npos) {
            line += word;
            continue;
        }
        line += '"';
        for (const char c : word) {
            if (c == '"' || c == '\\') line += '\\';
            line += c;
        }
        line += '"';
    }
    return line;
}

std::string FileAddress(std::string_view path) {
    std::string address = "file://";
    if (path.empty() || !IsSeparator(path.front())) address += '/';
    for (const char c : path) {
        if (IsSeparator(c))
            address += '/';
        else if (IsUnreserved(c))
            address += c;
        else
            address += Format("%%%.2X", static_cast<unsigned char>(c));
    }
    return address;
}

}  // namespace quirepress
