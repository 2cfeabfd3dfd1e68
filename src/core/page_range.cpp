#include "core/page_range.h"

#include "base/format.h"
#include "base/numbers.h"

namespace quirepress {

namespace {

// The positive number behind the switch, -1 when the text has none.
int FindPageSwitch(std::string_view text, char letter) {
    while (!text.empty()) {
        const std::size_t end = text.find_first_of("| ");
        const std::string_view part = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        const bool isSwitch = part.size() > 2 && part[0] == '-' && part[1] == letter;
        const int page = isSwitch ? ParseLong(part.substr(2)) : 0;
        if (page > 0) return page;
    }
    return -1;
}

}  // namespace

std::string AddPageRange(std::string_view parameters, std::string_view options, int pages) {
    std::string result(parameters);
    const int start = FindPageSwitch(options, 's');
    const int end = FindPageSwitch(options, 'e');
    const bool isAsked = start > 0 || end > 0;
    const bool isThere = FindPageSwitch(parameters, 's') > 0 || FindPageSwitch(parameters, 'e') > 0;
    const int first = start > 0 ? start : 1;
    const int last = end > 0 ? end : pages;
    if (!isAsked || isThere || last < first) return result;
    if (!result.empty()) result += '|';
    return result + Format("-s%d|-e%d", first, last);
}

bool ReadPageRange(std::string_view parameters, int& first, int& last) {
    const int start = FindPageSwitch(parameters, 's');
    const int end = FindPageSwitch(parameters, 'e');
    if (start <= 0 || end < start) return false;
    first = start;
    last = end;
    return true;
}

}  // namespace quirepress
