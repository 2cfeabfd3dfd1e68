#include "platform/cups/ipp_media.h"

#include <algorithm>
#include <array>

#include "base/numbers.h"
#include "base/text.h"

namespace quirepress {

namespace {

struct PaperRow {
    int code;
    std::string_view name;
};

constexpr std::array<PaperRow, 56> kPapers = {{
    {1, "na_letter_8.5x11in"},
    {2, "na_letter_8.5x11in"},
    {3, "na_ledger_11x17in"},
    {4, "na_ledger_11x17in"},
    {5, "na_legal_8.5x14in"},
    {6, "na_invoice_5.5x8.5in"},
    {7, "na_executive_7.25x10.5in"},
    {8, "iso_a3_297x420mm"},
    {9, "iso_a4_210x297mm"},
    {10, "iso_a4_210x297mm"},
    {11, "iso_a5_148x210mm"},
    {12, "jis_b4_257x364mm"},
    {13, "jis_b5_182x257mm"},
    {14, "na_foolscap_8.5x13in"},
    {15, "na_quarto_8.5x10.83in"},
    {16, "na_10x14_10x14in"},
    {17, "na_ledger_11x17in"},
    {18, "na_letter_8.5x11in"},
    {19, "na_number-9_3.875x8.875in"},
    {20, "na_number-10_4.125x9.5in"},
    {21, "na_number-11_4.5x10.375in"},
    {22, "na_number-12_4.75x11in"},
    {23, "na_number-14_5x11.5in"},
    {24, "na_c_17x22in"},
    {25, "na_d_22x34in"},
    {26, "na_e_34x44in"},
    {27, "iso_dl_110x220mm"},
    {28, "iso_c5_162x229mm"},
    {29, "iso_c3_324x458mm"},
    {30, "iso_c4_229x324mm"},
    {31, "iso_c6_114x162mm"},
    {32, "iso_c6c5_114x229mm"},
    {33, "iso_b4_250x353mm"},
    {34, "iso_b5_176x250mm"},
    {35, "iso_b6_125x176mm"},
    {36, "om_italian_110x230mm"},
    {37, "na_monarch_3.875x7.5in"},
    {38, "na_personal_3.625x6.5in"},
    {39, "na_fanfold-us_11x14.875in"},
    {40, "na_fanfold-eur_8.5x12in"},
    {41, "na_foolscap_8.5x13in"},
    {42, "iso_b4_250x353mm"},
    {43, "jpn_hagaki_100x148mm"},
    {44, "na_9x11_9x11in"},
    {45, "na_10x11_10x11in"},
    {46, "na_11x15_11x15in"},
    {47, "om_invite_220x220mm"},
    {53, "iso_a4-extra_235.5x322.3mm"},
    {58, "na_super-a_8.94x14in"},
    {59, "na_super-b_13x19in"},
    {61, "iso_a5_148x210mm"},
    {63, "iso_a3-extra_322x445mm"},
    {64, "iso_a5-extra_174x235mm"},
    {66, "iso_a2_420x594mm"},
    {70, "iso_a6_105x148mm"},
    {88, "jis_b6_128x182mm"},
}};

constexpr int kAutomatic = 7;
constexpr int kByForm = 15;  // by the paper, whatever tray has it
constexpr int kFirstTray = 256;
constexpr int kFirstOther = 1024;
constexpr int kHighestTray = 255;
constexpr std::size_t kLongestBinName = 24;

struct SourceRow {
    std::string_view source;
    int number;
};

constexpr std::array<SourceRow, 14> kSources = {{
    {"top", 1},
    {"bottom", 2},
    {"middle", 3},
    {"manual", 4},
    {"by-pass-tray", 4},
    {"envelope", 5},
    {"auto", kAutomatic},
    {"large-capacity", 11},
    {"main", 14},
    {"alternate", 512},
    {"photo", 513},
    {"disc", 514},
    {"main-roll", 515},
    {"alternate-roll", 516},
}};

// 0 when it has no number of its own.
int NumberOf(std::string_view source) {
    const auto found = std::find_if(kSources.begin(), kSources.end(),
                                    [&](const SourceRow& row) { return row.source == source; });
    if (found != kSources.end()) return found->number;
    constexpr std::string_view kTray = "tray-";
    if (!StartsWith(source, kTray)) return 0;
    const auto tray = ParseWholeNumber(source.substr(kTray.size()), 1, kHighestTray);
    return tray ? kFirstTray + static_cast<int>(*tray) : 0;
}

std::string BinName(std::string_view source) {
    return std::string(source.substr(0, kLongestBinName));
}

}  // namespace

std::string_view MediaName(int paperSize) {
    const auto found = std::find_if(kPapers.begin(), kPapers.end(),
                                    [&](const PaperRow& row) { return row.code == paperSize; });
    return found == kPapers.end() ? std::string_view() : found->name;
}

std::vector<BinInfo> BinsOf(const std::vector<std::string_view>& sources) {
    std::vector<BinInfo> bins;
    int other = kFirstOther;
    for (std::string_view source : sources) {
        const int number = NumberOf(source);
        bins.push_back({number != 0 ? number : other++, BinName(source)});
    }
    return bins;
}

bool ChooseSource(const JobTicket& ticket, const std::vector<std::string>& sources, std::string& source) {
    source.clear();
    const bool isLeftOpen = ticket.tray == 0 || ticket.tray == kAutomatic || ticket.tray == kByForm;
    if (ticket.trayName.empty() && isLeftOpen) return true;
    const std::vector<BinInfo> bins = BinsOf({sources.begin(), sources.end()});
    const auto found = std::find_if(bins.begin(), bins.end(), [&](const BinInfo& bin) {
        return ticket.trayName.empty() ? bin.number == ticket.tray
                                       : EqualIgnoringAsciiCase(bin.name, BinName(ticket.trayName));
    });
    if (found == bins.end()) return false;
    source = sources[static_cast<std::size_t>(found - bins.begin())];
    return true;
}

}  // namespace quirepress
