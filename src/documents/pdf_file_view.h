#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "documents/pdf_tokens.h"
#include "platform/files.h"

namespace quirepress {

// Parts of a PDF file, read when they are needed. The end of the file, where every reader begins, is kept.
class PdfFileView {
public:
    static constexpr std::size_t kWindowSize = 2048;  // most objects lie near their neighbours

    // At least `windowSize` bytes are read at a time; a file that is not longer is read at once.
    PdfFileView(InputFile& file, std::vector<char>& buffer, std::size_t windowSize = kWindowSize);

    std::int64_t Size() const { return m_size; }
    // What stands from `offset` on: at least `wanted` bytes, or all up to the end; empty beyond the end and
    // when it cannot be read. Valid until the next call.
    std::string_view At(std::int64_t offset, std::size_t wanted);

private:
    static constexpr std::size_t kTailSize = 1024;

    InputFile& m_file;
    std::int64_t m_size;
    std::size_t m_leastWindow;
    std::array<char, kTailSize> m_tail;
    std::int64_t m_tailOffset = 0;
    std::vector<char>& m_buffer;  // its first m_windowSize bytes are those of the file at m_windowOffset
    std::int64_t m_windowOffset = 0;
    std::size_t m_windowSize = 0;
};

constexpr std::size_t kMostObjectSize = std::size_t{16} << 20;  // of one dictionary, array or stream

// Calls `read` with more and more of what stands at `offset` until it has enough: string_view -> PdfRead.
template <typename Read>
bool ReadAsMuchAsNeeded(PdfFileView& view, std::int64_t offset, std::size_t wanted, Read read) {
    for (;; wanted *= 4) {
        const std::string_view bytes = view.At(offset, wanted);
        const PdfRead outcome = read(bytes);
        if (outcome != PdfRead::kNeedsMore) return outcome == PdfRead::kDone;
        if (offset + static_cast<std::int64_t>(bytes.size()) >= view.Size()) return false;
        if (bytes.size() < wanted || wanted >= kMostObjectSize) return false;
    }
}

}  // namespace quirepress
