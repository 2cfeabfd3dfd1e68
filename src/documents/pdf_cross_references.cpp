#include "documents/pdf_cross_references.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "base/text.h"
#include "documents/pdf_file_view.h"
#include "documents/pdf_streams.h"

namespace quirepress {
namespace {

constexpr std::size_t kMostSections = 1'000;
constexpr std::size_t kMostRanges = 20'000;  // of one section
constexpr std::int64_t kTableEntrySize = 20;
constexpr std::size_t kFirstLook = 512;  // bytes in which a dictionary mostly has room
constexpr std::size_t kNearEnd = 1024;
constexpr std::size_t kFartherFromEnd =
    std::size_t{64} * 1024;                // some transfers leave blanks or zeros behind the file
constexpr std::size_t kHeaderSize = 1024;  // the file's "%PDF-" begins within it
constexpr std::string_view kStart = "startxref";
constexpr long long kMostEntries = 20'000'000;  // of all sections

// "[ 1 2 1 ]"; false when it is no array of numbers.
bool ReadNumbers(std::string_view value, std::vector<long long>& numbers) {
    PdfCursor cursor(value);
    if (!cursor.TakeText("[")) return false;
    long long number = 0;
    while (cursor.TakeNumber(number)) numbers.push_back(number);
    return cursor.TakeText("]");
}

}  // namespace

std::int64_t FindCrossReferences(PdfFileView& view) {
    for (const std::size_t look : {kNearEnd, kFartherFromEnd}) {
        const std::int64_t begin = std::max<std::int64_t>(view.Size() - static_cast<std::int64_t>(look), 0);
        const std::string_view bytes = view.At(begin, look);
        const std::size_t found = bytes.rfind(kStart);
        if (found == std::string_view::npos) continue;
        PdfCursor cursor(bytes.substr(found + kStart.size()));
        long long offset = -1;
        return cursor.TakeNumber(offset) ? offset : -1;
    }
    return -1;
}

std::int64_t FindPdfHeader(PdfFileView& view) {
    const std::size_t origin = view.At(0, kHeaderSize).substr(0, kHeaderSize).find("%PDF-");
    return origin == std::string_view::npos ? -1 : static_cast<std::int64_t>(origin);
}

bool PdfCrossReferences::LoadNewest(std::int64_t offset) {
    m_waiting.assign(1, offset);
    return LoadNext();
}

bool PdfCrossReferences::LoadNext() {
    const std::int64_t offset = m_waiting.back();
    m_waiting.pop_back();
    return LoadSection(offset);
}

bool PdfCrossReferences::LoadSection(std::int64_t offset) {
    const bool known = std::any_of(m_sections.begin(), m_sections.end(),
                                   [&](const Section& section) { return section.offset == offset; });
    if (known || m_sections.size() >= kMostSections) return false;
    Section section;
    section.offset = offset;
    const std::int64_t position = offset + m_origin;
    PdfCursor cursor(m_view.At(position, kFirstLook));
    if (cursor.TakeText("xref")) {
        if (!LoadTable(position + static_cast<std::int64_t>(cursor.Position()), section)) return false;
    } else if (!LoadStream(position, section)) {
        return false;
    }
    // A table's stream comes before the older sections, whatever that stream names as older.
    const bool completesTable = !m_sections.empty() && m_sections.back().hybrid == offset;
    if (section.previous >= 0 && !completesTable) m_waiting.push_back(section.previous);
    if (section.hybrid >= 0) m_waiting.push_back(section.hybrid);
    m_sections.push_back(std::move(section));
    return true;
}

// Sub-sections "first count", each followed by entries of 20 bytes, up to the trailer.
bool PdfCrossReferences::LoadTable(std::int64_t position, Section& section) {
    while (section.ranges.size() < kMostRanges) {
        const std::string_view bytes = m_view.At(position, 64);
        PdfCursor cursor(bytes);
        if (cursor.TakeText("trailer"))
            return LoadTrailer(position + static_cast<std::int64_t>(cursor.Position()), section);
        Range range;
        if (!cursor.TakeNumber(range.first) || !cursor.TakeNumber(range.count)) return false;
        if (range.count > m_view.Size() / (kTableEntrySize - 1)) return false;
        cursor.SkipBlanks();
        range.entries = position + static_cast<std::int64_t>(cursor.Position());
        position = range.entries + kTableEntrySize * range.count;
        section.ranges.push_back(range);
    }
    return false;
}

bool PdfCrossReferences::LoadTrailer(std::int64_t position, Section& section) {
    const auto read = [&](std::string_view bytes) {
        PdfCursor cursor(bytes);
        return m_dictionary.Read(cursor);
    };
    return ReadAsMuchAsNeeded(m_view, position, kFirstLook, read) && ReadTrailerKeys(m_dictionary, section);
}

bool PdfCrossReferences::ReadTrailerKeys(const PdfDictionary& dictionary, Section& section) {
    const auto offset = [&](std::string_view key, std::int64_t& result) {
        const std::string_view value = dictionary.Find(key);
        long long number = -1;
        if (!value.empty() && !ReadPdfNumber(value, number)) return false;
        result = number;
        return true;
    };
    if (!offset("Prev", section.previous)) return false;
    if (!section.isStream && !offset("XRefStm", section.hybrid)) return false;
    if (!m_sections.empty()) return true;  // only the newest trailer says what the file is
    m_encrypted = !dictionary.Find("Encrypt").empty();
    return ReadPdfReference(dictionary.Find("Root"), m_root);
}

bool PdfCrossReferences::LoadStream(std::int64_t position, Section& section) {
    section.isStream = true;
    PdfStreamCoding coding;
    long long length = 0;
    std::int64_t rowCount = 0;
    std::size_t data = 0;
    const auto read = [&](std::string_view bytes) {
        PdfCursor cursor(bytes);
        PdfReference header;
        if (!TakeObjectHeader(cursor, header)) return PdfRead::kBad;
        const PdfRead outcome = m_dictionary.Read(cursor);
        if (outcome != PdfRead::kDone) return outcome;
        if (m_dictionary.Find("Type") != "/XRef" || !ReadPdfNumber(m_dictionary.Find("Length"), length) ||
            !ReadStreamCoding(m_dictionary, coding) || !ReadTrailerKeys(m_dictionary, section) ||
            !ReadStreamKeys(m_dictionary, section, rowCount))
            return PdfRead::kBad;
        data = FindStreamData(bytes, cursor.Position());
        return data == std::string_view::npos ? PdfRead::kNeedsMore : PdfRead::kDone;
    };
    if (!ReadAsMuchAsNeeded(m_view, position, kFirstLook, read)) return false;

    const std::size_t width = section.widths[0] + section.widths[1] + section.widths[2];
    const std::size_t size = static_cast<std::size_t>(rowCount) * width;
    m_rowBytes += size;
    if (m_rowBytes > kMostUnpacked || length > static_cast<long long>(kMostObjectSize)) return false;
    if (coding.predicted && coding.columns != width) return false;
    const auto packed = static_cast<std::size_t>(length);
    const std::string_view bytes = m_view.At(position + static_cast<std::int64_t>(data), packed);
    if (bytes.size() < packed) return false;
    const std::size_t expected = size + size / width + 64;
    const auto rows = m_decoder.Decode(coding, bytes.substr(0, packed), expected, 2 * expected, m_buffer);
    if (!rows || rows->size() < size) return false;
    section.rows.assign(rows->begin(), rows->begin() + static_cast<std::ptrdiff_t>(size));
    return true;
}

bool PdfCrossReferences::ReadStreamKeys(const PdfDictionary& dictionary, Section& section,
                                        std::int64_t& rowCount) {
    constexpr long long kMostRows = static_cast<long long>(kMostUnpacked);
    std::vector<long long> widths;
    if (!ReadNumbers(dictionary.Find("W"), widths) || widths.size() != 3) return false;
    std::copy(widths.begin(), widths.end(), section.widths.begin());
    if (*std::max_element(widths.begin(), widths.end()) > 8 || widths[1] == 0) return false;

    std::vector<long long> ranges;
    const std::string_view index = dictionary.Find("Index");
    if (index.empty()) {
        ranges.assign(2, 0);
        if (!ReadPdfNumber(dictionary.Find("Size"), ranges[1])) return false;
    } else if (!ReadNumbers(index, ranges)) {
        return false;
    }
    section.ranges.clear();
    rowCount = 0;
    for (std::size_t i = 0; i + 1 < ranges.size(); i += 2) {
        section.ranges.push_back({ranges[i], ranges[i + 1], rowCount});
        if (ranges[i + 1] > kMostRows || rowCount + ranges[i + 1] > kMostRows) return false;
        rowCount += ranges[i + 1];
    }
    return section.ranges.size() <= kMostRanges;
}

std::optional<PdfPlace> PdfCrossReferences::Find(long long number) {
    PdfPlace place;
    for (std::size_t i = 0;; ++i) {
        if (i == m_sections.size()) {
            if (m_waiting.empty()) return place;
            if (!LoadNext()) return std::nullopt;
        }
        // A table calls free what only its stream shows.
        const bool asksStream = place.kind == PdfPlace::Kind::kFree;
        const auto found = FindIn(m_sections[i], number);
        if (!found) return std::nullopt;
        if (found->kind != PdfPlace::Kind::kAbsent) place = *found;
        const bool maybeInStream = place.kind == PdfPlace::Kind::kFree && m_sections[i].hybrid >= 0;
        if (asksStream || (place.kind != PdfPlace::Kind::kAbsent && !maybeInStream)) return place;
    }
}

std::optional<PdfPlace> PdfCrossReferences::FindIn(const Section& section, long long number) {
    for (const Range& range : section.ranges)
        if (number >= range.first && number - range.first < range.count)
            return ReadEntry(section, range, number - range.first);
    return PdfPlace();
}

std::optional<PdfPlace> PdfCrossReferences::ReadEntry(const Section& section, const Range& range,
                                                      long long index) {
    if (!section.isStream) return ReadTableEntry(range.entries + kTableEntrySize * index);
    return ReadRow(section, static_cast<std::size_t>(range.entries + index));
}

bool PdfCrossReferences::FindAll(long long limit, std::vector<PdfPlace>& places) {
    while (!m_waiting.empty())
        if (!LoadNext()) return false;
    long long entries = 0;
    for (const Section& section : m_sections)
        for (const Range& range : section.ranges) entries += range.count;
    if (entries > kMostEntries) return false;
    for (std::size_t i = 0; i < m_sections.size(); ++i) {
        // A table calls free what only its stream shows.
        const bool isCompleted = m_sections[i].hybrid >= 0;
        const bool completesTable = i > 0 && m_sections[i - 1].hybrid >= 0;
        if (!AddPlaces(m_sections[i], false, limit, places) ||
            (!isCompleted && !AddPlaces(m_sections[i], true, limit, places)) ||
            (completesTable && !AddPlaces(m_sections[i - 1], true, limit, places)))
            return false;
    }
    return true;
}

// Adds what is free, or what is not, where no newer section has said anything.
bool PdfCrossReferences::AddPlaces(const Section& section, bool isFree, long long limit,
                                   std::vector<PdfPlace>& places) {
    for (const Range& range : section.ranges) {
        for (long long index = 0; index < range.count; ++index) {
            const auto place = ReadEntry(section, range, index);
            if (!place) return false;
            if (place->kind == PdfPlace::Kind::kAbsent || (place->kind == PdfPlace::Kind::kFree) != isFree)
                continue;
            const long long number = range.first + index;
            if (number >= limit) return false;
            const auto at = static_cast<std::size_t>(number);
            if (at >= places.size()) places.resize(at + 1);
            if (places[at].kind == PdfPlace::Kind::kAbsent) places[at] = *place;
        }
    }
    return true;
}

// "nnnnnnnnnn ggggg n", and a line end of two bytes.
std::optional<PdfPlace> PdfCrossReferences::ReadTableEntry(std::int64_t position) {
    const std::string_view bytes = m_view.At(position, kTableEntrySize);
    PdfCursor cursor(bytes.substr(0, 18));
    long long offset = 0;
    long long generation = 0;
    if (bytes.size() < 18 || IsPdfBlank(bytes[0]) || !cursor.TakeNumber(offset) || cursor.Position() != 10 ||
        !cursor.TakeNumber(generation) || cursor.Position() != 16)
        return std::nullopt;
    if (cursor.TakeText("n"))
        return PdfPlace{PdfPlace::Kind::kInFile, static_cast<std::uint32_t>(generation), offset};
    if (cursor.TakeText("f")) return PdfPlace{PdfPlace::Kind::kFree};
    return std::nullopt;
}

// Type, position and the rest, each a number of its width, high byte first; without a type it is 1.
PdfPlace PdfCrossReferences::ReadRow(const Section& section, std::size_t row) {
    const std::size_t width = section.widths[0] + section.widths[1] + section.widths[2];
    const char* byte = section.rows.data() + row * width;
    std::array<std::uint64_t, 3> fields{1, 0, 0};
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (section.widths[i] > 0) fields[i] = 0;
        for (std::size_t left = section.widths[i]; left > 0; --left)
            fields[i] = fields[i] << 8 | static_cast<unsigned char>(*byte++);
    }
    constexpr std::uint64_t kMostPosition = std::uint64_t{1} << 62;
    if (fields[1] > kMostPosition) return {};
    constexpr std::uint64_t kMostDetail = std::numeric_limits<std::uint32_t>::max();
    const auto detail = static_cast<std::uint32_t>(std::min(fields[2], kMostDetail));
    const auto position = static_cast<std::int64_t>(fields[1]);
    if (fields[0] == 0) return {PdfPlace::Kind::kFree};
    if (fields[0] == 1) return {PdfPlace::Kind::kInFile, detail, position};
    return fields[0] == 2 ? PdfPlace{PdfPlace::Kind::kInStream, detail, position} : PdfPlace();
}

}  // namespace quirepress
