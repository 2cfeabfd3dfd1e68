#include "backends/candidate_names.h"

#include <algorithm>

#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "logs/debug_log.h"

namespace quirepress {

namespace {

constexpr std::size_t kLongestName = 255;

constexpr std::array<std::string_view, 4> kGenericNames = {"print job", "my document", "me10",
                                                           "full page print"};

// As a print system cuts it: whole characters only.
void CutName(std::string& name) {
    if (name.size() <= kLongestName) return;
    std::size_t end = kLongestName;
    while (end > kLongestName - 3 && (static_cast<unsigned char>(name[end]) & 0xC0U) == 0x80) --end;
    name.resize(end);
}

bool HasPdfEnding(std::string_view path) {
    return EndsWith(path, ".pdf") || EndsWith(path, ".PDF") || EndsWith(path, ".Pdf");
}

std::string WithUnderscores(std::string_view title) {
    std::string name(title);
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '(' || c == ')'; }, '_');
    return name;
}

}  // namespace

CandidateNames::CandidateNames(std::string_view path, std::string_view shortPath) {
    const std::string_view title = FileTitle(path);
    m_names[kFull] = path;
    m_names[kShort] = shortPath;
    if (HasPdfEnding(path)) m_names[kPdf] = Format("%.31s.PDF", title);
    if (!FileExtension(path).empty()) m_names[kWithoutExtension] = TitleWithoutExtension(path);
    m_names[kTitle] = title;
    m_names[kUnderscores] = WithUnderscores(title);
    m_names[kLowerTitle] = ToLowerAscii(TitleWithoutExtension(shortPath));
    m_names[kLowerFull] = ToLowerAscii(FileTitle(shortPath));

    // An empty name would be part of every document's.
    std::string_view substitute = "No way will it match";
    for (std::string& name : m_names) {
        CutName(name);
        if (!name.empty()) continue;
        name = substitute;
        substitute = "No way will it match again";
    }
}

bool CandidateNames::Matches(std::string_view document) const {
    const auto isPartOf = [](std::string_view text) {
        return [text](std::string_view name) { return Contains(text, name); };
    };
    const auto firstLower = m_names.begin() + kLowerTitle;
    if (std::any_of(m_names.begin(), firstLower, isPartOf(document))) return true;
    const std::string lower = ToLowerAscii(document);
    return std::any_of(firstLower, m_names.end(), isPartOf(lower)) ||
           std::any_of(kGenericNames.begin(), kGenericNames.end(), isPartOf(lower));
}

void CandidateNames::Trace(DebugLog& debugLog) const {
    constexpr std::array<std::string_view, kNames> kFormats = {"pfn: %s\r\n",
                                                               "short filename: %s\r\n",
                                                               "31 char path pfn2: %s\r\n",
                                                               "without extension pfn3: %s\r\n",
                                                               "m_filetitle: %s\r\n",
                                                               "m_filetitle_underscore: %s\r\n",
                                                               "lwr_short_filetitle: %s\r\n",
                                                               "lwr_short_filetitle_ext: %s\r\n"};
    for (std::size_t i = 0; i < m_names.size(); ++i) debugLog.Trace(kFormats[i], m_names[i]);
}

}  // namespace quirepress
