#include "logs/log_lines.h"

#include "base/text.h"
#include "platform/files.h"

namespace quirepress {

namespace {

constexpr std::size_t kBlockSize = std::size_t{64} << 10;
constexpr std::size_t kLongestLine = std::size_t{64} << 10;

}  // namespace

bool LogLines::TakeLine(std::string_view& line) {
    m_line.clear();
    bool isAny = false;
    for (bool isWhole = false; !isWhole && (!m_rest.empty() || ReadBlock());) {
        isAny = true;
        const std::size_t end = m_rest.find('\n');
        isWhole = end != std::string_view::npos;
        m_line += m_rest.substr(0, end).substr(0, kLongestLine - m_line.size());
        m_rest.remove_prefix(isWhole ? end + 1 : m_rest.size());
    }
    line = m_line;
    if (EndsWith(line, "\r")) line.remove_suffix(1);
    return isAny;
}

bool LogLines::ReadBlock() {
    m_block.resize(kBlockSize);
    const std::int64_t size = m_file.ReadAt(m_offset, m_block.data(), m_block.size());
    m_hasFailed = size < 0;
    if (size <= 0) return false;
    m_offset += size;
    m_rest = std::string_view(m_block).substr(0, static_cast<std::size_t>(size));
    return true;
}

}  // namespace quirepress
