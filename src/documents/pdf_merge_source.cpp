#include "documents/pdf_merge_source.h"

#include <algorithm>

#include "base/text.h"

namespace quirepress {
namespace {

constexpr std::size_t kWholeFile = std::size_t{16} << 20;  // a file that is not longer is read at once
constexpr std::size_t kLongFileWindow = std::size_t{32} * 1024;
constexpr std::size_t kFirstLook = 512;
constexpr std::size_t kRoomBehindValue = 64;  // "endobj", or "stream" with its line end
constexpr std::size_t kBlockSize = std::size_t{256} * 1024;
constexpr long long kMostObjects = 8'388'608;  // as many as readers are asked to know
constexpr std::int64_t kFewBytes = 4096;

std::size_t WindowFor(InputFile& file) {
    const std::int64_t size = file.Size();
    return size <= static_cast<std::int64_t>(kWholeFile) ? kWholeFile : kLongFileWindow;
}

// "%PDF-1.7": 17; 0 when it is another.
int ReadVersion(std::string_view header) {
    const auto digit = [&](std::size_t at) {
        return header[at] >= '0' && header[at] <= '9' ? header[at] - '0' : -1;
    };
    if (header.size() < 8 || header[6] != '.' || digit(5) < 0 || digit(7) < 0) return 0;
    return 10 * digit(5) + digit(7);
}

}  // namespace

PdfMergeSource::PdfMergeSource(InputFile& file, PdfMergeScratch& scratch)
    : m_scratch(scratch),
      m_view(file, scratch.window, WindowFor(file)),
      // Once to look at the page tree, once to copy.
      m_budget(2 * m_view.Size() + kFewBytes) {
    scratch.places.clear();
}

bool PdfMergeSource::Open() {
    const std::int64_t origin = FindPdfHeader(m_view);
    if (origin < 0) return false;
    m_version = ReadVersion(m_view.At(origin, 16));
    return OpenFrom(0) || (origin > 0 && OpenFrom(origin));
}

bool PdfMergeSource::OpenFrom(std::int64_t origin) {
    m_origin = origin;
    m_scratch.places.clear();
    PdfCrossReferences crossReferences(m_view, m_scratch.decoder, m_scratch.unpacked, origin);
    // Every object needs some bytes, which object streams may make few.
    const long long limit = std::min<long long>(kMostObjects, 4 * m_view.Size() + kFewBytes);
    const std::int64_t start = FindCrossReferences(m_view);
    if (start <= 0 || !crossReferences.LoadNewest(start) || crossReferences.IsEncrypted() ||
        !crossReferences.FindAll(limit, m_scratch.places))
        return false;
    m_root = crossReferences.Root();
    return Has(m_root).value_or(false);
}

std::optional<bool> PdfMergeSource::Has(const PdfReference& reference) const {
    const std::vector<PdfPlace>& places = m_scratch.places;
    if (reference.number < 0 || reference.number >= static_cast<long long>(places.size())) return false;
    const PdfPlace& place = places[static_cast<std::size_t>(reference.number)];
    if (place.kind == PdfPlace::Kind::kAbsent || place.kind == PdfPlace::Kind::kFree) return false;
    const long long generation = place.kind == PdfPlace::Kind::kInFile ? place.detail : 0;
    return reference.generation == generation ? std::optional(true) : std::nullopt;
}

bool PdfMergeSource::Read(long long number, PdfSourceObject& object) {
    const PdfPlace place = m_scratch.places[static_cast<std::size_t>(number)];
    if (place.kind == PdfPlace::Kind::kInStream) return ReadFromStream(number, place, object);
    return ReadFromFile(number, place, object) && (!object.isStream || ReadStreamEnd(object, true)) &&
           Spend(static_cast<std::size_t>(object.length));
}

// The object without what its stream's length is.
bool PdfMergeSource::ReadFromFile(long long number, const PdfPlace& place, PdfSourceObject& object) {
    if (place.kind != PdfPlace::Kind::kInFile) return false;
    const std::int64_t offset = place.position + m_origin;
    object.isStream = false;
    object.length = 0;
    return ReadAsMuchAsNeeded(m_view, offset, kFirstLook, [&](std::string_view bytes) {
        PdfCursor cursor(bytes);
        PdfReference header;
        if (!TakeObjectHeader(cursor, header) || header.number != number || header.generation != place.detail)
            return PdfRead::kBad;
        const std::size_t begin = cursor.Position();
        const PdfRead read = m_scan.Read(bytes.substr(begin));
        if (read != PdfRead::kDone) return read;
        const std::size_t end = begin + m_scan.End();
        const bool isAll = offset + static_cast<std::int64_t>(bytes.size()) >= m_view.Size();
        if (!isAll && bytes.size() - end < kRoomBehindValue) return PdfRead::kNeedsMore;
        Keep(object);
        const std::size_t data = FindStreamData(bytes.substr(0, end + kRoomBehindValue), end);
        object.isStream = data != std::string_view::npos;
        object.data = offset + static_cast<std::int64_t>(data);
        PdfCursor behind(bytes.substr(end, kRoomBehindValue));
        const bool isEnded = object.isStream || behind.TakeText("endobj");
        return isEnded && Spend(end) ? PdfRead::kDone : PdfRead::kBad;
    });
}

void PdfMergeSource::Keep(PdfSourceObject& object) {
    object.value.assign(m_scan.Value());
    object.references.assign(m_scan.References().begin(), m_scan.References().end());
}

// The stream must really be as long as it says, whatever stands behind.
bool PdfMergeSource::ReadStreamEnd(PdfSourceObject& object, bool mayUnpack) {
    PdfCursor cursor(object.value);
    if (m_dictionary.Read(cursor) != PdfRead::kDone) return false;
    const std::string_view text = m_dictionary.Find("Length");
    long long length = 0;
    if (!ReadLength(text, mayUnpack, length) || length > m_view.Size() - object.data) return false;
    object.length = length;
    object.lengthAt = static_cast<std::size_t>(text.data() - object.value.data());
    PdfCursor behind(m_view.At(object.data + length, kRoomBehindValue).substr(0, kRoomBehindValue));
    return behind.TakeText("endstream");
}

// `mayUnpack`: not while an object stream is unpacked, which may be the one that holds its own length.
bool PdfMergeSource::ReadLength(std::string_view value, bool mayUnpack, long long& length) {
    if (ReadPdfNumber(value, length)) return true;
    PdfReference reference;
    if (!ReadPdfReference(value, reference) || !Has(reference).value_or(false)) return false;
    const PdfPlace& place = m_scratch.places[static_cast<std::size_t>(reference.number)];
    PdfSourceObject object;
    const bool isRead = place.kind == PdfPlace::Kind::kInFile
                            ? ReadFromFile(reference.number, place, object) && !object.isStream
                            : mayUnpack && ReadFromStream(reference.number, place, object);
    return isRead && ReadPdfNumber(object.value, length);
}

bool PdfMergeSource::ReadFromStream(long long number, const PdfPlace& place, PdfSourceObject& object) {
    const Unpacked* const stream = Unpack(place.position);
    if (stream == nullptr || place.detail >= stream->entries.size()) return false;
    const Entry& entry = stream->entries[place.detail];
    object.isStream = false;
    object.length = 0;
    if (entry.number != number ||
        m_scan.Read(std::string_view(stream->bytes).substr(entry.offset)) != PdfRead::kDone)
        return false;
    Keep(object);
    return Spend(m_scan.End());
}

const PdfMergeSource::Unpacked* PdfMergeSource::Unpack(long long stream) {
    const auto [found, isNew] = m_streams.try_emplace(stream);
    Unpacked& unpacked = found->second;
    if (!isNew) return &unpacked;
    PdfSourceObject object;
    PdfStreamCoding coding;
    if (stream >= static_cast<long long>(m_scratch.places.size()) ||
        !ReadFromFile(stream, m_scratch.places[static_cast<std::size_t>(stream)], object) ||
        !object.isStream || !ReadStreamEnd(object, false) || !ReadStreamCoding(m_dictionary, coding) ||
        object.length > static_cast<std::int64_t>(kMostObjectSize))
        return nullptr;
    const auto packed = static_cast<std::size_t>(object.length);
    const std::string_view bytes = m_view.At(object.data, packed).substr(0, packed);
    if (bytes.size() < packed) return nullptr;
    const auto content = m_scratch.decoder.Decode(coding, bytes, 5 * packed, kMostUnpacked - m_unpackedBytes,
                                                  m_scratch.unpacked);
    if (!content) return nullptr;
    m_unpackedBytes += content->size();
    m_budget += 2 * static_cast<std::int64_t>(content->size());
    unpacked.bytes.reserve(content->size() + 1);
    unpacked.bytes.assign(*content);
    unpacked.bytes += ' ';  // ends the last word
    return ReadEntries(m_dictionary, unpacked) ? &unpacked : nullptr;
}

bool PdfMergeSource::ReadEntries(const PdfDictionary& dictionary, Unpacked& unpacked) {
    PdfObjectStream stream;
    if (!stream.ReadKeys(dictionary)) return false;
    const char* const begin = unpacked.bytes.data();
    return stream.Visit(unpacked.bytes, [&](long long number, std::string_view text) {
        if (number >= kMostObjects || ++m_entryCount > kMostObjects) return false;
        unpacked.entries.push_back(
            {static_cast<std::uint32_t>(number), static_cast<std::uint32_t>(text.data() - begin)});
        return true;
    });
}

bool PdfMergeSource::Spend(std::size_t bytes) {
    m_budget -= static_cast<std::int64_t>(bytes);
    return m_budget >= 0;
}

bool PdfMergeSource::Resolve(std::string_view value, std::string& resolved) {
    PdfReference reference;
    if (!ReadPdfReference(value, reference)) {
        resolved.assign(value);
        return true;
    }
    PdfSourceObject object;
    if (!Has(reference).value_or(false) || !Read(reference.number, object)) return false;
    resolved = std::move(object.value);
    return true;
}

std::string_view PdfMergeSource::BytesAt(std::int64_t offset, std::int64_t size) {
    const auto wanted = static_cast<std::size_t>(std::min<std::int64_t>(size, kBlockSize));
    return m_view.At(offset, wanted).substr(0, static_cast<std::size_t>(size));
}

}  // namespace quirepress
