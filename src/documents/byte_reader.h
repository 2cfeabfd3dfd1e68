#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace quirepress {

class InputFile;

// Reads a file from begin to end in blocks, and jumps over what nobody looks at without reading it. After a
// failed read the file seems to end; Failed() tells.
class ByteReader {
public:
    explicit ByteReader(InputFile& file);

    static constexpr int kEnd = -1;
    static constexpr std::size_t kMostPeeked = 4096;

    // The next byte, or kEnd.
    int Take();
    void Skip(std::uint64_t count);
    // What comes next: `size` bytes (at most kMostPeeked), fewer only at the end of the file.
    std::string_view Peek(std::size_t size);
    // As much of what comes next as is at hand; empty only at the end of the file.
    std::string_view Rest();
    // Goes to the next occurrence of `text` (short, not empty); to the end, and false, when there is none.
    bool SkipTo(std::string_view text);
    bool Failed() const { return m_failed; }

private:
    void Fill(std::size_t wanted);

    InputFile& m_file;
    std::int64_t m_size;  // at the start; what is appended meanwhile is not read
    std::vector<char> m_buffer;
    std::size_t m_begin = 0;        // of what is unread in m_buffer
    std::size_t m_end = 0;          // of what m_buffer holds
    std::int64_t m_fileOffset = 0;  // of the byte after m_buffer
    bool m_failed = false;
};

}  // namespace quirepress
