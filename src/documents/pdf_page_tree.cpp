#include "documents/pdf_page_tree.h"

#include <algorithm>

namespace quirepress {
namespace {

constexpr std::size_t kMostNodes = 2'000'000;
constexpr std::size_t kMostKids = 4'000'000;

}  // namespace

bool PdfPageTree::AddDictionary(long long number, const PdfDictionary& dictionary) {
    const std::size_t firstKid = m_kids.size();
    const std::string_view type = dictionary.Find("Type");
    const std::string_view kids = dictionary.Find("Kids");
    PdfReference reference;
    if (type == "/Catalog") {
        if (ReadPdfReference(dictionary.Find("Pages"), reference)) m_kids.push_back(reference.number);
        return AddRoot(number) && Add(number, Kind::kCatalog, firstKid);
    }
    if (type == "/Page") return Add(number, Kind::kPage, firstKid);
    if (type != "/Pages" && (!type.empty() || kids.empty()))
        return Add(number, type.empty() ? Kind::kUntyped : Kind::kOther, firstKid);
    if (ReadPdfReference(kids, reference)) {
        m_kids.push_back(reference.number);
    } else if (!TakeKids(kids)) {
        return false;
    }
    return Add(number, Kind::kPages, firstKid);
}

bool PdfPageTree::AddArray(long long number, std::string_view array) {
    const std::size_t firstKid = m_kids.size();
    return TakeKids(array) && Add(number, Kind::kArray, firstKid);
}

bool PdfPageTree::AddOther(long long number) {
    return Add(number, Kind::kOther, m_kids.size());
}

bool PdfPageTree::AddRoot(long long number) {
    m_roots.push_back(number);
    return m_roots.size() <= kMostNodes;
}

bool PdfPageTree::Add(long long number, Kind kind, std::size_t firstKid) {
    if (m_nodes.size() >= kMostNodes || m_kids.size() > kMostKids) return false;
    Node node;
    node.number = number;
    node.firstKid = static_cast<std::uint32_t>(firstKid);
    node.kidCount = static_cast<std::uint32_t>(m_kids.size() - firstKid);
    node.kind = kind;
    m_nodes.push_back(node);
    return true;
}

// References up to the array's end, or to what is none.
bool PdfPageTree::TakeKids(std::string_view array) {
    PdfCursor cursor(array);
    PdfReference kid;
    if (!cursor.TakeText("[")) return true;
    while (cursor.TakeReference(kid)) {
        if (m_kids.size() >= kMostKids) return false;
        m_kids.push_back(kid.number);
    }
    return true;
}

// By number; of equal numbers the last one stays.
void PdfPageTree::Sort() {
    const auto byNumber = [](const Node& left, const Node& right) { return left.number < right.number; };
    std::stable_sort(m_nodes.begin(), m_nodes.end(), byNumber);
    std::size_t kept = 0;
    for (std::size_t i = 0; i < m_nodes.size(); ++i)
        if (i + 1 == m_nodes.size() || m_nodes[i + 1].number != m_nodes[i].number)
            m_nodes[kept++] = m_nodes[i];
    m_nodes.resize(kept);
}

PdfPageTree::Node* PdfPageTree::Find(long long number) {
    const auto found = std::lower_bound(m_nodes.begin(), m_nodes.end(), number,
                                        [](const Node& node, long long n) { return node.number < n; });
    return found != m_nodes.end() && found->number == number ? &*found : nullptr;
}

long long PdfPageTree::CountPages() {
    Sort();
    for (auto root = m_roots.rbegin(); root != m_roots.rend(); ++root)
        if (const long long pages = CountLeaves(*root); pages > 0) return pages;
    return std::count_if(m_nodes.begin(), m_nodes.end(),
                         [](const Node& node) { return node.kind == Kind::kPage; });
}

// A page may be a kid more than once; what has kids itself is entered once, so that the walk ends.
long long PdfPageTree::CountLeaves(long long root) {
    Node* catalog = Find(root);
    if (!catalog || catalog->kidCount != 1 || catalog->visited) return 0;
    catalog->visited = true;
    long long pages = 0;
    std::vector<long long> waiting{m_kids[catalog->firstKid]};
    while (!waiting.empty()) {
        Node* node = Find(waiting.back());
        waiting.pop_back();
        if (!node) continue;
        if (node->kind == Kind::kPage || node->kind == Kind::kUntyped) ++pages;
        if ((node->kind != Kind::kPages && node->kind != Kind::kArray) || node->visited) continue;
        node->visited = true;
        const auto first = m_kids.begin() + node->firstKid;
        waiting.insert(waiting.end(), first, first + node->kidCount);
    }
    return pages;
}

}  // namespace quirepress
