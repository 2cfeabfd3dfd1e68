#include <algorithm>
#include <qpdf/QPDF.hh>
#include <stdexcept>

#include "base/text.h"
#include "documents/form_data.h"
#include "documents/qpdf_file.h"
#include "platform/files.h"

namespace quirepress {

namespace {

using Handle = QPDFObjectHandle;

// An end as it has to have; a file that was cut off could else pass for one with fewer fields.
bool HasEnd(InputFile& file) {
    char bytes[1024];
    const std::int64_t offset = std::max<std::int64_t>(0, file.Size() - std::int64_t{sizeof bytes});
    const std::int64_t size = file.ReadAt(offset, bytes, sizeof bytes);
    return size > 0 && Contains(std::string_view(bytes, static_cast<std::size_t>(size)), "%%EOF");
}

class FdfReader {
public:
    explicit FdfReader(FormData& data) : m_data(data) {}

    // What is wrong; empty: nothing.
    std::string Read(QPDF& fdf) {
        Handle content = fdf.getRoot().getKey("/FDF");
        if (!content.isDictionary()) return "the forms data have no content";
        Handle encoding = content.getKey("/Encoding");
        m_isUtf8 = encoding.isName() && ToLowerAscii(encoding.getName()) == "/utf_8";
        if (encoding.isName() && !m_isUtf8 && encoding.getName() != "/PDFDocEncoding")
            return "the texts of the forms data are encoded in a way that is not known: " +
                   encoding.getName().substr(1);
        m_data.form = FormOf(content.getKey("/F"));
        AddFields(content.getKey("/Fields"), "", 0);
        return m_flaw;
    }

private:
    std::string TextOf(Handle string) const {
        const std::string bytes = string.getStringValue();
        return m_isUtf8 && IsValidUtf8(bytes) ? bytes : string.getUTF8Value();
    }

    std::string FormOf(Handle form) const {
        for (const char* key : {"/UF", "/F"}) {
            if (form.isString()) break;
            if (form.isDictionary() && form.getKey(key).isString()) form = form.getKey(key);
        }
        return form.isString() ? TextOf(form) : "";
    }

    void AddFields(Handle fields, const std::string& parent, int depth) {
        if (depth > kDeepestFormField) m_flaw = "the forms data are nested too deeply";
        const int count = fields.isArray() ? fields.getArrayNItems() : 0;
        for (int i = 0; i < count && m_flaw.empty(); ++i) AddField(fields.getArrayItem(i), parent, depth);
    }

    void AddField(Handle field, const std::string& parent, int depth) {
        if (!field.isDictionary()) return;
        std::string name = parent;
        Handle part = field.getKey("/T");
        if (part.isString()) name += (parent.empty() ? "" : ".") + TextOf(part);
        if (++m_seen > kMostFormFields) m_flaw = "the forms data have too many fields";
        AddFields(field.getKey("/Kids"), name, depth + 1);
        if (!field.hasKey("/V")) return;
        m_data.fields.push_back({name, {}});
        AddValues(field.getKey("/V"), m_data.fields.back().values);
    }

    void AddValues(Handle value, std::vector<std::string>& values) const {
        if (value.isString())
            values.push_back(TextOf(value));
        else if (value.isName())
            values.push_back(value.getName().substr(1));
        else if (value.isStream())
            values.push_back(ReadStreamStart(value, qpdf_dl_generalized, kMostText));
        for (int i = 0; value.isArray() && i < value.getArrayNItems(); ++i)
            if (!value.getArrayItem(i).isArray()) AddValues(value.getArrayItem(i), values);
    }

    static constexpr std::size_t kMostText = std::size_t{1} << 20;

    FormData& m_data;
    bool m_isUtf8 = false;
    std::size_t m_seen = 0;
    std::string m_flaw;
};

}  // namespace

bool ReadFdfFormData(InputFile& file, FormData& data, std::string& flaw) {
    flaw = "the forms data are damaged";
    if (!HasEnd(file)) return false;
    try {
        // Such a file has no cross references: the library finds its objects as it does in a damaged PDF.
        const std::unique_ptr<QPDF> fdf = OpenQpdf(file, "");
        fdf->getWarnings();
        const std::string found = FdfReader(data).Read(*fdf);
        if (found.empty() && !fdf->getWarnings().empty()) return false;
        flaw = found;
        return found.empty();
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace quirepress
