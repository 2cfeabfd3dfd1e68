#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

struct libdeflate_compressor;
struct libdeflate_decompressor;

namespace quirepress {

class PdfDictionary;

// How the data of a stream is packed, as far as page counting meets it.
struct PdfStreamCoding {
    bool deflated = false;
    bool predicted = false;  // rows of PNG, one byte a sample
    std::size_t columns = 1;
};

// False when the stream is packed in another way, or its keys cannot be read.
bool ReadStreamCoding(const PdfDictionary& dictionary, PdfStreamCoding& coding);

// Behind a stream's dictionary: the position of its data; npos when no stream begins there.
std::size_t FindStreamData(std::string_view bytes, std::size_t position);

constexpr std::size_t kMostUnpacked = std::size_t{64} << 20;  // bytes of one stream

// Unpacks streams; one decompressor serves many.
class PdfStreamDecoder {
public:
    PdfStreamDecoder();
    ~PdfStreamDecoder();
    PdfStreamDecoder(const PdfStreamDecoder&) = delete;
    PdfStreamDecoder& operator=(const PdfStreamDecoder&) = delete;

    // The unpacked data, in `buffer` (which grows as needed and is never made smaller) or where it lies;
    // nothing when it is damaged or longer than `most`. `expected`: a guess of its size.
    std::optional<std::string_view> Decode(const PdfStreamCoding& coding, std::string_view data,
                                           std::size_t expected, std::size_t most, std::vector<char>& buffer);

private:
    libdeflate_decompressor* m_decompressor;
};

// Packs streams for speed; one compressor serves many.
class PdfStreamEncoder {
public:
    PdfStreamEncoder();
    ~PdfStreamEncoder();
    PdfStreamEncoder(const PdfStreamEncoder&) = delete;
    PdfStreamEncoder& operator=(const PdfStreamEncoder&) = delete;

    // For the filter FlateDecode; valid until the next call.
    std::string_view Deflate(std::string_view data);

private:
    libdeflate_compressor* m_compressor;
    std::vector<char> m_buffer;
};

}  // namespace quirepress
