#include "platform/job_ticket.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "base/numbers.h"
#include "base/text.h"

namespace quirepress {

namespace {

constexpr std::array<std::pair<int, std::string_view>, 12> kPaperNames = {{{1, "Letter"},
                                                                           {3, "Tabloid"},
                                                                           {4, "Ledger"},
                                                                           {5, "Legal"},
                                                                           {6, "Statement"},
                                                                           {7, "Executive"},
                                                                           {8, "A3"},
                                                                           {9, "A4"},
                                                                           {11, "A5"},
                                                                           {12, "B4"},
                                                                           {13, "B5"},
                                                                           {70, "A6"}}};
constexpr std::int64_t kHighestPaperSize = 1000;

// The code itself for a paper that is not among the common ones.
std::string PaperName(int paperSize) {
    const auto* found = std::find_if(kPaperNames.begin(), kPaperNames.end(),
                                     [&](const auto& name) { return name.first == paperSize; });
    return found == kPaperNames.end() ? std::to_string(paperSize) : std::string(found->second);
}

void Append(std::string& text, std::string_view key, std::string_view value) {
    if (value.empty()) return;
    if (!text.empty()) text += ' ';
    text.append(key).append("=").append(value);
}

void AppendNumber(std::string& text, std::string_view key, int value) {
    if (value != 0) Append(text, key, std::to_string(value));
}

// The word for a value of one of the ticket's choices; words in the order of its values, the first one empty.
template <typename Choice, std::size_t kCount>
std::string_view Word(const std::array<std::string_view, kCount>& words, Choice choice) {
    return words.at(static_cast<std::size_t>(choice));
}

}  // namespace

std::optional<int> PaperSizeOf(std::string_view text) {
    const auto* found = std::find_if(kPaperNames.begin(), kPaperNames.end(), [&](const auto& name) {
        return EqualIgnoringAsciiCase(name.second, text);
    });
    if (found != kPaperNames.end()) return found->first;
    const std::optional<std::int64_t> code = ParseWholeNumber(text, 1, kHighestPaperSize);
    if (!code) return std::nullopt;
    return static_cast<int>(*code);
}

std::string OptionsText(const JobTicket& ticket, std::string_view pageRanges) {
    constexpr std::array<std::string_view, 4> kSides = {"", "one-sided", "two-sided-long-edge",
                                                        "two-sided-short-edge"};
    constexpr std::array<std::string_view, 3> kColors = {"", "monochrome", "color"};
    constexpr std::array<std::string_view, 3> kOrientations = {"", "portrait", "landscape"};
    constexpr std::array<std::string_view, 4> kQualities = {"", "draft", "normal", "high"};
    std::string text;
    if (ticket.paperSize != 0) Append(text, "media", PaperName(ticket.paperSize));
    Append(text, "sides", Word(kSides, ticket.duplex));
    Append(text, "color", Word(kColors, ticket.color));
    Append(text, "orientation", Word(kOrientations, ticket.orientation));
    Append(text, "quality", Word(kQualities, ticket.quality));
    AppendNumber(text, "scale", ticket.scale);
    AppendNumber(text, "copies", ticket.copies);
    Append(text, "pages", pageRanges);
    if (ticket.trayName.empty()) AppendNumber(text, "tray", ticket.tray);
    Append(text, "tray", ticket.trayName);
    return text;
}

}  // namespace quirepress
