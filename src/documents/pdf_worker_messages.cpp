#include "documents/pdf_worker_messages.h"

#include <cstdint>
#include <limits>
#include <vector>

#include "base/numbers.h"
#include "base/text.h"

namespace quirepress {
namespace {

constexpr std::string_view kQuick = "quick";
constexpr std::string_view kFull = "full";
constexpr std::string_view kPages = "pages ";
constexpr std::string_view kHexDigits = "0123456789abcdef";

std::string ToHex(std::string_view bytes) {
    std::string hex;
    hex.reserve(2 * bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        hex += kHexDigits[byte >> 4];
        hex += kHexDigits[byte & 15];
    }
    return hex;
}

bool FromHex(std::string_view hex, std::string& bytes) {
    bytes.clear();
    for (std::size_t i = 0; i < hex.size(); i += 2) {
        const std::size_t high = kHexDigits.find(hex[i]);
        const std::size_t low = i + 1 < hex.size() ? kHexDigits.find(hex[i + 1]) : std::string_view::npos;
        if (high == std::string_view::npos || low == std::string_view::npos) return false;
        bytes += static_cast<char>(high << 4 | low);
    }
    return true;
}

}  // namespace

std::string FormatRequest(const PdfWorkerRequest& request) {
    std::string line(request.full ? kFull : kQuick);
    return line + ' ' + ToHex(request.path) + ' ' + ToHex(request.password);
}

bool ParseRequest(std::string_view line, PdfWorkerRequest& request) {
    const std::vector<std::string_view> words = SplitAt(line, ' ');
    if (words.size() != 3 || (words[0] != kQuick && words[0] != kFull)) return false;
    request.full = words[0] == kFull;
    return FromHex(words[1], request.path) && FromHex(words[2], request.password);
}

std::string FormatAnswer(long long pages) {
    return std::string(kPages) + std::to_string(pages);
}

bool ParseAnswer(std::string_view line, long long& pages) {
    if (!StartsWith(line, kPages)) return false;
    const auto number =
        ParseWholeNumber(line.substr(kPages.size()), -1, std::numeric_limits<std::int64_t>::max());
    if (number) pages = *number;
    return number.has_value();
}

}  // namespace quirepress
