#include "core/page_range.h"

#include <limits>
#include <optional>

#include "base/format.h"
#include "base/numbers.h"

namespace quirepress {

namespace {

// What stands behind the switch; a word that goes on with a letter is another one.
std::optional<std::string_view> FindPageSwitch(std::string_view text, char letter) {
    while (!text.empty()) {
        const std::size_t end = text.find_first_of("| ");
        const std::string_view part = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        const bool isSwitch = part.size() > 2 && part[0] == '-' && part[1] == letter;
        if (isSwitch && std::string_view("0123456789+-").find(part[2]) != std::string_view::npos)
            return part.substr(2);
    }
    return std::nullopt;
}

// Puts the number into `page`, where there is a switch. False when no page has it.
bool ReadPage(const std::optional<std::string_view>& number, int lowest, int& page) {
    if (!number) return true;
    const auto value = ParseWholeNumber(*number, lowest, std::numeric_limits<int>::max());
    if (value && *value > 0) page = static_cast<int>(*value);
    return value.has_value();
}

}  // namespace

PageRange ReadPageRange(std::string_view options) {
    const bool isFullString = FindPageSwitch(options, 'S') && FindPageSwitch(options, 'E');
    const auto start = FindPageSwitch(options, isFullString ? 'S' : 's');
    const auto end = FindPageSwitch(options, isFullString ? 'E' : 'e');
    PageRange range;
    if (!start && !end) return range;
    if (start) range.text = Format("-s%s", *start);
    if (end) range.text += Format(start ? "|-e%s" : "-e%s", *end);
    const int lowest = isFullString ? 0 : 1;
    PdfPageRange& pages = range.pages;
    const bool isRead = ReadPage(start, lowest, pages.first) && ReadPage(end, lowest, pages.last);
    if (!isRead || (pages.last != kAllPdfPages.last && pages.last < pages.first))
        range.kind = PageRange::Kind::kImpossible;
    else if (pages.first != kAllPdfPages.first || pages.last != kAllPdfPages.last || !isFullString)
        range.kind = PageRange::Kind::kSome;
    return range;
}

PageRange FindPageRange(std::string_view processingParameters, std::string_view extraOptions) {
    PageRange range = ReadPageRange(processingParameters);
    return range.kind == PageRange::Kind::kNone ? ReadPageRange(extraOptions) : range;
}

int CountPagesIn(const PageRange& range, int pages) {
    if (range.kind == PageRange::Kind::kNone) return pages > 0 ? pages : 0;
    const int last = range.pages.last != kAllPdfPages.last ? range.pages.last : pages;
    return range.kind == PageRange::Kind::kSome && last >= range.pages.first ? last - range.pages.first + 1
                                                                             : 0;
}

std::string AddPageRange(std::string_view parameters, std::string_view options, int pages) {
    using Kind = PageRange::Kind;
    std::string result(parameters);
    const PageRange range = ReadPageRange(options);
    const int last = range.pages.last != kAllPdfPages.last ? range.pages.last : pages;
    if (range.kind != Kind::kSome || ReadPageRange(parameters).kind != Kind::kNone ||
        last < range.pages.first)
        return result;
    if (!result.empty()) result += '|';
    return result + Format("-s%d|-e%d", range.pages.first, last);
}

}  // namespace quirepress
