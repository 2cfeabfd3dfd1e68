#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quirepress {

// What a print set-up asks of a printer. A field with its first value leaves the matter to the printer.
struct JobTicket {
    enum class Orientation { kUnset, kPortrait, kLandscape } orientation = Orientation::kUnset;
    enum class Color { kUnset, kMono, kColor } color = Color::kUnset;
    enum class Duplex {
        kUnset,
        kSimplex,
        kVertical,
        kHorizontal
    } duplex = Duplex::kUnset;  // long, short edge
    enum class Quality { kUnset, kDraft, kNormal, kHigh } quality = Quality::kUnset;
    int scale = 0;         // percent, 1 to 1000
    int paperSize = 0;     // the systems' common code: 1 Letter, 8 A3, 9 A4...
    int copies = 0;        // 1 to 1,000,000
    int tray = 0;          // bin number (BinInfo)
    std::string trayName;  // the same bin's name

    bool operator==(const JobTicket&) const = default;
};

// The common code of a paper size by its name ("A4", in any capitals), or by the code itself; nothing for any
// other text.
std::optional<int> PaperSizeOf(std::string_view text);

// What is asked of the printer, for people: "media=A4 sides=two-sided-long-edge pages=1-3 tray=Upper". Empty
// when nothing is. The tray comes last, since its name may hold anything.
std::string OptionsText(const JobTicket& ticket, std::string_view pageRanges);

}  // namespace quirepress
