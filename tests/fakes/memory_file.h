#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "platform/files.h"

namespace quirepress {

// An open file whose bytes lie in memory. It counts the bytes that are read, and its reads fail from
// `failAt` on.
class MemoryFile : public InputFile {
public:
    explicit MemoryFile(std::string bytes) : m_bytes(std::move(bytes)) {}

    std::int64_t ReadAt(std::int64_t offset, void* buffer, std::size_t size) override {
        if (offset < 0) return -1;
        if (m_failAt >= 0 && offset + static_cast<std::int64_t>(size) > m_failAt) return -1;
        const std::string_view bytes = m_bytes;
        const std::string_view part = offset < Size() ? bytes.substr(offset, size) : std::string_view();
        std::copy(part.begin(), part.end(), static_cast<char*>(buffer));
        m_bytesRead += static_cast<std::int64_t>(part.size());
        return static_cast<std::int64_t>(part.size());
    }
    std::int64_t Size() override { return static_cast<std::int64_t>(m_bytes.size()); }

    void FailAt(std::int64_t offset) { m_failAt = offset; }
    std::int64_t BytesRead() const { return m_bytesRead; }

private:
    std::string m_bytes;
    std::int64_t m_failAt = -1;
    std::int64_t m_bytesRead = 0;
};

}  // namespace quirepress
