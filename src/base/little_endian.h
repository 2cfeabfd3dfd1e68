#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quirepress {

// Unsigned numbers of binary files, lowest byte first. The bytes must be there.

inline std::uint32_t ReadLittle32(std::string_view bytes, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i > 0; --i) value = value << 8 | static_cast<unsigned char>(bytes[at + i - 1]);
    return value;
}

inline std::uint16_t ReadLittle16(std::string_view bytes, std::size_t at) {
    const unsigned low = static_cast<unsigned char>(bytes[at]);
    const unsigned high = static_cast<unsigned char>(bytes[at + 1]);
    return static_cast<std::uint16_t>(high << 8 | low);
}

inline void WriteLittle32(std::string& bytes, std::size_t at, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) bytes[at + i] = static_cast<char>(value >> (8 * i) & 0xFF);
}

inline void WriteLittle16(std::string& bytes, std::size_t at, std::uint16_t value) {
    bytes[at] = static_cast<char>(value & 0xFF);
    bytes[at + 1] = static_cast<char>(value >> 8);
}

}  // namespace quirepress
