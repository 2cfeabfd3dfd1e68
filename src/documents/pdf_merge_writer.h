#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "documents/pdf_streams.h"

namespace quirepress {

class ReplacementFile;

// A new PDF, written from front to end: objects come in any order, the small ones packed together. A failed
// write is the file's to tell.
class PdfMergeWriter {
public:
    explicit PdfMergeWriter(ReplacementFile& file);

    std::uint32_t NewNumber();  // from 1
    // Each number once; one that never comes is an object that does not exist.
    void WriteObject(std::uint32_t number, std::string_view value);
    // A stream's bytes follow by WriteBytes, and then the call to end it.
    void BeginStream(std::uint32_t number, std::string_view dictionary);
    void WriteBytes(std::string_view bytes);
    void EndStream() { WriteBytes("\nendstream\nendobj\n"); }
    // The cross references, and all that was kept back.
    void Finish(std::uint32_t root);

private:
    void BeginObject(std::uint32_t number);
    void FlushPacked();
    void Flush();
    std::string MakeRows() const;

    ReplacementFile& m_file;
    PdfStreamEncoder m_encoder;
    std::string m_buffer;
    std::uint64_t m_position = 0;  // in the file, of what comes next
    std::vector<std::uint64_t>
        m_places;  // by number: position or object stream, and below it the place in it
    std::vector<std::uint32_t> m_packed;  // the numbers of the objects that wait to be packed together
    std::string m_packedList;             // what an object stream says of them
    std::string m_packedValues;
};

}  // namespace quirepress
