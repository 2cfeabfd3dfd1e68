#include "core/page_range.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "base/format.h"
#include "base/numbers.h"
#include "base/text.h"

namespace quirepress {

namespace {

constexpr std::string_view kDigits = "0123456789";

bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool BeginsWithDigit(std::string_view text) {
    return !text.empty() && kDigits.find(text.front()) != std::string_view::npos;
}

bool IsSwitch(std::string_view word) {
    return word.size() > 1 && word[0] == '-' && IsLetter(word[1]);
}

// One that goes on with letters only is another one.
bool IsPageSwitch(std::string_view word) {
    if (!IsSwitch(word) || std::string_view("sSeE").find(word[1]) == std::string_view::npos) return false;
    const std::string_view rest = word.substr(2);
    return rest.size() < 2 || !std::all_of(rest.begin(), rest.end(), IsLetter);
}

// "2-5", "s2", and switches with something else before them than "-".
bool IsLikePages(std::string_view word) {
    const auto isPart = [](char c) { return IsLetter(c) || kDigits.find(c) != std::string_view::npos; };
    word.remove_prefix(
        static_cast<std::size_t>(std::find_if(word.begin(), word.end(), isPart) - word.begin()));
    if (!word.empty() && std::string_view("sSeE").find(word[0]) != std::string_view::npos)
        word.remove_prefix(1);
    return BeginsWithDigit(word);
}

// A switch of another kind whose value, if it has one, is the next word.
bool MayTakeNextWord(std::string_view word) {
    const std::size_t dashes = word.find_first_not_of('-');
    if ((dashes != 1 && dashes != 2) || IsPageSwitch(word)) return false;
    word.remove_prefix(dashes);
    return std::all_of(word.begin(), word.end(), IsLetter);
}

// What an options text says of pages.
struct PageWords {
    std::optional<std::string_view> numbers[4];  // behind the first -s, -e, -S and -E
    bool hasSwitch = false;                      // of any kind
    bool isTwice = false;                        // one of -s and -e
    bool hasStray = false;                       // a word that is no switch
    bool isLikePages = false;                    // such a word looks as if pages were meant

    bool IsFullString() const { return numbers[2] && numbers[3]; }
    bool HasSmall() const { return numbers[0] || numbers[1]; }
};

PageWords ReadPageWords(std::string_view options) {
    PageWords read;
    for (const std::string_view part : SplitAt(options, '|')) {
        std::vector<std::string_view> words = SplitAt(part, ' ');
        words.erase(std::remove(words.begin(), words.end(), std::string_view()), words.end());
        for (std::size_t i = 0; i < words.size(); ++i) {
            const std::string_view word = words[i];
            if (IsSwitch(word)) {
                read.hasSwitch = true;
            } else {
                read.hasStray = true;
                read.isLikePages = read.isLikePages || IsLikePages(word);
            }
            const bool hasNext = i + 1 < words.size() && words[i + 1][0] != '-';
            if (MayTakeNextWord(word) && hasNext) ++i;
            if (!IsPageSwitch(word)) continue;
            const std::size_t kind = std::string_view("seSE").find(word[1]);
            const bool isApart = word.size() == 2 && i + 1 < words.size() && BeginsWithDigit(words[i + 1]);
            const std::string_view number = isApart ? words[++i] : word.substr(2);
            read.isTwice = read.isTwice || (kind < 2 && read.numbers[kind]);
            if (!read.numbers[kind]) read.numbers[kind] = number;
        }
    }
    return read;
}

bool IsUnclear(const PageWords& read) {
    if (read.IsFullString()) return false;
    const auto isGiven = [](const auto& number) { return number && BeginsWithDigit(*number); };
    return read.isTwice || read.isLikePages || isGiven(read.numbers[2]) || isGiven(read.numbers[3]) ||
           (read.hasStray && read.HasSmall());
}

enum class PageNumber { kNone, kPage, kNoPage, kUnclear };

// Puts the number into `page`, where there is one.
PageNumber ReadPage(const std::optional<std::string_view>& number, bool mayBeZero, int& page) {
    constexpr std::int64_t kHighest = std::numeric_limits<int>::max();
    if (!number) return PageNumber::kNone;
    const auto value = ParseWholeNumber(*number, -kHighest, kHighest);
    if (!value) return PageNumber::kUnclear;
    if (*value == 0 && mayBeZero) return PageNumber::kNone;
    page = static_cast<int>(*value);
    return page > 0 ? PageNumber::kPage : PageNumber::kNoPage;
}

PageRange Impossible(std::string_view options, const char* flaw) {
    PageRange range;
    range.kind = PageRange::Kind::kImpossible;
    range.text = options;
    range.flaw = Format(flaw, options);
    return range;
}

}  // namespace

PageRange ReadPageRange(std::string_view options) {
    const PageWords read = ReadPageWords(options);
    const bool isFullString = read.IsFullString();
    const auto& start = read.numbers[isFullString ? 2 : 0];
    const auto& end = read.numbers[isFullString ? 3 : 1];
    PageRange range;
    const PageNumber first = ReadPage(start, isFullString, range.pages.first);
    const PageNumber last = ReadPage(end, isFullString, range.pages.last);
    if (IsUnclear(read) || first == PageNumber::kUnclear || last == PageNumber::kUnclear)
        return Impossible(options, "which pages are meant is unclear: \"%s\"");
    if (start) range.text = Format("-s%s", *start);
    if (end) range.text += Format(start ? "|-e%s" : "-e%s", *end);
    const bool isTurned = last == PageNumber::kPage && range.pages.last < range.pages.first;
    if (first == PageNumber::kNoPage || last == PageNumber::kNoPage || isTurned)
        return Impossible(range.text, "no document has such pages: \"%s\"");
    if (first == PageNumber::kPage || last == PageNumber::kPage) range.kind = PageRange::Kind::kSome;
    return range;
}

bool HasSwitches(std::string_view options) {
    return ReadPageWords(options).hasSwitch;
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
