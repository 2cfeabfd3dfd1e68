#include "documents/pdf_quick_count.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>

#include "base/text.h"
#include "documents/pdf_cross_references.h"
#include "documents/pdf_file_view.h"
#include "documents/pdf_objects.h"

namespace quirepress {
namespace {

// How many kids an array names; a reference to an array counts as one, the least that it can hold.
long long CountKids(std::string_view value) {
    PdfReference reference;
    if (ReadPdfReference(value, reference)) return 1;
    std::vector<PdfReference> kids;
    return ReadPdfReferences(value, kids) ? static_cast<long long>(kids.size()) : 0;
}

bool HasTypeOrNone(const PdfDictionary& dictionary, std::string_view type) {
    const std::string_view value = dictionary.Find("Type");
    return value.empty() || value == type;
}

// The count that the root of the page tree states; -1 when it cannot be right.
long long CountByPageTree(PdfObjects& objects, const PdfReference& root, std::int64_t fileSize) {
    PdfDictionary dictionary;
    PdfReference pages;
    const auto readCatalog = [&](std::string_view text) {
        PdfCursor cursor(text);
        const PdfRead outcome = dictionary.Read(cursor);
        if (outcome != PdfRead::kDone) return outcome;
        const bool good =
            HasTypeOrNone(dictionary, "/Catalog") && ReadPdfReference(dictionary.Find("Pages"), pages);
        return good ? PdfRead::kDone : PdfRead::kBad;
    };
    std::string count;
    long long kids = 0;
    const auto readPages = [&](std::string_view text) {
        PdfCursor cursor(text);
        const PdfRead outcome = dictionary.Read(cursor);
        if (outcome != PdfRead::kDone) return outcome;
        kids = CountKids(dictionary.Find("Kids"));
        count = dictionary.Find("Count");
        const bool good = HasTypeOrNone(dictionary, "/Pages") && dictionary.Find("Parent").empty();
        return good ? PdfRead::kDone : PdfRead::kBad;
    };
    long long number = 0;
    if (!objects.Read(root, readCatalog) || !objects.Read(pages, readPages) ||
        !objects.ReadNumber(count, number))
        return -1;
    const long long most = std::min<long long>(fileSize, std::numeric_limits<int>::max());
    return kids > 0 && number >= kids && number <= most ? number : -1;
}

long long CountFromOrigin(PdfFileView& view, std::int64_t start, std::int64_t origin, PdfScratch& scratch) {
    PdfCrossReferences crossReferences(view, scratch.decoder, scratch.crossReferences, origin);
    if (!crossReferences.LoadNewest(start)) return -1;
    PdfObjects objects(view, crossReferences, scratch.decoder, scratch.objects);
    return CountByPageTree(objects, crossReferences.Root(), view.Size());
}

}  // namespace

void PdfScratch::GiveBackMuch() {
    constexpr std::size_t kMuch = std::size_t{1} << 20;
    for (std::vector<char>* buffer : {&window, &crossReferences, &objects})
        if (buffer->size() > kMuch) std::vector<char>().swap(*buffer);
}

int CountPdfPagesQuickly(InputFile& file, PdfScratch& scratch) {
    PdfFileView view(file, scratch.window);
    const std::int64_t start = FindCrossReferences(view);
    if (start <= 0) return -1;
    long long pages = CountFromOrigin(view, start, 0, scratch);
    if (pages < 0) {
        // Something may stand before the file proper, such as a printer's job commands.
        const std::int64_t origin = FindPdfHeader(view);
        if (origin > 0) pages = CountFromOrigin(view, start, origin, scratch);
    }
    scratch.GiveBackMuch();
    return static_cast<int>(pages);
}

}  // namespace quirepress
