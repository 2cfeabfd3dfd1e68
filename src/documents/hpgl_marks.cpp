#include <algorithm>
#include <array>
#include <string_view>

#include "documents/byte_reader.h"
#include "documents/pcl_languages.h"

namespace quirepress {
namespace {

constexpr char kEndOfText = '\x03';

// Instructions that leave something on the paper, sorted: arcs, circles, edges, fills, lines, labels.
constexpr std::array<std::string_view, 19> kDrawing = {"AA", "AR", "AT", "BR", "BZ", "CI", "EA",
                                                       "EP", "ER", "EW", "FP", "LB", "PB", "PD",
                                                       "PE", "RA", "RR", "RT", "WG"};

// The letter in upper case, 0 when it is none.
char ToLetter(int byte) {
    if (byte >= 'a' && byte <= 'z') return static_cast<char>(byte - ('a' - 'A'));
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte) : '\0';
}

class HpglReader {
public:
    HpglReader(ByteReader& reader, PageTally& tally, bool standalone)
        : m_reader(reader), m_tally(tally), m_standalone(standalone) {}

    void Read();

private:
    int TakeByte();
    void SkipTo(char end);
    void Execute(std::string_view mnemonic);

    ByteReader& m_reader;
    PageTally& m_tally;
    bool m_standalone;
    char m_labelEnd = kEndOfText;
};

// The next byte; the end also where a command leads back to PCL.
int HpglReader::TakeByte() {
    const std::string_view next = m_reader.Peek(2);
    if (next.size() == 2 && next[0] == kEscape && (next[1] == '%' || next[1] == 'E')) return ByteReader::kEnd;
    return m_reader.Take();
}

void HpglReader::SkipTo(char end) {
    for (int byte = TakeByte(); byte != ByteReader::kEnd; byte = TakeByte())
        if (byte == static_cast<unsigned char>(end)) return;
}

// Two letters in any case, then parameters, which hold no letters but in the instructions named here.
void HpglReader::Read() {
    char first = 0;
    for (int byte = TakeByte(); byte != ByteReader::kEnd; byte = TakeByte()) {
        const char letter = ToLetter(byte);
        if (first == 0 || letter == 0) {
            first = letter;
            continue;
        }
        const char mnemonic[] = {first, letter};
        first = 0;
        Execute(std::string_view(mnemonic, 2));
    }
}

void HpglReader::Execute(std::string_view mnemonic) {
    if (std::binary_search(kDrawing.begin(), kDrawing.end(), mnemonic)) m_tally.Mark();
    if (mnemonic == "PG" && m_standalone) m_tally.EjectWhenMarked();
    if (mnemonic == "LB" || mnemonic == "BL") SkipTo(m_labelEnd);
    if (mnemonic == "PE") SkipTo(';');
    if (mnemonic == "CO" && m_reader.Peek(1) == "\"") {
        m_reader.Skip(1);
        SkipTo('"');
    }
    if (mnemonic == "DT" || mnemonic == "SM") {  // each takes one character, whatever it is
        const int byte = TakeByte();
        const bool isDefault = byte == ';' || byte == ByteReader::kEnd;
        if (mnemonic == "DT") m_labelEnd = isDefault ? kEndOfText : static_cast<char>(byte);
    }
}

}  // namespace

void ReadHpgl(ByteReader& reader, PageTally& tally, bool standalone) {
    HpglReader(reader, tally, standalone).Read();
}

}  // namespace quirepress
