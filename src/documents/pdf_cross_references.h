#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "documents/pdf_tokens.h"

namespace quirepress {

class PdfFileView;
class PdfStreamDecoder;

// Where an object stands.
struct PdfPlace {
    enum class Kind : std::uint8_t { kAbsent, kFree, kInFile, kInStream };
    Kind kind = Kind::kAbsent;
    std::uint32_t detail = 0;   // kInFile: generation; kInStream: how many objects stand before it
    std::int64_t position = 0;  // kInFile: offset in the file; kInStream: number of the object stream
};

// Where the newest cross references are said to stand; -1 when nothing says it.
std::int64_t FindCrossReferences(PdfFileView& view);
// Where "%PDF-" stands: something may come before the file proper, such as a printer's job commands. -1 when
// it is not near the begin.
std::int64_t FindPdfHeader(PdfFileView& view);

// The cross-reference sections of a file, newest first. Older ones are read only when an object is not found
// in the newer ones. Everything that is not as it should be is a failure: nothing is guessed.
class PdfCrossReferences {
public:
    // `origin`: where "%PDF-" stands, from which all offsets count.
    PdfCrossReferences(PdfFileView& view, PdfStreamDecoder& decoder, std::vector<char>& buffer,
                       std::int64_t origin)
        : m_view(view), m_decoder(decoder), m_buffer(buffer), m_origin(origin) {}

    bool LoadNewest(std::int64_t offset);
    // Nothing when a section that is needed cannot be read.
    std::optional<PdfPlace> Find(long long number);
    // The places of all objects by their numbers. False when a section cannot be read or a number is `limit`
    // or more.
    bool FindAll(long long limit, std::vector<PdfPlace>& places);

    PdfReference Root() const { return m_root; }
    bool IsEncrypted() const { return m_encrypted; }
    std::int64_t Origin() const { return m_origin; }

private:
    // Consecutive objects whose entries stand one after the other.
    struct Range {
        long long first = 0;
        long long count = 0;
        std::int64_t entries = 0;  // table: offset in the file; stream: index of the first row
    };
    struct Section {
        std::int64_t offset = 0;
        bool isStream = false;
        std::vector<Range> ranges;
        std::array<std::size_t, 3> widths{};  // stream: bytes of each field of a row
        std::vector<char> rows;               // stream
        std::int64_t hybrid = -1;             // table: offset of the stream that completes it
        std::int64_t previous = -1;
    };

    bool LoadSection(std::int64_t offset);
    bool LoadTable(std::int64_t position, Section& section);
    bool LoadTrailer(std::int64_t position, Section& section);
    bool LoadStream(std::int64_t position, Section& section);
    bool ReadStreamKeys(const PdfDictionary& dictionary, Section& section, std::int64_t& rowCount);
    bool ReadTrailerKeys(const PdfDictionary& dictionary, Section& section);
    bool LoadNext();
    std::optional<PdfPlace> FindIn(const Section& section, long long number);
    bool AddPlaces(const Section& section, bool isFree, long long limit, std::vector<PdfPlace>& places);
    std::optional<PdfPlace> ReadEntry(const Section& section, const Range& range, long long index);
    std::optional<PdfPlace> ReadTableEntry(std::int64_t position);
    static PdfPlace ReadRow(const Section& section, std::size_t row);

    PdfFileView& m_view;
    PdfStreamDecoder& m_decoder;
    std::vector<char>& m_buffer;
    std::int64_t m_origin;
    std::vector<Section> m_sections;
    std::vector<std::int64_t> m_waiting;  // offsets of sections to read next, the last one first
    PdfDictionary m_dictionary;
    std::size_t m_rowBytes = 0;  // of all sections
    PdfReference m_root;
    bool m_encrypted = false;
};

}  // namespace quirepress
