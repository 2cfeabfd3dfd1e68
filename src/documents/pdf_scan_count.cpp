#include "documents/pdf_scan_count.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "platform/files.h"

namespace quirepress {
namespace {

constexpr std::int64_t kMostBlockSize = std::int64_t{256} * 1024;
constexpr std::size_t kPatternSize = 12;  // of the longest pattern, and of the slice that is looked at
constexpr std::size_t kLookBack = 2;      // a pattern begins one or two bytes behind what precedes it
constexpr std::string_view kPatterns[] = {"/Type /Page ",  "/Type\n/Page\n", "/Type /Page\n",
                                          "/Type /Page\r", "/Type/Page\r",   "/Type/Page\n"};

// The length of the pattern that begins here; 0 when there is none.
std::size_t MatchPattern(std::string_view bytes) {
    for (const std::string_view pattern : kPatterns)
        if (StartsWith(bytes, pattern)) return pattern.size();
    return 0;
}

bool MayPrecede(char c) {
    return c == '\r' || c == '\n' || c == ' ' || c == '<';
}

// A slice begins behind a byte that may precede a page, which is never the file's first. A short pattern
// has room in it one byte later, too; a zero there would end the slice.
bool IsPage(std::string_view bytes, std::size_t found, std::int64_t offset) {
    const std::size_t length = MatchPattern(bytes.substr(found));
    if (length == 0) return false;
    if (offset >= 2 && MayPrecede(bytes[found - 1])) return true;
    return length < kPatternSize && offset >= 3 && bytes[found - 1] != '\0' && MayPrecede(bytes[found - 2]);
}

}  // namespace

int ScanPdfPages(InputFile& file, const PdfScanProgress& progress) {
    constexpr std::string_view kStart = "/Type";
    const std::int64_t size = file.Size();
    if (size < 0) return -1;
    // Each block begins with the end of the one before: what may precede a pattern, and all of a pattern
    // that went over its end.
    constexpr std::size_t kOverlap = kLookBack + kPatternSize;
    const auto blockSize = static_cast<std::size_t>(std::min(size, kMostBlockSize));
    std::vector<char> buffer(kOverlap + blockSize);
    std::size_t kept = 0;
    long long pages = 0;
    bool isLast = size == 0;
    for (std::int64_t offset = 0; !isLast;) {
        const std::int64_t count = file.ReadAt(offset, buffer.data() + kept, blockSize);
        if (count < 0) return -1;
        const std::int64_t begin = offset - static_cast<std::int64_t>(kept);
        offset += count;
        isLast = offset >= size || count < static_cast<std::int64_t>(blockSize);
        const std::string_view bytes(buffer.data(), kept + static_cast<std::size_t>(count));
        const std::size_t end = bytes.size() - (isLast ? 0 : kPatternSize);
        std::size_t found = bytes.find(kStart, std::min(kept, kLookBack));
        for (; found < end; found = bytes.find(kStart, found + 1))
            if (IsPage(bytes, found, begin + static_cast<std::int64_t>(found))) ++pages;
        if (progress && !progress(100.0 * static_cast<double>(offset) / static_cast<double>(size))) return 0;
        kept = std::min(kOverlap, bytes.size());
        std::copy(bytes.end() - static_cast<std::ptrdiff_t>(kept), bytes.end(), buffer.begin());
    }
    return static_cast<int>(std::min<long long>(pages, std::numeric_limits<int>::max()));
}

}  // namespace quirepress
