#include "documents/page_image.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "base/numbers.h"

namespace quirepress {
namespace {

constexpr std::size_t kLongestHeader = 200;
constexpr int kLargestSide = 10'000;
constexpr long long kMostPixels = 20'000'000;
// More than the noise of a JPEG makes of grey, or the edge of a letter of a colour of its own.
constexpr double kBrightSpread = 32.0 / 255;
// One pixel of so many may be tinted by noise.
constexpr long long kNoiseShare = 1'000;

// The header's words: a kind, a width, a height, a highest value; then one blank. Empty when it is not whole.
std::vector<std::string_view> HeaderWords(std::string_view bytes, std::size_t& end) {
    std::vector<std::string_view> words;
    end = 0;
    while (words.size() < 4) {
        const std::size_t begin = bytes.find_first_not_of(" \t\r\n", end);
        if (begin == std::string_view::npos) return {};
        end = bytes.find_first_of(bytes[begin] == '#' ? "\n" : " \t\r\n", begin);
        if (end == std::string_view::npos) return {};
        if (bytes[begin] != '#') words.push_back(bytes.substr(begin, end - begin));
    }
    ++end;
    return words;
}

}  // namespace

bool PageImages::Take(std::string_view bytes) {
    m_bytes += bytes;
    for (;;) {
        if (!m_hasHeader && !TakeHeader()) return false;
        if (!m_hasHeader) return true;
        TakePixels();
        if (m_left > 0) return true;
        const bool isColor = m_bright > 0 || m_tinted * kNoiseShare > m_pixels;
        m_colors.push_back(isColor ? PageColor::kColor : PageColor::kMono);
        m_hasHeader = false;
    }
}

// True, without a header, when it has not come whole.
bool PageImages::TakeHeader() {
    std::size_t end = 0;
    const std::string_view start = std::string_view(m_bytes).substr(0, kLongestHeader);
    const std::vector<std::string_view> words = HeaderWords(start, end);
    if (words.empty()) return m_bytes.size() < kLongestHeader;
    const auto width = ParseWholeNumber(words[1], 1, kLargestSide);
    const auto height = ParseWholeNumber(words[2], 1, kLargestSide);
    const bool isSound = (words[0] == "P5" || words[0] == "P6") && width && height && words[3] == "255" &&
                         *width * *height <= kMostPixels;
    if (!isSound) return false;
    m_hasHues = words[0] == "P6";
    m_left = m_pixels = *width * *height;
    m_tinted = m_bright = 0;
    m_hasHeader = true;
    m_bytes.erase(0, end);
    return true;
}

void PageImages::TakePixels() {
    const std::size_t size = m_hasHues ? 3 : 1;
    const auto count = std::min<long long>(m_left, static_cast<long long>(m_bytes.size() / size));
    const int tint = static_cast<int>(255 * m_rule.spread);
    const int bright = static_cast<int>(255 * std::max(m_rule.spread, kBrightSpread));
    for (long long i = 0; m_hasHues && i < count; ++i) {
        const auto* const pixel = reinterpret_cast<const unsigned char*>(m_bytes.data()) + 3 * i;
        const auto [low, high] = std::minmax({pixel[0], pixel[1], pixel[2]});
        m_tinted += high - low > tint ? 1 : 0;
        m_bright += high - low > bright ? 1 : 0;
    }
    m_left -= count;
    m_bytes.erase(0, static_cast<std::size_t>(count) * size);
}

}  // namespace quirepress
