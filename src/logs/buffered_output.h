#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/files.h"

namespace quirepress {

// Gathers what is written to `Target` (whose Write takes bytes and a size, and answers a FileResult) into
// large writes. Once one has failed, nothing more is written.
template <typename Target>
class BufferedOutput {
public:
    explicit BufferedOutput(Target& target) : m_target(target) { m_buffer.reserve(kSize + kRoom); }

    void Append(std::string_view bytes) {
        m_buffer += bytes;
        if (m_buffer.size() >= kSize) Flush();
    }
    FileResult Flush() {
        if (m_result == FileResult::kDone && !m_buffer.empty())
            m_result = m_target.Write(m_buffer.data(), m_buffer.size());
        m_buffer.clear();
        return m_result;
    }
    FileResult Result() const { return m_result; }

private:
    static constexpr std::size_t kSize = std::size_t{256} << 10;
    static constexpr std::size_t kRoom = 4096;

    Target& m_target;
    std::string m_buffer;
    FileResult m_result = FileResult::kDone;
};

}  // namespace quirepress
