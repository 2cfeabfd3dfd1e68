#include "documents/pdf_worker_messages.h"

#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "base/numbers.h"
#include "base/text.h"

namespace quirepress {
namespace {

constexpr std::string_view kQuick = "quick";
constexpr std::string_view kFull = "full";
constexpr std::string_view kColors = "colors";
constexpr std::string_view kExtract = "extract";
constexpr std::string_view kFill = "fill";
constexpr std::string_view kPages = "pages ";
constexpr std::string_view kResult = "result ";
constexpr std::string_view kFilled = "filled ";
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

bool ReadResult(std::string_view text, PdfResult& result) {
    int number = 0;
    const bool isRead = ReadNumber(text, 0, static_cast<int>(PdfResult::kGaveUp), number);
    if (isRead) result = static_cast<PdfResult>(number);
    return isRead;
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
    if (request.task == Task::kFill) return std::string(kFill) + file + ' ' + ToHex(request.target);
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
    if (words[0] == kFill && words.size() == 4) {
        request.task = PdfWorkerRequest::Task::kFill;
        return FromHex(words[3], request.target);
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
    if (words.size() != 3 || !StartsWith(line, kResult) ||
        words[2].find_first_not_of(kColorLetters) != std::string_view::npos || !ReadResult(words[1], result))
        return false;
    pages.clear();
    for (const char letter : words[2]) pages.push_back(static_cast<PageColor>(kColorLetters.find(letter)));
    return true;
}

std::string FormatFilling(PdfResult result, const FormFilling& filling) {
    std::string line = std::string(kFilled) + std::to_string(static_cast<int>(result)) + ' ' +
                       ToHex(filling.form) + ' ' + ToHex(filling.flaw) + ' ';
    for (std::size_t i = 0; i < filling.unknownFields.size(); ++i)
        line += (i == 0 ? "" : ",") + ToHex(filling.unknownFields[i]);
    return line;
}

bool ParseFilling(std::string_view line, PdfResult& result, FormFilling& filling) {
    const std::vector<std::string_view> words = SplitAt(line, ' ');
    FormFilling read;
    PdfResult number = PdfResult::kDone;
    if (words.size() != 5 || !StartsWith(line, kFilled) || !ReadResult(words[1], number) ||
        !FromHex(words[2], read.form) || !FromHex(words[3], read.flaw))
        return false;
    for (const std::string_view name : SplitAt(words[4], ',')) {
        std::string bytes;
        if (!FromHex(name, bytes)) return false;
        if (!bytes.empty()) read.unknownFields.push_back(std::move(bytes));
    }
    result = number;
    filling = std::move(read);
    return true;
}

}  // namespace quirepress
