#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "documents/pdf_tokens.h"

namespace quirepress {

// The objects of a damaged file, in the order in which they were found, as far as they tell of pages. Of
// several with the same number the last one counts.
class PdfPageTree {
public:
    // False when there are too many.
    bool AddDictionary(long long number, const PdfDictionary& dictionary);
    bool AddArray(long long number, std::string_view array);
    bool AddOther(long long number);
    // An object that a trailer names as the catalog.
    bool AddRoot(long long number);
    bool IsEmpty() const { return m_nodes.empty(); }

    // The leaves of the tree below the last root that has any; without one, the pages that there are.
    long long CountPages();

private:
    enum class Kind : std::uint8_t { kOther, kCatalog, kPages, kPage, kUntyped, kArray };
    struct Node {
        long long number = 0;
        std::uint32_t firstKid = 0;  // in m_kids; a catalog's only kid is the page tree
        std::uint32_t kidCount = 0;
        Kind kind = Kind::kOther;
        bool visited = false;
    };

    bool Add(long long number, Kind kind, std::size_t firstKid);
    bool TakeKids(std::string_view array);
    void Sort();
    Node* Find(long long number);
    long long CountLeaves(long long root);

    std::vector<Node> m_nodes;
    std::vector<long long> m_kids;
    std::vector<long long> m_roots;
};

}  // namespace quirepress
