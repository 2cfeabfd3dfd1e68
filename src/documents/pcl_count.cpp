#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "base/numbers.h"
#include "base/text.h"
#include "documents/byte_reader.h"
#include "documents/page_counts.h"
#include "documents/pcl_languages.h"

namespace quirepress {
namespace {

constexpr std::string_view kJobCommand = "@PJL";
constexpr std::string_view kLittleEndianXl = ") HP-PCL XL;";
constexpr std::string_view kBigEndianXl = "( HP-PCL XL;";
constexpr std::string_view kPdf = "%PDF-";
constexpr std::size_t kMostLine = 1024;  // of a job command, what is looked at

enum class Language { kPcl5, kPclXl, kHpgl, kForeign };

bool BeginsPclXl(std::string_view bytes) {
    return StartsWith(bytes, kLittleEndianXl) || StartsWith(bytes, kBigEndianXl);
}

// Whether a file that begins with `bytes` is one for such a printer: a first command, or nothing but text.
bool CanBePcl(std::string_view bytes) {
    bytes.remove_prefix(std::min(bytes.find_first_not_of('\0'), bytes.size()));
    if (bytes.empty()) return false;
    if (BeginsPclXl(bytes)) return true;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char c = bytes[i];
        if (c == kEscape) return i + 1 < bytes.size() && bytes[i + 1] > ' ' && bytes[i + 1] < '\x7F';
        const bool control = static_cast<unsigned char>(c) < ' ';
        const bool ofText = (c >= '\a' && c <= '\x0F') || c == '\x1A';
        if (control && !ofText) return false;
    }
    return true;
}

// Up to the line's end, or to what ends the job commands without one.
std::string TakeLine(ByteReader& reader) {
    std::string line;
    while (reader.Peek(kUniversalExit.size()) != kUniversalExit) {
        const int byte = reader.Take();
        if (byte == ByteReader::kEnd || byte == '\n') break;
        if (line.size() < kMostLine) line += static_cast<char>(byte);
    }
    return line;
}

// What stands behind "NAME =", up to the next blank; empty when there is none. `line` is in upper case.
std::string_view FindValue(std::string_view line, std::string_view name) {
    std::size_t begin = line.find(name);
    if (begin == std::string_view::npos) return {};
    begin = line.find_first_not_of(" \t", begin + name.size());
    if (begin == std::string_view::npos || line[begin] != '=') return {};
    begin = std::min(line.find_first_not_of(" \t", begin + 1), line.size());
    return line.substr(begin, line.find_first_of(" \t\r", begin) - begin);
}

std::string ToUpperAscii(std::string text) {
    for (char& c : text)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - ('a' - 'A'));
    return text;
}

Language GuessLanguage(ByteReader& reader) {
    const std::string_view next = reader.Peek(kLittleEndianXl.size());
    if (BeginsPclXl(next)) return Language::kPclXl;
    return StartsWith(next, "%!") || StartsWith(next, kPdf) ? Language::kForeign : Language::kPcl5;
}

void SkipBlanks(ByteReader& reader) {
    constexpr std::string_view kBlanks(" \t\r\n\0", 5);
    for (std::string_view next = reader.Peek(1);
         !next.empty() && kBlanks.find(next.front()) != std::string_view::npos; next = reader.Peek(1))
        reader.Skip(1);
}

// Goes past the job commands and answers the language that they, or else the first bytes, tell.
Language EnterLanguage(ByteReader& reader) {
    SkipBlanks(reader);
    while (reader.Peek(kJobCommand.size()) == kJobCommand) {
        const std::string line = ToUpperAscii(TakeLine(reader));
        if (Contains(line, "FSDOWNLOAD") || Contains(line, "FSAPPEND")) {
            const auto size = ParseWholeNumber(FindValue(line, "SIZE"), 0, std::int64_t{1} << 40);
            reader.Skip(static_cast<std::uint64_t>(size.value_or(0)));
        }
        if (Contains(line, " ENTER ")) {
            const std::string_view language = FindValue(line, "LANGUAGE");
            if (language == "HPGL2" || language == "HPGL") return Language::kHpgl;
            if (StartsWith(language, "PCL") || language == "AUTO") return GuessLanguage(reader);
            return Language::kForeign;
        }
        SkipBlanks(reader);
    }
    return GuessLanguage(reader);
}

void ReadLanguage(ByteReader& reader, Language language, PageTally& tally) {
    switch (language) {
        case Language::kHpgl:
            ReadHpgl(reader, tally, true);
            return ReadPcl5(reader, tally);
        case Language::kPcl5:
            return ReadPcl5(reader, tally);
        case Language::kPclXl:
            return ReadPclXl(reader, tally);
        case Language::kForeign:
            reader.SkipTo(kUniversalExit);
    }
}

}  // namespace

int CountPclPages(InputFile& file) {
    ByteReader reader(file);
    const bool isPcl = CanBePcl(reader.Peek(ByteReader::kMostPeeked));
    PageTally tally;
    while (isPcl && !reader.Rest().empty()) {
        if (reader.Peek(kUniversalExit.size()) == kUniversalExit) reader.Skip(kUniversalExit.size());
        ReadLanguage(reader, EnterLanguage(reader), tally);
    }
    if (reader.Failed()) return -1;
    return static_cast<int>(std::min<long long>(tally.Pages(), std::numeric_limits<int>::max()));
}

}  // namespace quirepress
