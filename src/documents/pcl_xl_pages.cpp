#include <array>
#include <cstdint>

#include "documents/byte_reader.h"
#include "documents/pcl_languages.h"

namespace quirepress {
namespace {

constexpr int kEndPage = 0x44;

// What stands behind a tag of the binary stream.
enum class TagForm : std::uint8_t { kNone, kFixed, kArray, kShortData, kLongData, kUnknown };

struct Tag {
    TagForm form = TagForm::kUnknown;
    std::uint8_t size = 0;  // kFixed: bytes behind the tag; kArray: of one element
};

constexpr std::array<Tag, 256> MakeTags() {
    std::array<Tag, 256> tags{};
    for (const int blank : {0x00, 0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x20}) tags[blank] = {TagForm::kNone, 0};
    for (int operation = 0x41; operation <= 0xBF; ++operation) tags[operation] = {TagForm::kNone, 0};
    constexpr std::uint8_t kElementSizes[] = {1, 2, 4, 2, 4, 4};  // byte, 16 and 32 bits, signed, real
    for (int type = 0; type < 6; ++type) {
        const std::uint8_t size = kElementSizes[type];
        tags[0xC0 + type] = {TagForm::kFixed, size};
        tags[0xC8 + type] = {TagForm::kArray, size};
        tags[0xD0 + type] = {TagForm::kFixed, static_cast<std::uint8_t>(2 * size)};  // a point
        tags[0xE0 + type] = {TagForm::kFixed, static_cast<std::uint8_t>(4 * size)};  // a box
    }
    tags[0xF8] = {TagForm::kFixed, 1};  // an attribute's number
    tags[0xF9] = {TagForm::kFixed, 2};
    tags[0xFA] = {TagForm::kLongData, 0};
    tags[0xFB] = {TagForm::kShortData, 0};
    return tags;
}

constexpr std::array<Tag, 256> kTags = MakeTags();

class PclXlReader {
public:
    PclXlReader(ByteReader& reader, bool bigEndian) : m_reader(reader), m_bigEndian(bigEndian) {}

    // False at the universal exit, at the end, and at what is no PCL XL.
    bool TakeTag(bool& endsPage);

private:
    bool TakeNumber(int bytes, std::uint64_t& number);
    bool SkipArray(std::uint64_t elementSize);

    ByteReader& m_reader;
    bool m_bigEndian;
};

bool PclXlReader::TakeTag(bool& endsPage) {
    const std::string_view next = m_reader.Peek(1);
    if (next.empty()) return false;
    const auto byte = static_cast<unsigned char>(next.front());
    const Tag tag = kTags[byte];
    if (tag.form == TagForm::kUnknown) return false;
    m_reader.Skip(1);
    endsPage = byte == kEndPage;
    std::uint64_t length = tag.size;
    switch (tag.form) {
        case TagForm::kArray:
            return SkipArray(tag.size);
        case TagForm::kShortData:
            if (!TakeNumber(1, length)) return false;
            break;
        case TagForm::kLongData:
            if (!TakeNumber(4, length)) return false;
            break;
        default:
            break;
    }
    m_reader.Skip(length);
    return true;
}

// The number of elements is itself a tagged number without a sign.
bool PclXlReader::SkipArray(std::uint64_t elementSize) {
    const int tag = m_reader.Take();
    std::uint64_t count = 0;
    if (tag < 0xC0 || tag > 0xC2 || !TakeNumber(kTags[tag].size, count)) return false;
    m_reader.Skip(count * elementSize);
    return true;
}

bool PclXlReader::TakeNumber(int bytes, std::uint64_t& number) {
    number = 0;
    for (int i = 0; i < bytes; ++i) {
        const int byte = m_reader.Take();
        if (byte == ByteReader::kEnd) return false;
        const int shift = 8 * (m_bigEndian ? bytes - 1 - i : i);
        number |= static_cast<std::uint64_t>(byte) << shift;
    }
    return true;
}

}  // namespace

void ReadPclXl(ByteReader& reader, PageTally& tally) {
    const std::string_view binding = reader.Peek(1);
    const bool binary = binding == ")" || binding == "(";
    PclXlReader stream(reader, binding == "(");
    if (binary && reader.SkipTo("\n")) {  // the stream's header is one line; its end is a blank
        bool endsPage = false;
        while (stream.TakeTag(endsPage))
            if (endsPage) tally.Eject();
    }
    reader.SkipTo(kUniversalExit);
}

}  // namespace quirepress
