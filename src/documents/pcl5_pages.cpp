#include <algorithm>
#include <cstdint>

#include "documents/byte_reader.h"
#include "documents/pcl_languages.h"

namespace quirepress {
namespace {

constexpr int kFormFeed = '\f';

// The letters of a command that prints what is on the page before it changes the page:
// size, paper source, orientation, length, simplex or duplex.
constexpr std::string_view kPageSetUpLetters = "AHOPS";

bool IsBetween(int byte, int low, int high) {
    return byte >= low && byte <= high;
}

bool LeavesMark(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte > ' ' && byte != 0x7F;
}

// One command of an escape sequence, in its upper-case form: ESC * b 3 W has '*', 'b', 3 and 'W'.
struct PclCommand {
    char family = 0;
    char group = 0;  // 0 when it has none
    std::int64_t value = 0;
    char letter = 0;

    bool Is(char aFamily, char aGroup, char aLetter) const {
        return family == aFamily && group == aGroup && letter == aLetter;
    }
};

// Bytes of binary data behind the command.
std::int64_t DataLength(const PclCommand& command) {
    const bool textScale = command.Is('&', 'k', 'W');  // the one W whose number is a switch
    const bool carriesData = (command.letter == 'W' && command.group != 0 && !textScale) ||
                             command.Is('*', 'b', 'V') || command.Is('&', 'p', 'X');
    return carriesData ? std::max<std::int64_t>(command.value, 0) : 0;
}

class Pcl5Reader {
public:
    Pcl5Reader(ByteReader& reader, PageTally& tally) : m_reader(reader), m_tally(tally) {}

    void Read();

private:
    void TakeText();
    void TakeEscape();
    void TakeCommands();
    std::int64_t TakeNumber();
    bool Execute(const PclCommand& command);
    void Reset();

    ByteReader& m_reader;
    PageTally& m_tally;
    bool m_displayFunctions = false;  // control characters print as signs
};

void Pcl5Reader::Read() {
    for (;;) {
        TakeText();
        const std::string_view next = m_reader.Peek(kUniversalExit.size());
        if (next.empty() || next == kUniversalExit) break;
        if (m_reader.Take() == kFormFeed)
            m_tally.Eject();
        else
            TakeEscape();
    }
    Reset();
}

// Up to the next escape or form feed.
void Pcl5Reader::TakeText() {
    for (std::string_view rest = m_reader.Rest(); !rest.empty(); rest = m_reader.Rest()) {
        bool marked = false;
        std::size_t end = 0;
        for (; end < rest.size(); ++end) {
            if (rest[end] == kEscape || (rest[end] == kFormFeed && !m_displayFunctions)) break;
            marked = marked || LeavesMark(rest[end]);
        }
        if (marked) m_tally.Mark();
        m_reader.Skip(end);
        if (end < rest.size()) return;
    }
}

// What follows an escape; an escape that begins no sequence is passed over alone.
void Pcl5Reader::TakeEscape() {
    const std::string_view next = m_reader.Peek(1);
    if (next.empty()) return;
    const char first = next.front();
    if (IsBetween(first, '!', '/') && !m_displayFunctions) return TakeCommands();
    if (!IsBetween(first, '0', '~')) return;
    m_reader.Skip(1);
    if (first == 'Z') m_displayFunctions = false;
    if (m_displayFunctions) return m_tally.Mark();
    if (first == 'Y') m_displayFunctions = true;
    if (first == 'E') Reset();
}

// Commands of one family and group stand together in one sequence: ESC & l 1 o 2 X. A capital ends it, and
// so does binary data.
void Pcl5Reader::TakeCommands() {
    PclCommand command;
    command.family = static_cast<char>(m_reader.Take());
    if (const std::string_view next = m_reader.Peek(1); !next.empty() && IsBetween(next.front(), '`', '~'))
        command.group = static_cast<char>(m_reader.Take());
    for (;;) {
        command.value = TakeNumber();
        const std::string_view next = m_reader.Peek(1);
        if (next.empty() || !IsBetween(next.front(), '@', '~')) return;
        const bool last = next.front() < '`';
        command.letter = static_cast<char>(last ? next.front() : next.front() - ('a' - 'A'));
        m_reader.Skip(1);
        if (!Execute(command) || last) return;
    }
}

// A signed number whose fraction is left out; 0 when there is none. A number without an end saturates.
std::int64_t Pcl5Reader::TakeNumber() {
    constexpr std::int64_t kMost = std::int64_t{1} << 40;
    std::int64_t value = 0;
    bool negative = false;
    bool fraction = false;
    for (;;) {
        const std::string_view next = m_reader.Peek(1);
        const char c = next.empty() ? '\0' : next.front();
        if (IsBetween(c, '0', '9')) {
            if (!fraction) value = std::min(value * 10 + (c - '0'), kMost);
        } else if (c == '-') {
            negative = true;
        } else if (c == '.') {
            fraction = true;
        } else if (c != '+' && c != ' ') {
            return negative ? -value : value;
        }
        m_reader.Skip(1);
    }
}

// False when the sequence ends with this command whatever its letter.
bool Pcl5Reader::Execute(const PclCommand& command) {
    const bool raster = command.family == '*' && command.group == 'b';
    const std::int64_t data = DataLength(command);
    if (data > 0) {
        m_reader.Skip(static_cast<std::uint64_t>(data));
        if (raster || command.group == 'p') m_tally.Mark();
        return false;
    }
    if (command.Is('*', 'c', 'P')) m_tally.Mark();  // fills a rectangle
    const bool setsPageUp = command.family == '&' && command.group == 'l' &&
                            kPageSetUpLetters.find(command.letter) != std::string_view::npos;
    if (setsPageUp || command.Is('&', 'a', 'G')) m_tally.EjectWhenMarked();
    if (command.Is('&', 'f', 'X')) {  // macros: 0 begins to store one, 1 ends it, 2 and 3 print one
        if (command.value == 0 || command.value == 1) m_tally.SetStoring(command.value == 0);
        if (command.value == 2 || command.value == 3) m_tally.Mark();
    }
    if (command.Is('%', 0, 'B')) {
        ReadHpgl(m_reader, m_tally, command.value < 0);
        return false;
    }
    return true;
}

void Pcl5Reader::Reset() {
    m_tally.SetStoring(false);
    m_tally.EjectWhenMarked();
    m_displayFunctions = false;
}

}  // namespace

void PageTally::Eject() {
    if (m_storing) return;
    ++m_pages;
    m_marked = false;
}

void PageTally::EjectWhenMarked() {
    if (m_marked) Eject();
}

void ReadPcl5(ByteReader& reader, PageTally& tally) {
    Pcl5Reader(reader, tally).Read();
}

}  // namespace quirepress
