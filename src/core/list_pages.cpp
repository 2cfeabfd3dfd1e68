#include "core/list_pages.h"

#include <algorithm>
#include <array>
#include <string>

#include "documents/page_counts.h"
#include "documents/pdf_counter.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

// Exact spellings: another capitalisation is not counted.
constexpr std::array<std::string_view, 3> kPdfExtensions = {".pdf", ".PDF", ".Pdf"};
constexpr std::array<std::string_view, 2> kPostScriptExtensions = {".ps", ".PS"};
constexpr std::array<std::string_view, 4> kPclExtensions = {".pcl", ".PCL", ".dat", ".DAT"};

template <std::size_t N>
bool IsOneOf(std::string_view extension, const std::array<std::string_view, N>& extensions) {
    return std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
}

// From the last "." on, wherever it stands: a file called ".pdf" has that ending too.
std::string_view EndingOf(std::string_view path) {
    const std::size_t dot = path.rfind('.');
    return dot == std::string_view::npos ? std::string_view() : path.substr(dot);
}

}  // namespace

ListPages::ListPages(Files& files, PdfCounter& pdfCounter, const GeneralOptions& options, bool fullPdfCount)
    : m_files(files), m_pdfCounter(pdfCounter), m_options(options), m_fullPdfCount(fullPdfCount) {}

bool ListPages::IsCounting() const {
    return !m_options.m_noPdfPages;
}

int ListPages::CountPages(std::string_view path) const {
    if (!IsCounting()) return -1;
    int pages = CountByExtension(path);
    int addonPages = -1;
    if (m_addons != nullptr && m_addons->CountPages(path, addonPages) && addonPages >= 0) pages = addonPages;
    return pages;
}

int ListPages::CountByExtension(std::string_view path) const {
    const std::string_view ending = EndingOf(path);
    std::string status;
    if (IsOneOf(ending, kPdfExtensions)) return CountPdfPages(path);
    if (IsOneOf(ending, kPostScriptExtensions)) return CountPostScriptPages(m_files, path, status);
    if (IsOneOf(ending, kPclExtensions)) return CountPclPages(m_files, path, status);
    return -1;
}

int ListPages::CountPdfPages(std::string_view path) const {
    if (!IsCounting()) return -1;
    std::string status;
    return m_pdfCounter.CountPages(path, m_fullPdfCount, m_options.m_openPassword, status);
}

}  // namespace quirepress
