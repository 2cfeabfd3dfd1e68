#pragma once

#include <array>
#include <string>
#include <string_view>

namespace quirepress {

class DebugLog;

// The names under which a printing program may have put a file into the queue, each of at most 255 bytes.
class CandidateNames {
public:
    // `shortPath` is the file's short (8.3) form; empty when there is none.
    CandidateNames(std::string_view path, std::string_view shortPath);

    // Whether a job of this document name may be the file's: it holds one of the names, or one of the names
    // that printing programs give to everything. The names in lower case are looked for in any case.
    bool Matches(std::string_view document) const;

    void Trace(DebugLog& debugLog) const;

private:
    enum Name {
        kFull,
        kShort,
        kPdf,
        kWithoutExtension,
        kTitle,
        kUnderscores,
        kLowerTitle,
        kLowerFull,
        kNames
    };
    std::array<std::string, kNames> m_names;
};

}  // namespace quirepress
