#pragma once

#include <string_view>

namespace quirepress {

class ByteReader;

// What a printer of the PCL family reads in one job: PCL 5, PCL XL and HP-GL/2, one after the other.

constexpr char kEscape = '\x1B';
constexpr std::string_view kUniversalExit = "\x1B%-12345X";

// The pages of a job so far, and whether something is drawn on the page at hand.
class PageTally {
public:
    void Mark() { m_marked = m_marked || !m_storing; }
    void Eject();
    void EjectWhenMarked();
    // While a macro is stored, nothing is printed.
    void SetStoring(bool storing) { m_storing = storing; }
    bool IsMarked() const { return m_marked; }
    long long Pages() const { return m_pages; }

private:
    long long m_pages = 0;
    bool m_marked = false;
    bool m_storing = false;
};

// Each reads its language up to the universal exit or to the end of the file, whichever comes first; the
// exit itself is left to the caller.
void ReadPcl5(ByteReader& reader, PageTally& tally);
void ReadPclXl(ByteReader& reader, PageTally& tally);

// HP-GL/2 ends at any command that leads back to PCL, too. A plotter of its own (`standalone`) has a
// command that ejects the page; within PCL it does nothing.
void ReadHpgl(ByteReader& reader, PageTally& tally, bool standalone);

}  // namespace quirepress
