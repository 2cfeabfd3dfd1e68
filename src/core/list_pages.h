#pragma once

#include <string_view>

namespace quirepress {

class Files;
class PdfCounter;
struct GeneralOptions;

// Counts pages and claims files on behalf of the add-ons.
class AddonCounter {
public:
    virtual ~AddonCounter() = default;
    // True when an add-on claims the file; `pages` is then its count (-1: unknown).
    virtual bool CountPages(std::string_view path, int& pages) = 0;
};

// Chooses the page counter of a file that comes into the list.
class ListPages {
public:
    ListPages(Files& files, PdfCounter& pdfCounter, const GeneralOptions& options, bool fullPdfCount);

    // An add-on that claims the file has the last word; an add-on that cannot tell has none.
    void UseAddons(AddonCounter* addons) { m_addons = addons; }

    // Each -1 when unknown, which is also when counting is switched off. May pump.
    int CountPages(std::string_view path) const;
    int CountPdfPages(std::string_view path) const;

    bool IsCounting() const;

private:
    int CountByExtension(std::string_view path) const;

    Files& m_files;
    PdfCounter& m_pdfCounter;
    const GeneralOptions& m_options;
    bool m_fullPdfCount;
    AddonCounter* m_addons = nullptr;
};

}  // namespace quirepress
