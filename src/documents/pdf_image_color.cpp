#include "documents/pdf_image_color.h"

#include <algorithm>
#include <qpdf/Pipeline.hh>
#include <stdexcept>
#include <string>
#include <vector>

#include "documents/qpdf_file.h"

namespace quirepress {
namespace {

using Handle = QPDFObjectHandle;
using Family = PdfColorSpace::Family;

constexpr long long kLargestSide = 100'000;
constexpr long long kMostPixels = 32'000'000;  // that are looked at one by one
constexpr std::size_t kJpegHeader = 1 << 20;
// What the noise of a JPEG can do to grey pixels, and how many of the others there must be to count.
constexpr double kNoise = 32.0 / 255;
constexpr long long kFewPixels = 1'000;  // one of so many

struct ImageFacts {
    long long width = 0;
    long long height = 0;
    int bits = 8;
    bool hasDecode = false;
    std::string filter;  // empty: none
};

long long IntegerAt(Handle dictionary, const char* key) {
    Handle value = dictionary.getKey(key);
    return value.isInteger() ? value.getIntValue() : 0;
}

ImageFacts ReadFacts(Handle dictionary) {
    ImageFacts facts;
    facts.width = IntegerAt(dictionary, "/Width");
    facts.height = IntegerAt(dictionary, "/Height");
    facts.bits = static_cast<int>(std::clamp<long long>(IntegerAt(dictionary, "/BitsPerComponent"), 0, 32));
    facts.hasDecode = !dictionary.getKey("/Decode").isNull();
    Handle filter = dictionary.getKey("/Filter");
    if (filter.isArray() && filter.getArrayNItems() == 1) filter = filter.getArrayItem(0);
    if (!filter.isNull()) facts.filter = filter.isName() ? filter.getName() : "several";
    return facts;
}

bool HasSoundSize(const ImageFacts& facts) {
    return facts.width > 0 && facts.height > 0 && facts.width <= kLargestSide &&
           facts.height <= kLargestSide && facts.width * facts.height <= kMostPixels;
}

// Looks at the pixels as they are decoded, row by row; breaks off once their colour is certain.
class PixelScan : public Pipeline {
public:
    // The pixels of a row follow each other by bits; a row begins with a byte. `certain` says what is more
    // than noise.
    PixelScan(const PdfColorSpace& space, const ImageFacts& facts, const GreyRule& rule,
              const GreyRule& certain)
        : Pipeline("pixels", nullptr),
          m_space(space),
          m_facts(facts),
          m_rule(rule),
          m_certain(certain),
          m_values(static_cast<std::size_t>(space.Components())),
          m_rowBytes(static_cast<std::size_t>((facts.width * space.Components() * facts.bits + 7) / 8)) {}

    void write(unsigned char const* data, size_t size) override {
        while (size > 0 && m_rows < m_facts.height) {
            const std::size_t taken = std::min(size, m_rowBytes - m_row.size());
            m_row.insert(m_row.end(), data, data + taken);
            data += taken;
            size -= taken;
            if (m_row.size() < m_rowBytes) return;
            JudgeRow();
            m_row.clear();
            ++m_rows;
        }
        if (HasManyCertain()) throw std::runtime_error("it has colours");
    }
    void finish() override {}

    // Once all that there is has been written.
    PageColor Verdict() const {
        if (HasManyCertain()) return PageColor::kColor;
        return m_rows < m_facts.height ? PageColor::kUndecided : m_color;
    }

private:
    bool HasManyCertain() const { return m_certainPixels * kFewPixels > m_facts.width * m_facts.height; }
    void JudgeRow() {
        std::size_t bit = 0;
        const double full = static_cast<double>((1U << m_facts.bits) - 1);
        const bool isIndexed = m_space.Kind() == Family::kIndexed;
        for (long long x = 0; x < m_facts.width; ++x) {
            for (double& value : m_values) {
                value = static_cast<double>(TakeBits(bit)) / (isIndexed ? 1 : full);
                bit += static_cast<std::size_t>(m_facts.bits);
            }
            const PageColor color = m_space.Judge(m_values, m_rule);
            if (color == PageColor::kMono) continue;
            m_color = PageColor::kUndecided;
            if (m_space.Judge(m_values, m_certain) == PageColor::kColor) ++m_certainPixels;
        }
    }
    unsigned TakeBits(std::size_t bit) const {
        if (m_facts.bits == 16) return (static_cast<unsigned>(m_row[bit / 8]) << 8U) | m_row[bit / 8 + 1];
        return (static_cast<unsigned>(m_row[bit / 8]) >>
                (8 - bit % 8 - static_cast<std::size_t>(m_facts.bits))) &
               ((1U << m_facts.bits) - 1);
    }

    const PdfColorSpace& m_space;
    ImageFacts m_facts;
    GreyRule m_rule;
    GreyRule m_certain;
    std::vector<double> m_values;
    std::size_t m_rowBytes;
    std::vector<unsigned char> m_row;
    long long m_rows = 0;
    long long m_certainPixels = 0;
    PageColor m_color = PageColor::kMono;
};

PageColor ScanPixels(Handle image, const PdfColorSpace& space, const ImageFacts& facts, const GreyRule& rule,
                     const GreyRule& certain, qpdf_stream_decode_level_e level) {
    PixelScan scan(space, facts, rule, certain);
    const bool isWhole = image.pipeStreamData(&scan, nullptr, 0, level, true);
    const PageColor color = scan.Verdict();
    return isWhole || color == PageColor::kColor ? color : PageColor::kUndecided;
}

// The components that a JPEG has by itself; 0 when it cannot be told.
int CountJpegComponents(const std::string& bytes, ImageFacts& facts) {
    const auto at = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    std::size_t position = 2;
    while (position + 10 <= bytes.size() && at(position) == 0xFF) {
        const unsigned marker = at(position + 1);
        const std::size_t length = at(position + 2) * 256U + at(position + 3);
        const bool isFrame =
            marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        if (isFrame) {
            facts.height = at(position + 5) * 256 + at(position + 6);
            facts.width = at(position + 7) * 256 + at(position + 8);
            return at(position + 9);
        }
        position += marker == 0xFF ? 1 : 2 + length;
    }
    return 0;
}

PageColor JudgeJpeg(Handle image, const PdfColorSpace& space, ImageFacts facts, const GreyRule& rule) {
    const int components = CountJpegComponents(ReadStreamStart(image, qpdf_dl_none, kJpegHeader), facts);
    if (components == 1) return space.JudgeAll();
    const bool isPlain = components == 3 && space.Kind() == Family::kRgb && !facts.hasDecode &&
                         image.getDict().getKey("/DecodeParms").isNull() && HasSoundSize(facts);
    if (!isPlain) return PageColor::kUndecided;
    facts.bits = 8;
    return ScanPixels(image, space, facts, rule, {kNoise}, qpdf_dl_all);
}

bool IsDecodable(const std::string& filter) {
    return filter.empty() || filter == "/FlateDecode" || filter == "/LZWDecode" ||
           filter == "/RunLengthDecode";
}

bool CanReadPixels(const PdfColorSpace& space, const ImageFacts& facts) {
    const int bits = facts.bits;
    const bool hasSoundBits = bits == 1 || bits == 2 || bits == 4 || bits == 8 || bits == 16;
    const bool isIndexed = space.Kind() == Family::kIndexed && bits <= 8;
    return (isIndexed || space.Kind() == Family::kRgb || space.Kind() == Family::kCmyk) && hasSoundBits &&
           !facts.hasDecode && IsDecodable(facts.filter) && HasSoundSize(facts);
}

}  // namespace

PageColor JudgeImage(Handle image, const PdfColorSpace& space, const GreyRule& rule) {
    const ImageFacts facts = ReadFacts(image.getDict());
    if (facts.filter == "/DCTDecode" || facts.filter == "/DCT") return JudgeJpeg(image, space, facts, rule);
    if (space.IsMono()) return PageColor::kMono;
    if (!CanReadPixels(space, facts)) return PageColor::kUndecided;
    return ScanPixels(image, space, facts, rule, rule, qpdf_dl_specialized);
}

}  // namespace quirepress
