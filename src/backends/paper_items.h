#pragma once

#include <optional>
#include <string_view>

#include "platform/job_ticket.h"

namespace quirepress {

// The command items that change how paper is printed on: a text in the item's name says what is to be set,
// the first run of digits in its file title how much.

// What such an item changes.
struct PaperState {
    JobTicket ticket;
    std::optional<JobTicket::Orientation> savedOrientation;  // by "save.paperorientation"
};

// Of one name, the first item of each group that it contains counts.
enum class PaperGroup { kOrientation, kPaper };

struct PaperItem {
    std::string_view text;
    PaperGroup group;
    bool (*apply)(PaperState& state,
                  std::string_view name);  // false: nothing to be set; `state` is untouched
    std::string_view doneStatus;
    std::string_view failedStatus;  // an unfit number, an unknown word, nothing saved
    std::string_view failedReason = "does not tell what to set";  // of a sentence that begins with the item
};

// Null when `name` contains none of the group's texts (exact).
const PaperItem* FindPaperItem(std::string_view name, PaperGroup group);

}  // namespace quirepress
