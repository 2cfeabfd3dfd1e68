#include "platform/cups/ipp_ticket.h"

#include <cups/cups.h>

#include <algorithm>
#include <array>
#include <limits>

#include "base/numbers.h"
#include "base/path.h"
#include "base/text.h"
#include "platform/cups/ipp_media.h"
#include "platform/cups/ipp_message.h"

namespace quirepress {

namespace {

constexpr int kLastPage = std::numeric_limits<int>::max();

bool ParsePageRange(std::string_view text, std::pair<int, int>& range) {
    const std::size_t dash = text.find('-');
    const auto first = ParseWholeNumber(text.substr(0, dash), 1, kLastPage);
    if (!first) return false;
    range = {static_cast<int>(*first), static_cast<int>(*first)};
    if (dash == std::string_view::npos) return true;
    const std::string_view end = text.substr(dash + 1);
    const auto last = end.empty() ? kLastPage : ParseWholeNumber(end, *first, kLastPage);
    if (last) range.second = static_cast<int>(*last);
    return last.has_value();
}

void AddKeyword(ipp_t* request, const char* name, std::string_view value) {
    if (value.empty()) return;
    const std::string text(value);
    ippAddString(request, IPP_TAG_JOB, IPP_TAG_KEYWORD, name, nullptr, text.c_str());
}

void AddNumber(ipp_t* request, ipp_tag_t tag, const char* name, int value) {
    if (value > 0) ippAddInteger(request, IPP_TAG_JOB, tag, name, value);
}

// A media source alone is passed over by servers: it has to stand in a collection, the size beside it.
void AddMedia(ipp_t* request, std::string_view media, const std::string& source) {
    const std::string name(media);
    if (source.empty()) return AddKeyword(request, "media", name);
    const IppMessage collection(ippNew());
    if (const pwg_media_t* size = pwgMediaForPWG(name.c_str()); size != nullptr && !name.empty()) {
        const IppMessage dimensions(ippNew());
        ippAddInteger(dimensions.get(), IPP_TAG_JOB, IPP_TAG_INTEGER, "x-dimension", size->width);
        ippAddInteger(dimensions.get(), IPP_TAG_JOB, IPP_TAG_INTEGER, "y-dimension", size->length);
        ippAddCollection(collection.get(), IPP_TAG_JOB, "media-size", dimensions.get());
    }
    AddKeyword(collection.get(), "media-source", source);
    ippAddCollection(request, IPP_TAG_JOB, "media-col", collection.get());
}

// The keyword or number for a field of the ticket; rows in the order of its values.
template <typename Value, std::size_t kCount>
Value Pick(const std::array<Value, kCount>& values, int field) {
    return values.at(static_cast<std::size_t>(field));
}

void AddRanges(ipp_t* request, const PageRanges& ranges) {
    std::vector<int> lower;
    std::vector<int> upper;
    for (const auto& [first, last] : ranges) {
        lower.push_back(first);
        upper.push_back(last);
    }
    if (!ranges.empty())
        ippAddRanges(request, IPP_TAG_JOB, "page-ranges", static_cast<int>(ranges.size()), lower.data(),
                     upper.data());
}

}  // namespace

bool ParsePageRanges(std::string_view text, PageRanges& ranges) {
    ranges.clear();
    if (text.empty()) return true;
    for (std::string_view part : SplitAt(text, ',')) {
        if (!ParsePageRange(part, ranges.emplace_back())) return false;
    }
    std::sort(ranges.begin(), ranges.end());
    PageRanges merged;
    for (const auto& range : ranges) {
        if (!merged.empty() && range.first - 1 <= merged.back().second)
            merged.back().second = std::max(merged.back().second, range.second);
        else
            merged.push_back(range);
    }
    ranges = std::move(merged);
    return true;
}

void AddTicket(ipp_t* request, const DocumentInfo& document, const PageRanges& ranges,
               const std::string& source) {
    constexpr std::array<std::string_view, 3> kColors = {"", "monochrome", "color"};
    constexpr std::array<std::string_view, 4> kSides = {"", "one-sided", "two-sided-long-edge",
                                                        "two-sided-short-edge"};
    constexpr std::array<int, 3> kOrientations = {0, IPP_ORIENT_PORTRAIT, IPP_ORIENT_LANDSCAPE};
    constexpr std::array<int, 4> kQualities = {0, IPP_QUALITY_DRAFT, IPP_QUALITY_NORMAL, IPP_QUALITY_HIGH};
    const JobTicket& ticket = document.ticket;

    const std::int64_t copies = std::int64_t{std::max(document.copies, 1)} * std::max(ticket.copies, 1);
    const int sentCopies = static_cast<int>(std::min<std::int64_t>(copies, kLastPage));
    AddNumber(request, IPP_TAG_INTEGER, "copies", sentCopies > 1 ? sentCopies : 0);
    AddNumber(request, IPP_TAG_INTEGER, "job-priority", document.priority);
    AddKeyword(request, "print-color-mode", Pick(kColors, static_cast<int>(ticket.color)));
    AddKeyword(request, "sides", Pick(kSides, static_cast<int>(ticket.duplex)));
    AddNumber(request, IPP_TAG_ENUM, "orientation-requested",
              Pick(kOrientations, static_cast<int>(ticket.orientation)));
    AddNumber(request, IPP_TAG_ENUM, "print-quality", Pick(kQualities, static_cast<int>(ticket.quality)));
    AddKeyword(request, "print-scaling", ticket.scale == 100 ? "none" : "");
    AddMedia(request, MediaName(ticket.paperSize), source);
    AddRanges(request, ranges);
}

std::string_view DocumentFormat(std::string_view path) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 11> kFormats = {{
        {".pdf", "application/pdf"},
        {".txt", "text/plain"},
        {".text", "text/plain"},
        {".jpg", "image/jpeg"},
        {".jpeg", "image/jpeg"},
        {".jpe", "image/jpeg"},
        {".png", "image/png"},
        {".gif", "image/gif"},
        {".tif", "image/tiff"},
        {".tiff", "image/tiff"},
        {".bmp", "image/x-bitmap"},
    }};
    const std::string extension = ToLowerAscii(FileExtension(path));
    const auto found = std::find_if(kFormats.begin(), kFormats.end(),
                                    [&](const auto& row) { return row.first == extension; });
    return found == kFormats.end() ? std::string_view() : found->second;
}

}  // namespace quirepress
