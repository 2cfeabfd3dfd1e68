#include "base/keyword_lines.h"

namespace quirepress {

bool KeywordLines::TakeLine(std::string_view& line) {
    if (m_rest.empty()) return false;
    const std::size_t end = m_rest.find('\n');
    line = m_rest.substr(0, end);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.size() > m_limit) {
        m_rest = {};
        return false;
    }
    m_rest = end == std::string_view::npos ? std::string_view() : m_rest.substr(end + 1);
    return true;
}

bool KeywordTokens::TakeToken(std::string_view& token) {
    const std::size_t start = m_rest.find_first_not_of(';');
    if (start == std::string_view::npos) {
        m_rest = {};
        return false;
    }
    const std::size_t end = m_rest.find(';', start);
    token = m_rest.substr(start, end == std::string_view::npos ? end : end - start);
    m_rest = end == std::string_view::npos ? std::string_view() : m_rest.substr(end + 1);
    return true;
}

}  // namespace quirepress
