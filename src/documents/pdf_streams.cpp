#include "documents/pdf_streams.h"

#include <libdeflate.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "base/text.h"
#include "documents/pdf_tokens.h"

namespace quirepress {
namespace {

constexpr long long kMostColumns = 64;  // of a cross-reference stream: three numbers of 8 bytes at most

// The only element of an array, blanks around it left out; else the value as it is.
std::string_view TakeOnlyElement(std::string_view value) {
    if (!StartsWith(value, "[")) return value;
    PdfCursor cursor(value.substr(1));
    std::string_view element;
    return cursor.TakeValue(element) == PdfRead::kDone && cursor.TakeText("]") ? element : value;
}

bool ReadParameters(std::string_view value, PdfStreamCoding& coding) {
    const std::string_view parameters = TakeOnlyElement(value);
    if (parameters.empty() || parameters == "null") return true;
    PdfCursor cursor(parameters);
    PdfDictionary dictionary;
    if (dictionary.Read(cursor) != PdfRead::kDone) return false;
    const auto number = [&](std::string_view key, long long& result) {
        const std::string_view text = dictionary.Find(key);
        return text.empty() || ReadPdfNumber(text, result);
    };
    long long predictor = 1;
    long long columns = 1;
    long long colors = 1;
    long long bits = 8;
    if (!number("Predictor", predictor) || !number("Columns", columns) || !number("Colors", colors) ||
        !number("BitsPerComponent", bits))
        return false;
    coding.predicted = predictor >= 10;
    coding.columns = static_cast<std::size_t>(std::clamp<long long>(columns, 1, kMostColumns));
    if (!coding.predicted) return predictor == 1;
    return columns >= 1 && columns <= kMostColumns && colors == 1 && bits == 8;
}

int PredictByPaeth(int left, int up, int upLeft) {
    const int guess = left + up - upLeft;
    const int toLeft = std::abs(guess - left);
    const int toUp = std::abs(guess - up);
    const int toUpLeft = std::abs(guess - upLeft);
    if (toLeft <= toUp && toLeft <= toUpLeft) return left;
    return toUp <= toUpLeft ? up : upLeft;
}

// Undoes the prediction of one row in place. `above` is the row before, undone.
bool UndoRow(int filter, unsigned char* row, const unsigned char* above, std::size_t columns) {
    int left = 0;
    int upLeft = 0;
    for (std::size_t i = 0; i < columns; ++i) {
        const int up = above[i];
        int predicted = 0;
        if (filter == 1) predicted = left;
        if (filter == 2) predicted = up;
        if (filter == 3) predicted = (left + up) / 2;
        if (filter == 4) predicted = PredictByPaeth(left, up, upLeft);
        row[i] = static_cast<unsigned char>(row[i] + predicted);
        left = row[i];
        upLeft = up;
    }
    return filter <= 4;
}

// Each row is preceded by its filter; the rows close up in place. A last row that is not whole is left out.
std::optional<std::size_t> UndoPrediction(unsigned char* bytes, std::size_t size, std::size_t columns) {
    const std::vector<unsigned char> nothing(columns);
    const unsigned char* above = nothing.data();
    unsigned char* target = bytes;
    for (std::size_t begin = 0; begin + columns + 1 <= size; begin += columns + 1) {
        const int filter = bytes[begin];
        std::copy_n(bytes + begin + 1, columns, target);
        if (!UndoRow(filter, target, above, columns)) return std::nullopt;
        above = target;
        target += columns;
    }
    return static_cast<std::size_t>(target - bytes);
}

}  // namespace

bool ReadStreamCoding(const PdfDictionary& dictionary, PdfStreamCoding& coding) {
    coding = {};
    const std::string_view filter = TakeOnlyElement(dictionary.Find("Filter"));
    if (filter.empty()) return true;
    coding.deflated = filter == "/FlateDecode" || filter == "/Fl";
    return coding.deflated && ReadParameters(dictionary.Find("DecodeParms"), coding);
}

std::size_t FindStreamData(std::string_view bytes, std::size_t position) {
    while (position < bytes.size() && IsPdfBlank(bytes[position])) ++position;
    constexpr std::string_view kStream = "stream";
    if (!StartsWith(bytes.substr(position), kStream)) return std::string_view::npos;
    position += kStream.size();
    if (position < bytes.size() && bytes[position] == '\r') ++position;
    if (position < bytes.size() && bytes[position] == '\n') return position + 1;
    return std::string_view::npos;
}

PdfStreamDecoder::PdfStreamDecoder() : m_decompressor(libdeflate_alloc_decompressor()) {}

PdfStreamDecoder::~PdfStreamDecoder() {
    libdeflate_free_decompressor(m_decompressor);
}

PdfStreamEncoder::PdfStreamEncoder() : m_compressor(libdeflate_alloc_compressor(1)) {
    if (m_compressor == nullptr) throw std::bad_alloc();
}

PdfStreamEncoder::~PdfStreamEncoder() {
    libdeflate_free_compressor(m_compressor);
}

std::string_view PdfStreamEncoder::Deflate(std::string_view data) {
    const std::size_t room = libdeflate_zlib_compress_bound(m_compressor, data.size());
    if (m_buffer.size() < room) m_buffer.resize(room);
    const std::size_t size =
        libdeflate_zlib_compress(m_compressor, data.data(), data.size(), m_buffer.data(), m_buffer.size());
    return std::string_view(m_buffer.data(), size);
}

std::optional<std::string_view> PdfStreamDecoder::Decode(const PdfStreamCoding& coding, std::string_view data,
                                                         std::size_t expected, std::size_t most,
                                                         std::vector<char>& buffer) {
    if (!coding.deflated) return data.size() <= most ? std::optional(data) : std::nullopt;
    if (!m_decompressor) return std::nullopt;
    std::size_t size = 0;
    for (std::size_t room = std::clamp<std::size_t>(expected, std::min<std::size_t>(4096, most), most);;
         room = std::min(room * 4, most)) {
        if (buffer.size() < room) buffer.resize(room);
        const libdeflate_result result =
            libdeflate_zlib_decompress(m_decompressor, data.data(), data.size(), buffer.data(), room, &size);
        if (result == LIBDEFLATE_SUCCESS) break;
        if (result != LIBDEFLATE_INSUFFICIENT_SPACE || room >= most) return std::nullopt;
    }
    if (coding.predicted) {
        const auto whole =
            UndoPrediction(reinterpret_cast<unsigned char*>(buffer.data()), size, coding.columns);
        if (!whole) return std::nullopt;
        size = *whole;
    }
    return std::string_view(buffer.data(), size);
}

}  // namespace quirepress
