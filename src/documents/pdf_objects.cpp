#include "documents/pdf_objects.h"

#include "documents/pdf_cross_references.h"
#include "documents/pdf_file_view.h"
#include "documents/pdf_streams.h"

namespace quirepress {
namespace {

constexpr std::size_t kFirstLook = 512;

}  // namespace

bool PdfObjectStream::ReadKeys(const PdfDictionary& dictionary) {
    return dictionary.Find("Type") == "/ObjStm" && ReadPdfNumber(dictionary.Find("First"), m_first) &&
           ReadPdfNumber(dictionary.Find("N"), m_count);
}

bool PdfObjectStream::Visit(std::string_view content,
                            const std::function<bool(long long number, std::string_view text)>& visit) const {
    const auto size = static_cast<long long>(content.size());
    if (m_first > size) return false;
    PdfCursor list(content.substr(0, static_cast<std::size_t>(m_first)));
    for (long long i = 0; i < m_count; ++i) {
        long long number = 0;
        long long offset = 0;
        if (!list.TakeNumber(number) || !list.TakeNumber(offset) || offset >= size - m_first) return false;
        if (!visit(number, content.substr(static_cast<std::size_t>(m_first + offset)))) return true;
    }
    return true;
}

bool PdfObjects::Read(const PdfReference& reference, const Reader& read) {
    const auto place = m_crossReferences.Find(reference.number);
    if (!place) return false;
    switch (place->kind) {
        case PdfPlace::Kind::kInFile:
            return ReadFromFile(reference, place->position, read);
        case PdfPlace::Kind::kInStream:
            return reference.generation == 0 && ReadFromStream(reference.number, place->position, read);
        default:
            return false;
    }
}

bool PdfObjects::ReadNumber(std::string_view value, long long& number) {
    if (ReadPdfNumber(value, number)) return true;
    PdfReference reference;
    return ReadPdfReference(value, reference) && Read(reference, [&](std::string_view text) {
               PdfCursor cursor(text);
               PdfReference another;
               const bool good = !cursor.TakeReference(another) && cursor.TakeNumber(number);
               return good ? PdfRead::kDone : PdfRead::kBad;
           });
}

bool PdfObjects::ReadFromFile(const PdfReference& reference, std::int64_t position, const Reader& read) {
    const std::int64_t offset = position + m_crossReferences.Origin();
    return ReadAsMuchAsNeeded(m_view, offset, kFirstLook, [&](std::string_view bytes) {
        PdfCursor cursor(bytes);
        PdfReference header;
        if (!TakeObjectHeader(cursor, header) || header.number != reference.number ||
            header.generation != reference.generation)
            return PdfRead::kBad;
        return read(bytes.substr(cursor.Position()));
    });
}

bool PdfObjects::ReadFromStream(long long number, long long stream, const Reader& read) {
    if (stream != m_loadedStream && !LoadStream(stream)) return false;
    bool done = false;
    const bool whole = m_stream.Visit(m_content, [&](long long candidate, std::string_view text) {
        if (candidate == number) done = read(text) == PdfRead::kDone;
        return candidate != number;
    });
    return whole && done;
}

bool PdfObjects::LoadStream(long long stream) {
    m_loadedStream = -1;
    if (m_crossReferences.IsEncrypted()) return false;
    const auto place = m_crossReferences.Find(stream);
    if (!place || place->kind != PdfPlace::Kind::kInFile) return false;

    PdfDictionary dictionary;
    PdfStreamCoding coding;
    long long length = 0;
    std::size_t data = 0;
    const auto read = [&](std::string_view bytes) {
        PdfCursor cursor(bytes);
        PdfReference header;
        if (!TakeObjectHeader(cursor, header) || header.number != stream) return PdfRead::kBad;
        const PdfRead outcome = dictionary.Read(cursor);
        if (outcome != PdfRead::kDone) return outcome;
        if (!m_stream.ReadKeys(dictionary) || !ReadStreamCoding(dictionary, coding) ||
            !ReadPdfNumber(dictionary.Find("Length"), length))
            return PdfRead::kBad;
        data = FindStreamData(bytes, cursor.Position());
        return data == std::string_view::npos ? PdfRead::kNeedsMore : PdfRead::kDone;
    };
    const std::int64_t offset = place->position + m_crossReferences.Origin();
    if (!ReadAsMuchAsNeeded(m_view, offset, kFirstLook, read)) return false;
    if (length > static_cast<long long>(kMostObjectSize)) return false;
    const auto packed = static_cast<std::size_t>(length);
    const std::string_view bytes = m_view.At(offset + static_cast<std::int64_t>(data), packed);
    if (bytes.size() < packed) return false;
    const auto content =
        m_decoder.Decode(coding, bytes.substr(0, packed), 5 * packed, kMostUnpacked, m_buffer);
    if (!content) return false;
    m_content = *content;
    if (!coding.deflated) {  // it lies where the next look into the file may write
        m_buffer.assign(content->begin(), content->end());
        m_content = std::string_view(m_buffer.data(), m_buffer.size());
    }
    m_loadedStream = stream;
    return true;
}

}  // namespace quirepress
