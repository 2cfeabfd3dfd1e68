#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "documents/pdf_tokens.h"

namespace quirepress {

class PdfCrossReferences;
class PdfFileView;
class PdfStreamDecoder;

// An object stream, unpacked: "number offset" for each object, then the objects.
class PdfObjectStream {
public:
    // Takes what the dictionary says of the contents; false when it is no such stream.
    bool ReadKeys(const PdfDictionary& dictionary);
    // The numbers and texts of the objects, in their order; an object's text begins with it and goes on up
    // to the stream's end. False when the list is broken; what stands before the break has been visited.
    // `visit` answers false to end the walk.
    bool Visit(std::string_view content,
               const std::function<bool(long long number, std::string_view text)>& visit) const;

private:
    long long m_first = 0;  // where the objects begin
    long long m_count = 0;
};

// Objects by their numbers, by way of the cross references.
class PdfObjects {
public:
    PdfObjects(PdfFileView& view, PdfCrossReferences& crossReferences, PdfStreamDecoder& decoder,
               std::vector<char>& buffer)
        : m_view(view), m_crossReferences(crossReferences), m_decoder(decoder), m_buffer(buffer) {}

    using Reader = std::function<PdfRead(std::string_view text)>;

    // Calls `read` with a text that begins with the object, again with a longer one when that was too
    // short. True when it was done. False, too, when anything about the object's place is not as it should.
    bool Read(const PdfReference& reference, const Reader& read);
    // A number, or a reference to one.
    bool ReadNumber(std::string_view value, long long& number);

private:
    bool ReadFromFile(const PdfReference& reference, std::int64_t position, const Reader& read);
    bool ReadFromStream(long long number, long long stream, const Reader& read);
    bool LoadStream(long long stream);

    PdfFileView& m_view;
    PdfCrossReferences& m_crossReferences;
    PdfStreamDecoder& m_decoder;
    std::vector<char>& m_buffer;

    long long m_loadedStream = -1;
    PdfObjectStream m_stream;
    std::string_view m_content;  // in m_buffer
};

}  // namespace quirepress
