#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quirepress {

class InputFile;

constexpr std::size_t kLogPieceLimit = 1023;  // bytes

// The lines of a log as readers with a buffer of fixed size take them: a line that is longer than the limit
// comes in several pieces, each of which stands for a line.
class LogPieces {
public:
    explicit LogPieces(InputFile& file, std::int64_t start = 0, std::size_t limit = kLogPieceLimit);

    // The next piece with its line end; false at the end of the file (more may follow when the file has
    // grown), or when it cannot be read further. `piece` is good until the next call.
    bool TakePiece(std::string_view& piece);
    std::int64_t Offset() const { return m_offset; }  // where the next piece begins
    bool HasFailed() const { return m_hasFailed; }

    // Whether no byte that may be appended to the file can belong to the piece.
    bool IsEnded(std::string_view piece) const { return piece.size() == m_limit || piece.back() == '\n'; }

private:
    std::size_t LengthOfPiece() const;  // 0 when its end has not been read
    bool ReadBlock();

    InputFile& m_file;
    std::int64_t m_offset;
    std::int64_t m_readEnd;
    std::size_t m_limit;
    std::string m_buffer;
    std::string_view m_rest;  // of the buffer
    bool m_hasFailed = false;
};

// The piece without its LF, and then without a CR before it.
std::string_view WithoutLineEnd(std::string_view piece);

}  // namespace quirepress
