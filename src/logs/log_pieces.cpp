#include "logs/log_pieces.h"

#include <algorithm>

#include "platform/files.h"

namespace quirepress {

namespace {

constexpr std::size_t kBlockSize = std::size_t{256} << 10;

}  // namespace

LogPieces::LogPieces(InputFile& file, std::int64_t start, std::size_t limit)
    : m_file(file), m_offset(start), m_readEnd(start), m_limit(limit) {}

bool LogPieces::TakePiece(std::string_view& piece) {
    std::size_t length = LengthOfPiece();
    while (length == 0 && ReadBlock()) length = LengthOfPiece();
    if (length == 0) length = m_rest.size();
    piece = m_rest.substr(0, length);
    m_rest.remove_prefix(length);
    m_offset += static_cast<std::int64_t>(length);
    return length != 0 && !m_hasFailed;
}

std::size_t LogPieces::LengthOfPiece() const {
    const std::string_view window = m_rest.substr(0, m_limit);
    const std::size_t end = window.find('\n');
    if (end != std::string_view::npos) return end + 1;
    return window.size() == m_limit ? m_limit : 0;
}

bool LogPieces::ReadBlock() {
    m_buffer.resize(m_limit + kBlockSize);
    std::copy(m_rest.begin(), m_rest.end(), m_buffer.begin());
    const std::int64_t size = m_file.ReadAt(m_readEnd, m_buffer.data() + m_rest.size(), kBlockSize);
    m_hasFailed = size < 0;
    m_rest = std::string_view(m_buffer).substr(
        0, m_rest.size() + static_cast<std::size_t>(std::max<std::int64_t>(size, 0)));
    m_readEnd += std::max<std::int64_t>(size, 0);
    return size > 0;
}

std::string_view WithoutLineEnd(std::string_view piece) {
    if (!piece.empty() && piece.back() == '\n') piece.remove_suffix(1);
    if (!piece.empty() && piece.back() == '\r') piece.remove_suffix(1);
    return piece;
}

}  // namespace quirepress
