#include "documents/byte_reader.h"

#include <algorithm>
#include <cstring>

#include "platform/files.h"

namespace quirepress {
namespace {

// Room for a block, or for all of a short file.
std::vector<char> MakeBuffer(std::int64_t fileSize) {
    constexpr std::int64_t kMostSize = std::int64_t{128} * 1024;
    const auto least = static_cast<std::int64_t>(ByteReader::kMostPeeked);
    return std::vector<char>(static_cast<std::size_t>(std::clamp(fileSize, least, kMostSize)));
}

}  // namespace

ByteReader::ByteReader(InputFile& file)
    : m_file(file), m_size(file.Size()), m_buffer(MakeBuffer(m_size)), m_failed(m_size < 0) {}

int ByteReader::Take() {
    if (m_begin == m_end) Fill(1);
    if (m_begin == m_end) return kEnd;
    return static_cast<unsigned char>(m_buffer[m_begin++]);
}

void ByteReader::Skip(std::uint64_t count) {
    const std::uint64_t here = std::min<std::uint64_t>(count, m_end - m_begin);
    m_begin += static_cast<std::size_t>(here);
    const std::int64_t rest = std::max<std::int64_t>(m_size - m_fileOffset, 0);
    m_fileOffset += static_cast<std::int64_t>(std::min(count - here, static_cast<std::uint64_t>(rest)));
}

std::string_view ByteReader::Peek(std::size_t size) {
    Fill(size);
    return std::string_view(m_buffer.data() + m_begin, std::min(size, m_end - m_begin));
}

std::string_view ByteReader::Rest() {
    if (m_begin == m_end) Fill(1);
    return std::string_view(m_buffer.data() + m_begin, m_end - m_begin);
}

bool ByteReader::SkipTo(std::string_view text) {
    for (;;) {
        Fill(text.size());
        const std::string_view rest(m_buffer.data() + m_begin, m_end - m_begin);
        if (rest.size() < text.size()) {
            m_begin = m_end;
            return false;
        }
        const std::size_t found = rest.find(text);
        if (found != std::string_view::npos) {
            m_begin += found;
            return true;
        }
        m_begin = m_end - (text.size() - 1);
    }
}

// Moves what is unread to the front and reads on, until `wanted` bytes are there or the file ends.
void ByteReader::Fill(std::size_t wanted) {
    if (m_end - m_begin >= wanted || m_fileOffset >= m_size) return;
    std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
    m_end -= m_begin;
    m_begin = 0;
    const std::int64_t room = std::min<std::int64_t>(m_buffer.size() - m_end, m_size - m_fileOffset);
    const std::int64_t count =
        m_file.ReadAt(m_fileOffset, m_buffer.data() + m_end, static_cast<std::size_t>(room));
    if (count < 0) m_failed = true;
    if (count < room) m_size = m_fileOffset;  // it ends here now
    if (count <= 0) return;
    m_end += static_cast<std::size_t>(count);
    m_fileOffset += count;
}

}  // namespace quirepress
