#include "documents/pdf_worker_messages.h"

#include <cstdint>
#include <limits>
#include <vector>

#include "base/numbers.h"
#include "base/text.h"

namespace quirepress {
namespace {

constexpr std::string_view kQuick = "quick";
constexpr std::string_view kFull = "full";
constexpr std::string_view kColors = "colors";
constexpr std::string_view kExtract = "extract";
constexpr std::string_view kPages = "pages ";
constexpr std::string_view kResult = "result ";
constexpr std::string_view kColorLetters = "muc";  // in the order of PageColor
constexpr int kHighestPage = std::numeric_limits<int>::max();
constexpr std::string_view kHexDigits = "0123456789abcdef";

std::string ToHex(std::string_view bytes) {
    std::string hex;
    hex.reserve(2 * bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        hex += kHexDigits[byte >> 4];
        hex += kHexDigits[byte & 15];
    }
    return hex;
}

bool FromHex(std::string_view hex, std::string& bytes) {
    bytes.clear();
    for (std::size_t i = 0; i < hex.size(); i += 2) {
        const std::size_t high = kHexDigits.find(hex[i]);
        const std::size_t low = i + 1 < hex.size() ? kHexDigits.find(hex[i + 1]) : std::string_view::npos;
        if (high == std::string_view::npos || low == std::string_view::npos) return false;
        bytes += static_cast<char>(high << 4 | low);
    }
    return true;
}

// Only as it is written: no sign, no zeros before it.
bool ReadNumber(std::string_view text, int lowest, int highest, int& number) {
    const auto value = ParseWholeNumber(text, lowest, highest);
    if (value) number = static_cast<int>(*value);
    return value && std::to_string(number) == text;
}

// "1-3,7-7"
std::string FormatRanges(const std::vector<PdfPageRange>& ranges) {
    std::string text;
    for (const PdfPageRange& range : ranges)
        text += (text.empty() ? "" : ",") + std::to_string(range.first) + '-' + std::to_string(range.last);
    return text;
}

bool ParseRanges(std::string_view text, std::vector<PdfPageRange>& ranges) {
    ranges.clear();
    for (const std::string_view part : SplitAt(text, ',')) {
        const std::vector<std::string_view> ends = SplitAt(part, '-');
        PdfPageRange range;
        if (ends.size() != 2 || !ReadNumber(ends[0], 0, kHighestPage, range.first) ||
            !ReadNumber(ends[1], 0, kHighestPage, range.last))
            return false;
        ranges.push_back(range);
    }
    return true;
}

}  // namespace

std::string FormatRequest(const PdfWorkerRequest& request) {
    using Task = PdfWorkerRequest::Task;
    const std::string file = ' ' + ToHex(request.path) + ' ' + ToHex(request.password);
    if (request.task == Task::kColors)
        return std::string(kColors) + file + ' ' + std::to_string(request.tolerance);
    if (request.task == Task::kExtract)
        return std::string(kExtract) + file + ' ' + ToHex(request.target) + ' ' +
               FormatRanges(request.ranges);
    return std::string(request.full ? kFull : kQuick) + file;
}

bool ParseRequest(std::string_view line, PdfWorkerRequest& request) {
    const std::vector<std::string_view> words = SplitAt(line, ' ');
    if (words.size() < 3 || !FromHex(words[1], request.path) || !FromHex(words[2], request.password))
        return false;
    request.full = words[0] == kFull;
    if (words[0] == kColors && words.size() == 4) {
        request.task = PdfWorkerRequest::Task::kColors;
        return ReadNumber(words[3], 0, 100, request.tolerance);
    }
    if (words[0] == kExtract && words.size() == 5) {
        request.task = PdfWorkerRequest::Task::kExtract;
        return FromHex(words[3], request.target) && ParseRanges(words[4], request.ranges);
    }
    request.task = PdfWorkerRequest::Task::kCount;
    return words.size() == 3 && (words[0] == kQuick || words[0] == kFull);
}

std::string FormatAnswer(long long pages) {
    return std::string(kPages) + std::to_string(pages);
}

bool ParseAnswer(std::string_view line, long long& pages) {
    if (!StartsWith(line, kPages)) return false;
    const auto number =
        ParseWholeNumber(line.substr(kPages.size()), -1, std::numeric_limits<std::int64_t>::max());
    if (number) pages = *number;
    return number.has_value();
}

std::string FormatResult(PdfResult result, const std::vector<PageColor>& pages) {
    std::string line = std::string(kResult) + std::to_string(static_cast<int>(result)) + ' ';
    for (const PageColor color : pages) line += kColorLetters[static_cast<std::size_t>(color)];
    return line;
}

bool ParseResult(std::string_view line, PdfResult& result, std::vector<PageColor>& pages) {
    const std::vector<std::string_view> words = SplitAt(line, ' ');
    int number = 0;
    if (words.size() != 3 || !StartsWith(line, kResult) ||
        !ReadNumber(words[1], 0, static_cast<int>(PdfResult::kGaveUp), number) ||
        words[2].find_first_not_of(kColorLetters) != std::string_view::npos)
        return false;
    result = static_cast<PdfResult>(number);
    pages.clear();
    for (const char letter : words[2]) pages.push_back(static_cast<PageColor>(kColorLetters.find(letter)));
    return true;
}

}  // namespace quirepress
