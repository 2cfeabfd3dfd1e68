#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "documents/pdf_merge_source.h"

namespace quirepress {

class PdfMergeWriter;

// What the catalog of the merged file says of layers: the text of arrays, without their brackets.
struct PdfMergedLayers {
    std::string all;
    std::string hidden;
    std::string automatic;  // rules that show or hide layers when the document is printed
};

// One file on its way into a merged one: its page tree, and all that the pages need, with new numbers.
class PdfMergeInput {
public:
    // `isCleaned`: the library has written the file, so that its forms need nothing more, and of what is
    // still strange only the pages matter.
    PdfMergeInput(InputFile& file, PdfMergeScratch& scratch, bool isCleaned)
        : m_source(file, scratch), m_isCleaned(isCleaned) {}

    // Looks at all that decides whether the pages can be copied as they are: cross references, the whole
    // page tree, forms. False when they cannot.
    bool Open();
    int PageCount() const { return m_pageCount; }
    int Version() const { return m_version; }

    // Copies the pages below the object `parent` of the new file. False when something is damaged: what is
    // written by then are objects that nothing refers to.
    bool Copy(PdfMergeWriter& writer, std::uint32_t parent, std::uint32_t& pages, PdfMergedLayers& layers);

private:
    // An inner one of the page tree; the root is its own parent.
    struct Node {
        long long number = 0;
        std::size_t parent = 0;  // index
        long long count = 0;     // the pages below it, as it says
        long long pages = 0;     // those that were found
    };
    // What a node names as its kid.
    struct Kid {
        long long number = 0;
        std::size_t parent = 0;
    };

    bool ReadCatalog();
    bool HasForms();
    bool CheckPageTree();
    bool CheckKid(const Kid& kid, std::vector<Node>& nodes, std::vector<Kid>& waiting);
    bool AddKids(std::size_t parent, std::vector<Kid>& waiting);
    bool CopyObject(PdfMergeWriter& writer, long long number, std::uint32_t parent);
    bool CopyWaiting(PdfMergeWriter& writer, std::uint32_t parent);
    bool WriteStream(PdfMergeWriter& writer, std::uint32_t number);
    bool AppendRenumbered(PdfMergeWriter& writer, const PdfSourceObject& object, std::size_t begin,
                          std::string& text);
    bool NewNumberOf(PdfMergeWriter& writer, const PdfReference& reference, std::uint32_t& number);
    bool CopyLayers(PdfMergeWriter& writer, PdfMergedLayers& layers);
    bool ReadLayerList(std::string_view value, std::vector<PdfReference>& layers);
    bool CopyAutomaticStates(PdfMergeWriter& writer, std::string_view value, std::string& text);
    void AppendKnown(const std::vector<PdfReference>& layers, std::string& text) const;

    PdfMergeSource m_source;
    bool m_isCleaned;
    int m_version = 0;
    int m_pageCount = 0;
    PdfReference m_pages;      // the root of the page tree
    std::string m_layers;      // what the catalog says of layers; empty: nothing
    PdfSourceObject m_object;  // at work
    PdfDictionary m_dictionary;
    std::string m_text;
    std::vector<std::uint32_t> m_newNumbers;  // 0: not referred to yet
    std::vector<long long> m_waiting;         // referred to, not copied yet
};

}  // namespace quirepress
