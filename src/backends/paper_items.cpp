#include "backends/paper_items.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "base/numbers.h"
#include "base/path.h"
#include "base/text.h"

namespace quirepress {

namespace {

constexpr std::int64_t kHighestScale = 1000;
constexpr std::int64_t kHighestSize = 1000;
constexpr std::int64_t kMostCopies = 1'000'000;
constexpr int kFullScale = 100;

// The first run of digits in the file title; nothing when there is none, or it is not in [1, highest].
std::optional<int> NumberIn(std::string_view name, std::int64_t highest) {
    constexpr std::string_view kDigits = "0123456789";
    std::string_view title = FileTitle(name);
    title.remove_prefix(std::min(title.find_first_of(kDigits), title.size()));
    title = title.substr(0, title.find_first_not_of(kDigits));
    const std::optional<std::int64_t> number = ParseWholeNumber(title, 1, highest);
    if (!number) return std::nullopt;
    return static_cast<int>(*number);
}

template <auto Member, auto Value>
bool Set(PaperState& state, std::string_view /*name*/) {
    state.ticket.*Member = Value;
    return true;
}

template <auto Member, std::int64_t Highest>
bool SetNumber(PaperState& state, std::string_view name) {
    const std::optional<int> number = NumberIn(name, Highest);
    if (number) state.ticket.*Member = *number;
    return number.has_value();
}

bool SetScale(PaperState& state, std::string_view name) {
    state.ticket.scale = NumberIn(name, kHighestScale).value_or(kFullScale);
    return true;
}

bool SaveOrientation(PaperState& state, std::string_view /*name*/) {
    state.savedOrientation = state.ticket.orientation;
    return true;
}

bool RestoreOrientation(PaperState& state, std::string_view /*name*/) {
    if (state.savedOrientation) state.ticket.orientation = *state.savedOrientation;
    return state.savedOrientation.has_value();
}

bool SetNothing(PaperState& /*state*/, std::string_view /*name*/) {
    return false;
}

using Ticket = JobTicket;

constexpr std::string_view kOrientationSet = "Set Orientation";
constexpr std::string_view kOrientationNotSet = "Error Orientation Not Set";
constexpr std::string_view kColorSet = "Set Color";
constexpr std::string_view kColorNotSet = "Error Color Not Set";
constexpr std::string_view kDuplexSet = "Set Duplex";
constexpr std::string_view kDuplexNotSet = "Error Duplex Not Set";

// In the order in which they are looked for; behind the known words, the kinds whose word is not known.
constexpr std::array<PaperItem, 15> kItems = {{
    {"portrait.paperorientation", PaperGroup::kOrientation,
     Set<&Ticket::orientation, Ticket::Orientation::kPortrait>, kOrientationSet, kOrientationNotSet},
    {"landscape.paperorientation", PaperGroup::kOrientation,
     Set<&Ticket::orientation, Ticket::Orientation::kLandscape>, kOrientationSet, kOrientationNotSet},
    {"save.paperorientation", PaperGroup::kOrientation, SaveOrientation, kOrientationSet, kOrientationNotSet},
    {"restore.paperorientation", PaperGroup::kOrientation, RestoreOrientation, kOrientationSet,
     kOrientationNotSet, "finds nothing to restore: no \"save.paperorientation\" stands above it"},
    {".paperorientation", PaperGroup::kOrientation, SetNothing, kOrientationSet, kOrientationNotSet},
    {"bw.papercolor", PaperGroup::kPaper, Set<&Ticket::color, Ticket::Color::kMono>, kColorSet, kColorNotSet},
    {"color.papercolor", PaperGroup::kPaper, Set<&Ticket::color, Ticket::Color::kColor>, kColorSet,
     kColorNotSet},
    {".paperscale", PaperGroup::kPaper, SetScale, "Set Scale", "Error Scale Not Set"},
    {".papersize", PaperGroup::kPaper, SetNumber<&Ticket::paperSize, kHighestSize>, "Set Size",
     "Error Size Not Set"},
    {".papercopies", PaperGroup::kPaper, SetNumber<&Ticket::copies, kMostCopies>, "Set Copies",
     "Error Copies Not Set"},
    {"simplex.paperduplex", PaperGroup::kPaper, Set<&Ticket::duplex, Ticket::Duplex::kSimplex>, kDuplexSet,
     kDuplexNotSet},
    {"horizontal.paperduplex", PaperGroup::kPaper, Set<&Ticket::duplex, Ticket::Duplex::kHorizontal>,
     kDuplexSet, kDuplexNotSet},
    {"vertical.paperduplex", PaperGroup::kPaper, Set<&Ticket::duplex, Ticket::Duplex::kVertical>, kDuplexSet,
     kDuplexNotSet},
    {".papercolor", PaperGroup::kPaper, SetNothing, kColorSet, kColorNotSet},
    {".paperduplex", PaperGroup::kPaper, SetNothing, kDuplexSet, kDuplexNotSet},
}};

}  // namespace

const PaperItem* FindPaperItem(std::string_view name, PaperGroup group) {
    const auto* found = std::find_if(kItems.begin(), kItems.end(), [&](const PaperItem& item) {
        return item.group == group && Contains(name, item.text);
    });
    return found == kItems.end() ? nullptr : found;
}

}  // namespace quirepress
