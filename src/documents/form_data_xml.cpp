#include <expat.h>

#include <array>
#include <map>
#include <memory>

#include "base/text.h"
#include "documents/form_data.h"
#include "platform/files.h"

namespace quirepress {

namespace {

constexpr std::size_t kDeepest = 256;
constexpr std::size_t kPieceSize = 65'536;

// Whatever is no digit of the encoding is passed over, as line ends are; "=" ends it.
std::string DecodeBase64(std::string_view text) {
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::array<int, 256> values;
    values.fill(-1);
    for (std::size_t i = 0; i < kDigits.size(); ++i)
        values[static_cast<unsigned char>(kDigits[i])] = static_cast<int>(i);
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    unsigned bits = 0;
    int count = 0;
    for (const char c : text) {
        if (c == '=') break;
        const int value = values[static_cast<unsigned char>(c)];
        if (value < 0) continue;
        bits = bits << 6U | static_cast<unsigned>(value);
        count += 6;
        if (count < 8) continue;
        count -= 8;
        bytes += static_cast<char>(bits >> static_cast<unsigned>(count) & 0xFFU);
    }
    return bytes;
}

// XFDF, and XDP, which may hold the data as XFDF or as a tree, and the form.
class XmlFormReader {
public:
    explicit XmlFormReader(FormData& data) : m_data(data), m_parser(XML_ParserCreate(nullptr)) {
        XML_SetUserData(m_parser.get(), this);
        XML_SetElementHandler(m_parser.get(), OnStart, OnEnd);
        XML_SetCharacterDataHandler(m_parser.get(), OnText);
        XML_SetStartDoctypeDeclHandler(m_parser.get(), OnDocumentType);
    }

    bool Read(InputFile& file, std::string& flaw) {
        const std::int64_t size = file.Size();
        for (std::int64_t offset = 0; m_flaw.empty();) {
            void* const buffer = XML_GetBuffer(m_parser.get(), kPieceSize);
            const std::int64_t count = buffer != nullptr ? file.ReadAt(offset, buffer, kPieceSize) : -1;
            if (count < 0) {
                m_flaw = "the forms data can't be read";
                break;
            }
            offset += count;
            const bool isLast = offset >= size || count == 0;
            if (XML_ParseBuffer(m_parser.get(), static_cast<int>(count), isLast) != XML_STATUS_OK) {
                if (m_flaw.empty()) m_flaw = DescribeError();
                break;
            }
            if (isLast) break;
        }
        flaw = m_flaw;
        return m_flaw.empty();
    }

private:
    struct Element {
        std::string name;
        bool hasKids = false;
        std::map<std::string, int> kidCounts;  // of a tree
    };
    struct FreeParser {
        void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
    };

    static void OnStart(void* self, const XML_Char* name, const XML_Char** attributes) {
        static_cast<XmlFormReader*>(self)->Begin(name, attributes);
    }
    static void OnEnd(void* self, const XML_Char*) { static_cast<XmlFormReader*>(self)->End(); }
    static void OnText(void* self, const XML_Char* text, int length) {
        auto& reader = *static_cast<XmlFormReader*>(self);
        if (reader.m_isTextWanted) reader.m_text.append(text, static_cast<std::size_t>(length));
    }
    // Their entities can grow without bounds, or name files.
    static void OnDocumentType(void* self, const XML_Char*, const XML_Char*, const XML_Char*, int) {
        static_cast<XmlFormReader*>(self)->Stop(
            "the forms data have a document type (DTD), which is refused");
    }

    void Begin(std::string_view qualifiedName, const XML_Char** attributes) {
        const std::string name(qualifiedName.substr(qualifiedName.rfind(':') + 1));
        const std::string parent = m_elements.empty() ? "" : m_elements.back().name;
        if (m_elements.empty() && name != "xfdf" && name != "xdp")
            return Stop("this is no XFDF and no XDP file");
        if (m_elements.size() >= kDeepest) return Stop("the forms data are nested too deeply");
        const auto attribute = [&](std::string_view wanted) {
            for (const XML_Char** each = attributes; *each != nullptr; each += 2)
                if (wanted == *each) return std::string(each[1]);
            return std::string();
        };
        if (m_treeDepth > 0)
            BeginTreeNode(name);
        else if (name == "data" && parent == "datasets")
            m_treeDepth = m_elements.size() + 1;
        if ((name == "f" && parent == "xfdf") || (name == "pdf" && parent == "xdp"))
            m_data.form = attribute("href");
        if (m_treeDepth == 0 && name == "field") BeginField(attribute("name"));
        if (HoldsText(name)) {
            m_isTextWanted = true;
            m_text.clear();
        } else if (m_treeDepth == 0 && m_isTextWanted && name == "p" && !m_text.empty()) {
            m_text += '\n';  // of a rich text
        }
        m_elements.push_back({name, false, {}});
    }

    void End() {
        const Element element = m_elements.back();
        m_elements.pop_back();
        const std::string& name = element.name;
        if (m_treeDepth > 0) {
            EndTreeNode(element);
        } else if (name == "field") {
            m_path.pop_back();
            m_isOpenField = false;
        } else if (name == "value" || (name == "value-richtext" && !m_isOpenField)) {
            AddValue();
        } else if (name == "chunk") {
            m_data.embeddedForm = DecodeBase64(m_text);
        }
        if (HoldsText(name) || m_treeDepth > 0) {
            m_isTextWanted = m_treeDepth > 0;
            m_text.clear();
        }
    }

    static bool HoldsText(std::string_view name) {
        return name == "value" || name == "value-richtext" || name == "chunk";
    }

    void BeginField(std::string name) {
        m_path.push_back(std::move(name));
        m_isOpenField = false;
        if (m_path.size() > static_cast<std::size_t>(kDeepestFormField))
            Stop("the forms data are nested too deeply");
    }

    void AddValue() {
        if (m_path.empty()) return;
        if (!m_isOpenField && !AddField()) return;
        m_isOpenField = true;
        m_data.fields.back().values.push_back(m_text);
    }

    void BeginTreeNode(const std::string& name) {
        Element& parent = m_elements.back();
        parent.hasKids = true;
        const int index = parent.kidCounts[name]++;
        m_path.push_back(index == 0 ? name : name + '[' + std::to_string(index) + ']');
        m_isTextWanted = true;
        m_text.clear();
    }

    void EndTreeNode(const Element& element) {
        if (m_elements.size() < m_treeDepth) {
            m_treeDepth = 0;
            m_data.isTree = true;
            return;
        }
        if (!element.hasKids && AddField()) m_data.fields.back().values.push_back(m_text);
        m_path.pop_back();
    }

    bool AddField() {
        if (m_data.fields.size() >= kMostFormFields) {
            Stop("the forms data have too many fields");
            return false;
        }
        FormData::Field field;
        for (const std::string& part : m_path) field.name += (field.name.empty() ? "" : ".") + part;
        m_data.fields.push_back(std::move(field));
        return true;
    }

    void Stop(std::string_view flaw) {
        if (m_flaw.empty()) m_flaw = flaw;
        XML_StopParser(m_parser.get(), XML_FALSE);
        XML_SetElementHandler(m_parser.get(), nullptr, nullptr);
    }

    std::string DescribeError() const {
        return "the forms data are damaged in line " +
               std::to_string(XML_GetCurrentLineNumber(m_parser.get())) + ": " +
               XML_ErrorString(XML_GetErrorCode(m_parser.get()));
    }

    FormData& m_data;
    std::unique_ptr<XML_ParserStruct, FreeParser> m_parser;
    std::vector<Element> m_elements;
    std::vector<std::string> m_path;  // of the field at hand
    std::size_t m_treeDepth = 0;      // of the element that holds a tree; 0: outside
    bool m_isOpenField = false;       // the last of the fields belongs to m_path
    bool m_isTextWanted = false;
    std::string m_text;
    std::string m_flaw;
};

}  // namespace

bool ReadXmlFormData(InputFile& file, FormData& data, std::string& flaw) {
    return XmlFormReader(data).Read(file, flaw);
}

}  // namespace quirepress
