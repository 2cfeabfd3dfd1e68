#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files.h"

namespace quirepress {

// The part of each line that an index looks at.
struct KeyColumns {
    // Columns that take no part: every line has `text` there, as far as it has the columns.
    struct Blank {
        std::size_t start;
        std::string text;
        friend bool operator==(const Blank&, const Blank&) = default;
    };
    std::size_t start = 0;
    std::size_t width = 0;  // bytes, at least; shorter lines are none
    std::vector<Blank> blanks;

    friend bool operator==(const KeyColumns&, const KeyColumns&) = default;
};

// Answers whether a log has a line with a given text from a given column on, as a reader that takes line
// after line (in pieces of kLogPieceLimit) would. The log is read once; what is appended later, by whomever,
// is read when it is there. Another change is noticed by the log's size or times, and the log read again.
// Sixteen bytes a line, and up to eight for finding it.
class LogIndex {
public:
    LogIndex(Files& files, std::string path);

    // Brings the index up to the log as it is now, looked at through these columns. A log that is not there
    // has no lines. False when it cannot be read to its end: what was read counts.
    bool Refresh(const KeyColumns& columns);

    // Whether a line has `wanted`, which is at least as long as the key, from the key's start on. Opens the
    // log, and leaves it open until CloseLog.
    bool HasLine(std::string_view wanted);
    void CloseLog() { m_file.reset(); }

private:
    struct Entry {
        std::int64_t offset;
        std::uint32_t hash;
        std::uint32_t next;  // entry of the same bucket, counted from 1; 0: none
    };

    bool Open();
    bool ContinuesWhatWasRead(const FileFacts& facts);
    bool ReadOn();
    void Forget();
    void AddLine(std::int64_t offset, std::string_view line);
    void LinkEntriesFrom(std::size_t first);
    bool IsLineAt(std::int64_t offset, std::string_view wanted);
    bool Matches(std::string_view line, std::string_view wanted);
    std::uint32_t HashKey(std::string_view line);

    Files& m_files;
    std::string m_path;
    KeyColumns m_columns;
    FileFacts m_facts;  // of the log when it was last read
    std::unique_ptr<InputFile> m_file;
    std::vector<Entry> m_entries;
    std::vector<std::uint32_t> m_buckets;
    std::int64_t m_readEnd = 0;  // up to here the lines have ended
    std::string m_lastBytes;     // what stands before that
    std::string m_openLine;      // what stands behind it: a line that has not ended
    std::string m_scratch;
};

}  // namespace quirepress
