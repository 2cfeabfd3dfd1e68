#include "documents/pdf_merge_input.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>

#include "base/text.h"
#include "documents/pdf_merge_writer.h"

namespace quirepress {
namespace {

// "/2.0": 20; 0 when it is none.
int ReadVersionName(std::string_view name) {
    const bool isOne = name.size() == 4 && name[2] == '.' && name[1] >= '1' && name[1] <= '9' &&
                       name[3] >= '0' && name[3] <= '9';
    return isOne ? 10 * (name[1] - '0') + (name[3] - '0') : 0;
}

bool ReadDictionary(std::string_view text, PdfDictionary& dictionary) {
    PdfCursor cursor(text);
    return dictionary.Read(cursor) == PdfRead::kDone;
}

bool IsEmptyArray(std::string_view value) {
    std::vector<PdfReference> references;
    return ReadPdfReferences(value, references) && references.empty();
}

}  // namespace

bool PdfMergeInput::Open() {
    return m_source.Open() && ReadCatalog() && CheckPageTree();
}

bool PdfMergeInput::ReadCatalog() {
    if (!m_source.Read(m_source.Root().number, m_object) || m_object.isStream ||
        !ReadDictionary(m_object.value, m_dictionary))
        return false;
    const std::string_view type = m_dictionary.Find("Type");
    if ((!type.empty() && type != "/Catalog") || !ReadPdfReference(m_dictionary.Find("Pages"), m_pages))
        return false;
    m_version = std::max(m_source.Version(), ReadVersionName(m_dictionary.Find("Version")));
    const std::string layers(m_dictionary.Find("OCProperties"));
    if (!m_isCleaned && HasForms()) return false;
    return layers.empty() || m_source.Resolve(layers, m_layers) || m_isCleaned;
}

// Fields may lack the looks that a viewer would make for them, and the merged file has no form any more.
bool PdfMergeInput::HasForms() {
    const std::string value(m_dictionary.Find("AcroForm"));
    std::string form;
    if (value.empty()) return false;
    PdfDictionary dictionary;
    if (!m_source.Resolve(value, form) || !ReadDictionary(form, dictionary)) return true;
    const std::string list(dictionary.Find("Fields"));
    std::string fields;
    return !dictionary.Find("XFA").empty() || !m_source.Resolve(list, fields) ||
           !(fields.empty() || IsEmptyArray(fields));
}

// Every node once, each with its parent, and as many pages below each as it says: readers may go by any of
// these.
bool PdfMergeInput::CheckPageTree() {
    if (!m_source.Has(m_pages).value_or(false)) return false;
    m_newNumbers.assign(m_source.ObjectCount(), 0);  // 1: seen in the tree
    std::vector<Node> nodes;
    std::vector<Kid> waiting{{m_pages.number, 0}};
    while (!waiting.empty()) {
        const Kid kid = waiting.back();
        waiting.pop_back();
        if (!CheckKid(kid, nodes, waiting)) return false;
    }
    // A node stands behind its parent.
    for (std::size_t i = nodes.size(); i-- > 0;) {
        if (nodes[i].count != nodes[i].pages) return false;
        if (i > 0) nodes[nodes[i].parent].pages += nodes[i].pages;
    }
    if (nodes.empty() || nodes[0].pages > std::numeric_limits<int>::max()) return false;
    m_pageCount = static_cast<int>(nodes[0].pages);
    std::fill(m_newNumbers.begin(), m_newNumbers.end(), 0);
    return m_pageCount > 0;
}

bool PdfMergeInput::CheckKid(const Kid& kid, std::vector<Node>& nodes, std::vector<Kid>& waiting) {
    std::uint32_t& seen = m_newNumbers[static_cast<std::size_t>(kid.number)];
    if (seen != 0 || !m_source.Read(kid.number, m_object) || m_object.isStream ||
        !ReadDictionary(m_object.value, m_dictionary))
        return false;
    seen = 1;
    const std::string_view parent = m_dictionary.Find("Parent");
    PdfReference reference;
    const bool isRoot = nodes.empty();
    if (isRoot ? !parent.empty()
               : !ReadPdfReference(parent, reference) || reference.number != nodes[kid.parent].number)
        return false;
    const std::string_view type = m_dictionary.Find("Type");
    if (type == "/Page" && !isRoot) {
        ++nodes[kid.parent].pages;
        return m_dictionary.Find("Kids").empty();
    }
    Node node{kid.number, kid.parent};
    if (type != "/Pages" || !ReadPdfNumber(m_dictionary.Find("Count"), node.count)) return false;
    nodes.push_back(node);
    return AddKids(nodes.size() - 1, waiting);
}

bool PdfMergeInput::AddKids(std::size_t parent, std::vector<Kid>& waiting) {
    std::vector<PdfReference> kids;
    if (!ReadPdfReferences(m_dictionary.Find("Kids"), kids)) return false;
    for (const PdfReference& kid : kids) {
        if (!m_source.Has(kid).value_or(false)) return false;
        waiting.push_back({kid.number, parent});
    }
    return waiting.size() <= m_source.ObjectCount();
}

bool PdfMergeInput::Copy(PdfMergeWriter& writer, std::uint32_t parent, std::uint32_t& pages,
                         PdfMergedLayers& layers) {
    if (!NewNumberOf(writer, m_pages, pages) || !CopyWaiting(writer, parent)) return false;
    if (!m_layers.empty() && !CopyLayers(writer, layers) && !m_isCleaned) return false;
    return CopyWaiting(writer, parent);
}

bool PdfMergeInput::CopyWaiting(PdfMergeWriter& writer, std::uint32_t parent) {
    while (!m_waiting.empty()) {
        const long long number = m_waiting.back();
        m_waiting.pop_back();
        if (!CopyObject(writer, number, parent)) return false;
    }
    return true;
}

bool PdfMergeInput::CopyObject(PdfMergeWriter& writer, long long number, std::uint32_t parent) {
    if (!m_source.Read(number, m_object)) return false;
    m_text.clear();
    std::size_t begin = 0;
    if (number == m_pages.number) {
        m_text = "<</Parent " + std::to_string(parent) + " 0 R";
        begin = 2;
    }
    const auto known = static_cast<std::ptrdiff_t>(m_waiting.size());
    if (!AppendRenumbered(writer, m_object, begin, m_text)) return false;
    // What is named first comes first, so that the pages stand in their order.
    std::reverse(m_waiting.begin() + known, m_waiting.end());
    const std::uint32_t newNumber = m_newNumbers[static_cast<std::size_t>(number)];
    if (m_object.isStream) return WriteStream(writer, newNumber);
    writer.WriteObject(newNumber, m_text);
    return true;
}

bool PdfMergeInput::WriteStream(PdfMergeWriter& writer, std::uint32_t number) {
    writer.BeginStream(number, m_text);
    for (std::int64_t done = 0; done < m_object.length;) {
        const std::string_view bytes = m_source.BytesAt(m_object.data + done, m_object.length - done);
        if (bytes.empty()) return false;
        writer.WriteBytes(bytes);
        done += static_cast<std::int64_t>(bytes.size());
    }
    writer.EndStream();
    return true;
}

// What refers to nothing becomes "null"; the length of a stream, wherever it was written, a number.
bool PdfMergeInput::AppendRenumbered(PdfMergeWriter& writer, const PdfSourceObject& object, std::size_t begin,
                                     std::string& text) {
    for (const PdfReferenceScan::Found& found : object.references) {
        text.append(object.value, begin, found.begin - begin);
        begin = found.end;
        std::uint32_t number = 0;
        if (object.isStream && found.begin == object.lengthAt)
            text += std::to_string(object.length);
        else if (!NewNumberOf(writer, found.reference, number))
            return false;
        else
            text += number == 0 ? "null" : std::to_string(number) + " 0 R";
    }
    text.append(object.value, begin, std::string::npos);
    return true;
}

// 0 when there is no such object. False when that cannot be right.
bool PdfMergeInput::NewNumberOf(PdfMergeWriter& writer, const PdfReference& reference,
                                std::uint32_t& number) {
    const std::optional<bool> exists = m_source.Has(reference);
    number = 0;
    if (!exists.value_or(false)) return exists.has_value();
    std::uint32_t& known = m_newNumbers[static_cast<std::size_t>(reference.number)];
    if (known == 0) {
        known = writer.NewNumber();
        m_waiting.push_back(reference.number);
    }
    number = known;
    return true;
}

// A layer is shown unless its document says otherwise. Layers that nothing on the pages belongs to are left
// out.
bool PdfMergeInput::CopyLayers(PdfMergeWriter& writer, PdfMergedLayers& merged) {
    PdfDictionary properties;
    PdfDictionary usual;
    std::string usualText;
    std::vector<PdfReference> all;
    std::vector<PdfReference> hidden;
    std::vector<PdfReference> shown;
    if (!ReadDictionary(m_layers, properties) || !ReadLayerList(properties.Find("OCGs"), all) ||
        !m_source.Resolve(properties.Find("D"), usualText) || !ReadDictionary(usualText, usual) ||
        !ReadLayerList(usual.Find("OFF"), hidden) || !ReadLayerList(usual.Find("ON"), shown))
        return false;
    if (usual.Find("BaseState") == "/OFF") {
        hidden.clear();
        const auto isShown = [&](const PdfReference& layer) {
            return std::any_of(shown.begin(), shown.end(),
                               [&](const PdfReference& one) { return one.number == layer.number; });
        };
        std::copy_if(all.begin(), all.end(), std::back_inserter(hidden),
                     [&](const PdfReference& layer) { return !isShown(layer); });
    }
    AppendKnown(all, merged.all);
    AppendKnown(hidden, merged.hidden);
    return CopyAutomaticStates(writer, usual.Find("AS"), merged.automatic);
}

// Nothing, or an array of references, in its place or elsewhere.
bool PdfMergeInput::ReadLayerList(std::string_view value, std::vector<PdfReference>& layers) {
    std::string text;
    layers.clear();
    return value.empty() || (m_source.Resolve(value, text) && ReadPdfReferences(text, layers));
}

void PdfMergeInput::AppendKnown(const std::vector<PdfReference>& layers, std::string& text) const {
    for (const PdfReference& layer : layers) {
        const bool isThere = layer.number < static_cast<long long>(m_newNumbers.size());
        const std::uint32_t number = isThere ? m_newNumbers[static_cast<std::size_t>(layer.number)] : 0;
        if (number != 0) text += std::to_string(number) + " 0 R ";
    }
}

bool PdfMergeInput::CopyAutomaticStates(PdfMergeWriter& writer, std::string_view value, std::string& text) {
    std::string states;
    PdfReferenceScan scan;
    if (value.empty()) return true;
    if (!m_source.Resolve(value, states)) return false;
    states += ' ';  // ends the last word
    if (scan.Read(states) != PdfRead::kDone || scan.Value().front() != '[') return false;
    PdfSourceObject object;
    object.value = scan.Value();
    object.references = scan.References();
    std::string copied;
    if (!AppendRenumbered(writer, object, 0, copied)) return false;
    text += copied.substr(1, copied.size() - 2);
    return true;
}

}  // namespace quirepress
