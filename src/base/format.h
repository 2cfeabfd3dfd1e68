#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>

namespace quirepress {

// One argument of Format: an integer of any width, a double, or a text.
class FormatArgument {
public:
    template <typename T, std::enable_if_t<std::is_integral_v<T>, int> = 0>
    FormatArgument(T value)  // NOLINT(google-explicit-constructor)
        : m_kind(std::is_signed_v<T> ? Kind::kSigned : Kind::kUnsigned),
          m_bits(static_cast<std::uint64_t>(static_cast<std::int64_t>(value))) {}
    FormatArgument(double value) : m_kind(Kind::kReal), m_real(value) {}            // NOLINT
    FormatArgument(std::string_view text) : m_kind(Kind::kText), m_text(text) {}    // NOLINT
    FormatArgument(const char* text) : m_kind(Kind::kText), m_text(text) {}         // NOLINT
    FormatArgument(const std::string& text) : m_kind(Kind::kText), m_text(text) {}  // NOLINT

private:
    friend std::string FormatList(std::string_view, std::initializer_list<FormatArgument>);
    enum class Kind { kSigned, kUnsigned, kReal, kText };
    Kind m_kind;
    std::uint64_t m_bits = 0;
    double m_real = 0;
    std::string_view m_text;
};

std::string FormatList(std::string_view format, std::initializer_list<FormatArgument> arguments);

// Formats by printf's rules, whatever the user's locale. Integers are 64 bits wide whatever the length
// modifier says ("%d", "%ld" and "%lld" mean the same). Widths and precisions of texts count bytes, as the
// fixed-width logs need. A conversion without an argument, or with one of another type, comes out as it
// stands in the format. Never throws but for memory.
template <typename... Arguments>
std::string Format(std::string_view format, const Arguments&... arguments) {
    return FormatList(format, {FormatArgument(arguments)...});
}

}  // namespace quirepress
