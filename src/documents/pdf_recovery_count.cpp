#include "documents/pdf_recovery_count.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "documents/pdf_file_view.h"
#include "documents/pdf_objects.h"
#include "documents/pdf_page_tree.h"
#include "documents/pdf_quick_count.h"

namespace quirepress {
namespace {

constexpr std::size_t kBlockSize = std::size_t{256} * 1024;
constexpr std::size_t kLookBack = 64;  // "12 0 " stands before "obj"
constexpr std::int64_t kMostFileSize = std::int64_t{4} << 30;
constexpr std::string_view kObject = "obj";
constexpr std::string_view kTrailer = "trailer";
constexpr std::string_view kEndOfStream = "endstream";

// The number before the " G obj" at `position`; -1 when it is none.
long long ReadNumberBefore(std::string_view bytes, std::size_t position) {
    const auto skip = [&](auto&& matches) {
        const std::size_t end = position;
        while (position > 0 && matches(bytes[position - 1])) --position;
        return end != position;
    };
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (!skip(IsPdfBlank) || !skip(isDigit) || !skip(IsPdfBlank) || !skip(isDigit)) return -1;
    PdfCursor cursor(bytes.substr(position));
    long long number = -1;
    return cursor.TakeNumber(number) ? number : -1;
}

// The next occurrence of a word at or behind an index that only grows.
class NextWord {
public:
    NextWord(std::string_view bytes, std::string_view word, std::size_t index)
        : m_bytes(bytes), m_word(word), m_found(bytes.find(word, index)) {}

    std::size_t From(std::size_t index) {
        if (m_found < index) m_found = m_bytes.find(m_word, index);
        return m_found;
    }

private:
    std::string_view m_bytes;
    std::string_view m_word;
    std::size_t m_found;
};

class RecoveryScan {
public:
    RecoveryScan(InputFile& file, PdfScratch& scratch);
    PdfRecovery Run();

private:
    // What is known after a look at one place of the block.
    enum class Outcome { kGoOn, kNeedsMore, kMoved };  // kMoved: m_position says where it goes on

    void ScanBlock();
    Outcome TakeTrailer(std::string_view bytes);
    Outcome TakeObject(long long number, std::string_view bytes, std::int64_t offset);
    Outcome TakeStream(std::string_view bytes, std::size_t data, std::int64_t offset);
    void TakeObjectStream(std::string_view data, std::int64_t offset, long long length);
    std::string_view ReadApart(std::int64_t offset, std::size_t size);
    PdfRead AddObject(long long number, std::string_view bytes, PdfCursor& cursor);
    void TakeTrailerKeys();
    bool EndsStream(std::int64_t offset);
    void Spend(std::size_t bytes) { m_effort -= static_cast<std::int64_t>(bytes); }
    void GiveUpUnless(bool good) {
        if (!good) m_effort = -1;
    }

    InputFile& m_file;
    PdfScratch& m_scratch;
    PdfFileView m_view;
    PdfPageTree m_tree;
    PdfDictionary m_dictionary;
    std::int64_t m_position = 0;  // where the next look begins
    std::size_t m_blockSize = kBlockSize;
    std::int64_t m_effort;  // bytes that may still be looked at; below 0 the scan has given up
    bool m_encrypted = false;
    bool m_hasObjectStreams = false;
};

RecoveryScan::RecoveryScan(InputFile& file, PdfScratch& scratch)
    : m_file(file), m_scratch(scratch), m_view(file, scratch.window) {
    constexpr std::int64_t kLeast = std::int64_t{64} << 20;
    m_effort = 8 * std::min(m_view.Size(), kMostFileSize) + kLeast;
}

PdfRecovery RecoveryScan::Run() {
    GiveUpUnless(m_view.Size() <= kMostFileSize);
    while (m_position < m_view.Size() && m_effort >= 0) ScanBlock();
    PdfRecovery recovery;
    recovery.foundObjects = !m_tree.IsEmpty() || m_effort < 0;
    if (m_effort < 0 || (m_encrypted && m_hasObjectStreams)) return recovery;
    const long long pages = m_tree.CountPages();
    if (pages > 0)
        recovery.pages = static_cast<int>(std::min<long long>(pages, std::numeric_limits<int>::max()));
    return recovery;
}

// From m_position on, to the block's end or to where an object leads.
void RecoveryScan::ScanBlock() {
    const std::int64_t begin = std::max<std::int64_t>(m_position - static_cast<std::int64_t>(kLookBack), 0);
    const std::string_view bytes = m_view.At(begin, m_blockSize);
    Spend(bytes.size());
    const bool isLast = begin + static_cast<std::int64_t>(bytes.size()) >= m_view.Size();
    if (!isLast && bytes.size() < m_blockSize) return GiveUpUnless(false);
    auto index = static_cast<std::size_t>(m_position - begin);
    const std::size_t start = index;
    NextWord trailers(bytes, kTrailer, index);
    NextWord objects(bytes, kObject, index);
    while (m_effort >= 0) {
        const std::size_t trailer = trailers.From(index);
        const std::size_t found = std::min(objects.From(index), trailer);
        if (found == std::string_view::npos) break;
        Outcome outcome = Outcome::kGoOn;
        if (found == trailer) {
            index = found + kTrailer.size();
            outcome = TakeTrailer(bytes.substr(index));
        } else {
            index = found + kObject.size();
            if (const long long number = ReadNumberBefore(bytes, found); number >= 0)
                outcome = TakeObject(number, bytes.substr(index), begin + static_cast<std::int64_t>(index));
        }
        if (outcome == Outcome::kMoved) {
            if (m_position - begin >= static_cast<std::int64_t>(bytes.size())) return;
            index = static_cast<std::size_t>(m_position - begin);
        }
        if (outcome != Outcome::kNeedsMore || isLast) continue;
        // Again from here; with more when this is where the look began. What is too long is passed over.
        const bool beganHere = found <= start + kLookBack;
        if (beganHere && m_blockSize >= kMostObjectSize) continue;
        m_position = begin + static_cast<std::int64_t>(found);
        m_blockSize = beganHere ? m_blockSize * 8 : kBlockSize;
        return;
    }
    m_blockSize = kBlockSize;
    const std::size_t passed = isLast ? bytes.size() : std::max(index, bytes.size() - kTrailer.size());
    m_position = begin + static_cast<std::int64_t>(passed);
}

RecoveryScan::Outcome RecoveryScan::TakeTrailer(std::string_view bytes) {
    PdfCursor cursor(bytes);
    const PdfRead read = m_dictionary.Read(cursor);
    Spend(read == PdfRead::kDone ? cursor.Position() : bytes.size());
    if (read == PdfRead::kNeedsMore) return Outcome::kNeedsMore;
    if (read == PdfRead::kDone) TakeTrailerKeys();
    return Outcome::kGoOn;
}

void RecoveryScan::TakeTrailerKeys() {
    PdfReference root;
    if (ReadPdfReference(m_dictionary.Find("Root"), root)) GiveUpUnless(m_tree.AddRoot(root.number));
    if (!m_dictionary.Find("Encrypt").empty()) m_encrypted = true;
}

// What stands behind "obj", at `offset` in the file.
RecoveryScan::Outcome RecoveryScan::TakeObject(long long number, std::string_view bytes,
                                               std::int64_t offset) {
    PdfCursor cursor(bytes);
    const PdfRead read = AddObject(number, bytes, cursor);
    if (read == PdfRead::kNeedsMore) return Outcome::kNeedsMore;
    const std::size_t data = FindStreamData(bytes, cursor.Position());
    if (read == PdfRead::kBad || data == std::string_view::npos) return Outcome::kGoOn;
    if (m_dictionary.Find("Type") == "/XRef") TakeTrailerKeys();
    return TakeStream(bytes, data, offset);
}

// The object at the begin of `bytes`, and the cursor behind it. A dictionary is then in m_dictionary, which
// is empty for anything else.
PdfRead RecoveryScan::AddObject(long long number, std::string_view bytes, PdfCursor& cursor) {
    m_dictionary.Clear();
    cursor.SkipBlanks();
    const std::string_view body = bytes.substr(cursor.Position());
    PdfRead read = PdfRead::kDone;
    bool good = true;
    if (StartsWith(body, "[")) {
        std::string_view array;
        read = cursor.TakeValue(array);
        if (read == PdfRead::kDone) good = m_tree.AddArray(number, array);
    } else if (StartsWith(body, "<<")) {
        read = m_dictionary.Read(cursor);
        if (read == PdfRead::kDone) good = m_tree.AddDictionary(number, m_dictionary);
    } else {
        good = m_tree.AddOther(number);
    }
    Spend(read == PdfRead::kDone ? cursor.Position() : bytes.size());
    GiveUpUnless(good);
    return read;
}

// Stream data, whose dictionary is at hand, is passed over when its length is right. It may hold whole PDF
// files, none of whose objects count.
RecoveryScan::Outcome RecoveryScan::TakeStream(std::string_view bytes, std::size_t data,
                                               std::int64_t offset) {
    offset += static_cast<std::int64_t>(data);
    long long length = -1;
    if (!ReadPdfNumber(m_dictionary.Find("Length"), length) || length > m_view.Size() - offset ||
        !EndsStream(offset + length))
        length = -1;
    if (m_dictionary.Find("Type") == "/ObjStm") {
        m_hasObjectStreams = true;
        TakeObjectStream(bytes.substr(data), offset, length);
    }
    if (length < 0) return Outcome::kGoOn;
    m_position = offset + length;
    return Outcome::kMoved;
}

// Beside the block that is being looked at.
std::string_view RecoveryScan::ReadApart(std::int64_t offset, std::size_t size) {
    std::vector<char>& buffer = m_scratch.crossReferences;
    if (buffer.size() < size) buffer.resize(size);
    const std::int64_t count = m_file.ReadAt(offset, buffer.data(), size);
    return std::string_view(buffer.data(), static_cast<std::size_t>(std::max<std::int64_t>(count, 0)));
}

bool RecoveryScan::EndsStream(std::int64_t offset) {
    PdfCursor cursor(ReadApart(offset, 16));
    return cursor.TakeText(kEndOfStream);
}

// `data` at `offset`, as far as the block goes, is `length` bytes long, or up to the next end of a stream
// when that is -1.
void RecoveryScan::TakeObjectStream(std::string_view data, std::int64_t offset, long long length) {
    PdfObjectStream stream;
    PdfStreamCoding coding;
    if (m_encrypted || !stream.ReadKeys(m_dictionary) || !ReadStreamCoding(m_dictionary, coding)) return;
    const std::size_t size =
        length < 0 ? data.find(kEndOfStream) : std::min(static_cast<std::size_t>(length), kMostObjectSize);
    const bool inBlock = length < 0 || size <= data.size();
    const std::string_view packed = inBlock ? data.substr(0, size) : ReadApart(offset, size);
    Spend(packed.size());
    const auto content =
        m_scratch.decoder.Decode(coding, packed, 5 * packed.size(), kMostUnpacked, m_scratch.objects);
    if (!content) return;
    Spend(content->size());
    stream.Visit(*content, [&](long long number, std::string_view text) {
        PdfCursor cursor(text);
        AddObject(number, text, cursor);
        return m_effort >= 0;
    });
}

}  // namespace

PdfRecovery RecoverPdfPages(InputFile& file, PdfScratch& scratch) {
    const PdfRecovery recovery = RecoveryScan(file, scratch).Run();
    scratch.GiveBackMuch();
    return recovery;
}

}  // namespace quirepress
