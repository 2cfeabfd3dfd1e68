#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quirepress {

class InputFile;

// The lines of a log, of any size, block by block.
class LogLines {
public:
    explicit LogLines(InputFile& file) : m_file(file) {}

    // The next line without its LF or CR LF; false at the end, or when the file cannot be read further. Of a
    // line that is longer than any record only the beginning is given. `line` is good until the next call.
    bool TakeLine(std::string_view& line);
    bool HasFailed() const { return m_hasFailed; }

private:
    bool ReadBlock();

    InputFile& m_file;
    std::int64_t m_offset = 0;
    std::string m_block;
    std::string_view m_rest;  // of the block
    std::string m_line;
    bool m_hasFailed = false;
};

}  // namespace quirepress
