#include "documents/pdf_file_view.h"

#include <algorithm>

namespace quirepress {

PdfFileView::PdfFileView(InputFile& file, std::vector<char>& buffer, std::size_t windowSize)
    : m_file(file), m_size(file.Size()), m_leastWindow(windowSize), m_buffer(buffer) {
    m_tailOffset = std::max<std::int64_t>(m_size - static_cast<std::int64_t>(kTailSize), 0);
    const std::int64_t wanted = m_size - m_tailOffset;
    if (wanted <= 0 || m_file.ReadAt(m_tailOffset, m_tail.data(), static_cast<std::size_t>(wanted)) != wanted)
        m_size = 0;
}

std::string_view PdfFileView::At(std::int64_t offset, std::size_t wanted) {
    if (offset < 0 || offset >= m_size) return {};
    if (offset >= m_tailOffset) {
        const auto skipped = static_cast<std::size_t>(offset - m_tailOffset);
        return std::string_view(m_tail.data() + skipped, static_cast<std::size_t>(m_size - offset));
    }
    const auto rest = static_cast<std::size_t>(m_size - offset);
    const std::int64_t end = offset + static_cast<std::int64_t>(std::min(wanted, rest));
    if (offset < m_windowOffset || end > m_windowOffset + static_cast<std::int64_t>(m_windowSize)) {
        const bool isWhole = m_size <= static_cast<std::int64_t>(m_leastWindow);
        m_windowOffset = isWhole ? 0 : offset;
        const std::size_t size =
            isWhole ? static_cast<std::size_t>(m_size) : std::min(std::max(wanted, m_leastWindow), rest);
        if (m_buffer.size() < size) m_buffer.resize(size);
        const std::int64_t count = m_file.ReadAt(m_windowOffset, m_buffer.data(), size);
        m_windowSize = static_cast<std::size_t>(std::max<std::int64_t>(count, 0));
    }
    const auto skipped = static_cast<std::size_t>(offset - m_windowOffset);
    if (skipped > m_windowSize) return {};  // the file has become shorter
    return std::string_view(m_buffer.data() + skipped, m_windowSize - skipped);
}

}  // namespace quirepress
