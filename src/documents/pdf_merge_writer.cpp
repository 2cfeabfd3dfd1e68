#include "documents/pdf_merge_writer.h"

#include <algorithm>

#include "platform/file_tools.h"

namespace quirepress {
namespace {

constexpr std::size_t kBufferSize = std::size_t{256} * 1024;
constexpr std::size_t kPackedObjects = 200;  // in one object stream
constexpr std::size_t kPackedBytes = std::size_t{256} * 1024;
constexpr std::size_t kMostPacked = std::size_t{64} * 1024;  // a larger object stands alone
constexpr std::uint64_t kStandsAlone = 0xFF;                 // instead of a place in an object stream
constexpr int kPlaceBits = 8;
constexpr std::size_t kRowSize = 8;  // of the cross references: kind, six bytes of position, place

std::string Key(std::string_view key, std::uint64_t value) {
    return std::string(key) + ' ' + std::to_string(value);
}

}  // namespace

PdfMergeWriter::PdfMergeWriter(ReplacementFile& file) : m_file(file), m_places(1) {
    m_buffer.reserve(kBufferSize);
    WriteBytes("%PDF-1.7\n%\xE2\xE3\xCF\xD3\n");
}

std::uint32_t PdfMergeWriter::NewNumber() {
    m_places.push_back(0);
    return static_cast<std::uint32_t>(m_places.size() - 1);
}

void PdfMergeWriter::WriteObject(std::uint32_t number, std::string_view value) {
    if (value.size() > kMostPacked) {
        BeginObject(number);
        WriteBytes(value);
        WriteBytes("\nendobj\n");
        return;
    }
    m_packedList += Key(std::to_string(number), m_packedValues.size()) + ' ';
    m_packedValues.append(value);
    m_packedValues += '\n';
    m_packed.push_back(number);
    if (m_packed.size() == kPackedObjects || m_packedValues.size() > kPackedBytes) FlushPacked();
}

void PdfMergeWriter::BeginStream(std::uint32_t number, std::string_view dictionary) {
    BeginObject(number);
    WriteBytes(dictionary);
    WriteBytes("\nstream\n");
}

void PdfMergeWriter::BeginObject(std::uint32_t number) {
    m_places[number] = m_position << kPlaceBits | kStandsAlone;
    WriteBytes(std::to_string(number) + " 0 obj\n");
}

void PdfMergeWriter::WriteBytes(std::string_view bytes) {
    m_position += bytes.size();
    if (m_buffer.size() + bytes.size() > kBufferSize) Flush();
    if (bytes.size() > kBufferSize)
        m_file.Write(bytes.data(), bytes.size());
    else
        m_buffer.append(bytes);
}

void PdfMergeWriter::Flush() {
    m_file.Write(m_buffer.data(), m_buffer.size());
    m_buffer.clear();
}

void PdfMergeWriter::FlushPacked() {
    if (m_packed.empty()) return;
    const std::uint32_t stream = NewNumber();
    for (std::size_t i = 0; i < m_packed.size(); ++i)
        m_places[m_packed[i]] = std::uint64_t{stream} << kPlaceBits | i;
    const std::string_view bytes = m_encoder.Deflate(m_packedList + m_packedValues);
    BeginStream(stream, "<</Type/ObjStm" + Key("/N", m_packed.size()) + Key("/First", m_packedList.size()) +
                            "/Filter/FlateDecode" + Key("/Length", bytes.size()) + ">>");
    WriteBytes(bytes);
    EndStream();
    m_packed.clear();
    m_packedList.clear();
    m_packedValues.clear();
}

// A row for each number; each byte is told by its difference from the one above it, which packs well.
std::string PdfMergeWriter::MakeRows() const {
    std::string rows;
    rows.reserve((kRowSize + 1) * m_places.size());
    unsigned char above[kRowSize] = {};
    for (const std::uint64_t place : m_places) {
        const bool standsAlone = (place & kStandsAlone) == kStandsAlone;
        unsigned char row[kRowSize] = {};
        row[0] = place == 0 ? 0 : standsAlone ? 1 : 2;
        for (std::size_t i = 1; i + 1 < kRowSize; ++i)
            row[i] = static_cast<unsigned char>(place >> (8 * (kRowSize - 1 - i)) & 0xFF);
        row[kRowSize - 1] = standsAlone ? 0 : static_cast<unsigned char>(place & 0xFF);
        rows += '\2';
        for (std::size_t i = 0; i < kRowSize; ++i) rows += static_cast<char>(row[i] - above[i]);
        std::copy(row, row + kRowSize, above);
    }
    return rows;
}

void PdfMergeWriter::Finish(std::uint32_t root) {
    FlushPacked();
    const std::uint32_t number = NewNumber();
    const std::uint64_t start = m_position;
    m_places[number] = start << kPlaceBits | kStandsAlone;
    const std::string_view rows = m_encoder.Deflate(MakeRows());
    BeginStream(number, "<</Type/XRef/W[1 6 1]" + Key("/Size", m_places.size()) + Key("/Root", root) +
                            " 0 R/Filter/FlateDecode/DecodeParms<</Predictor 12/Columns 8>>" +
                            Key("/Length", rows.size()) + ">>");
    WriteBytes(rows);
    EndStream();
    WriteBytes(Key("startxref\n", start) + "\n%%EOF\n");
    Flush();
}

}  // namespace quirepress
