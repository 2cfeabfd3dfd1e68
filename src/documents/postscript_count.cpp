#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "base/numbers.h"
#include "base/text.h"
#include "documents/page_counts.h"
#include "platform/files.h"

namespace quirepress {
namespace {

constexpr std::string_view kSignature = "%!PS";
constexpr std::string_view kPages = "%%Pages:";
constexpr std::string_view kPagesAtEnd = "%%Pages: (atend)";
constexpr std::size_t kHeaderOffsets = 4098;  // a comment may begin at the first so many offsets
constexpr std::size_t kSliceSize = 20;        // of a comment, what is looked at
constexpr std::int64_t kTrailerSize = 60;

using Window = std::array<char, kHeaderOffsets + kSliceSize>;

bool ReadWindow(InputFile& file, std::int64_t offset, std::size_t size, Window& window,
                std::string_view& bytes) {
    const std::int64_t count = file.ReadAt(offset, window.data(), size);
    if (count < 0) return false;
    bytes = std::string_view(window.data(), static_cast<std::size_t>(count));
    return true;
}

// Goes through the comments that begin before `end`; the last number counts. True as soon as one refers to
// the end of the file, and `position` is then past its first byte.
bool FindPages(std::string_view bytes, std::size_t end, std::size_t& position, int& pages) {
    for (;;) {
        const std::size_t found = bytes.find(kPages, position);
        if (found == std::string_view::npos || found >= end) return false;
        position = found + 1;
        const std::string_view slice = bytes.substr(found, kSliceSize);
        if (StartsWith(slice, kPagesAtEnd)) return true;
        pages = ParseLong(slice.substr(kPages.size()));
    }
}

}  // namespace

int CountPostScriptPages(InputFile& file) {
    Window window;
    std::string_view bytes;
    if (!ReadWindow(file, 0, window.size(), window, bytes)) return -1;
    if (!StartsWith(bytes, kSignature)) return 0;

    int pages = 0;
    std::size_t position = 0;
    if (!FindPages(bytes, kHeaderOffsets, position, pages)) return pages;

    // A comment of the trailer itself does not lead back to the trailer's begin.
    const std::int64_t size = file.Size();
    const std::int64_t trailer = std::max<std::int64_t>(size - kTrailerSize, position);
    if (size < 0 || !ReadWindow(file, trailer, kTrailerSize, window, bytes)) return -1;
    position = 0;
    while (FindPages(bytes, bytes.size(), position, pages)) {
    }
    return pages;
}

}  // namespace quirepress
