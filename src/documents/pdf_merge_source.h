#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "documents/pdf_cross_references.h"
#include "documents/pdf_file_view.h"
#include "documents/pdf_objects.h"
#include "documents/pdf_reference_scan.h"
#include "documents/pdf_streams.h"

namespace quirepress {

// What reading needs anew for every file, kept from one to the next.
struct PdfMergeScratch {
    PdfStreamDecoder decoder;
    std::vector<char> window;
    std::vector<char> unpacked;
    std::vector<PdfPlace> places;
};

// One object as it stands in its file.
struct PdfSourceObject {
    std::string value;  // of a stream, its dictionary
    std::vector<PdfReferenceScan::Found> references;
    bool isStream = false;
    std::int64_t data = 0;     // of a stream: where its bytes stand in the file
    std::int64_t length = 0;   // and how many there are
    std::size_t lengthAt = 0;  // where the dictionary says so, in `value`
};

// All objects of an open file by their numbers. Anything that is not as it should be is a failure, and the
// file is to be read in another way. What a hostile file costs is bounded: no byte of the file and of its
// object streams (which may be 64 MiB, unpacked) is copied twice.
class PdfMergeSource {
public:
    PdfMergeSource(InputFile& file, PdfMergeScratch& scratch);

    bool Open();
    int Version() const { return m_version; }  // of the header: 17 for "%PDF-1.7"
    PdfReference Root() const { return m_root; }
    std::size_t ObjectCount() const { return m_scratch.places.size(); }
    // Whether there is an object that this refers to; nothing when that cannot be right.
    std::optional<bool> Has(const PdfReference& reference) const;

    bool Read(long long number, PdfSourceObject& object);
    // The value itself, or what it refers to.
    bool Resolve(std::string_view value, std::string& resolved);
    // Bytes of the file, at most `size`; empty when they cannot be read. Valid until the next call.
    std::string_view BytesAt(std::int64_t offset, std::int64_t size);

private:
    struct Entry {
        std::uint32_t number;
        std::uint32_t offset;
    };
    struct Unpacked {
        std::string bytes;
        std::vector<Entry> entries;
    };

    bool OpenFrom(std::int64_t origin);
    bool ReadFromFile(long long number, const PdfPlace& place, PdfSourceObject& object);
    bool ReadFromStream(long long number, const PdfPlace& place, PdfSourceObject& object);
    void Keep(PdfSourceObject& object);
    bool ReadStreamEnd(PdfSourceObject& object, bool mayUnpack);
    bool ReadLength(std::string_view value, bool mayUnpack, long long& length);
    const Unpacked* Unpack(long long stream);
    bool ReadEntries(const PdfDictionary& dictionary, Unpacked& unpacked);
    bool Spend(std::size_t bytes);

    PdfMergeScratch& m_scratch;
    PdfFileView m_view;
    std::int64_t m_origin = 0;
    std::int64_t m_budget;  // bytes that may still be copied
    int m_version = 0;
    PdfReference m_root;
    PdfReferenceScan m_scan;
    PdfDictionary m_dictionary;
    std::map<long long, Unpacked> m_streams;
    std::size_t m_unpackedBytes = 0;
    std::size_t m_entryCount = 0;
};

}  // namespace quirepress
