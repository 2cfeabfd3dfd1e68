#include "documents/pdf_forms.h"

#include <map>
#include <memory>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFAcroFormDocumentHelper.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <stdexcept>

#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "documents/form_data.h"
#include "documents/form_place.h"
#include "documents/pdf_form_fields.h"
#include "documents/qpdf_file.h"
#include "platform/files.h"

namespace quirepress {

namespace {

constexpr std::size_t kMostUnknownFields = 100;  // that are told
constexpr std::size_t kLongestName = 200;        // of them

// The library reads from it as long as the document lives.
class BytesFile : public InputFile {
public:
    explicit BytesFile(const std::string& bytes) : m_bytes(bytes) {}
    std::int64_t ReadAt(std::int64_t offset, void* buffer, std::size_t size) override {
        if (offset < 0 || offset >= Size()) return 0;
        return static_cast<std::int64_t>(
            m_bytes.copy(static_cast<char*>(buffer), size, static_cast<std::size_t>(offset)));
    }
    std::int64_t Size() override { return static_cast<std::int64_t>(m_bytes.size()); }

private:
    const std::string& m_bytes;
};

class FormFiller {
public:
    FormFiller(Files& files, FormFilling& filling) : m_files(files), m_filling(filling) {}

    PdfResult Fill(std::string_view dataPath, std::string_view password, std::string_view target) {
        FormData data;
        if (!ReadFormData(m_files, dataPath, data, m_filling.flaw)) return PdfResult::kUnreadable;
        m_filling.form = data.form;
        const std::unique_ptr<InputFile> file = OpenForm(dataPath, data);
        if (!file) return PdfResult::kUnreadable;
        try {
            const std::unique_ptr<QPDF> form = OpenQpdf(*file, password);
            return FillOpenForm(*form, data, target);
        } catch (const std::exception& error) {
            return Fail(ResultOf(error));
        }
    }

private:
    // What stands in a sentence for the form.
    std::string Form() const {
        return m_filling.form.empty() ? "the form in the forms data"
                                      : "the form \"" + ToPrintableLine(m_filling.form) + "\"";
    }

    PdfResult Fail(PdfResult result) {
        m_filling.flaw = Form() + ": " + DescribePdfResult(result);
        return result;
    }

    std::unique_ptr<InputFile> OpenForm(std::string_view dataPath, const FormData& data) {
        if (!data.embeddedForm.empty()) return std::make_unique<BytesFile>(data.embeddedForm);
        std::string path;
        if (!FindForm(m_files, dataPath, data.form, path, m_filling.flaw)) return nullptr;
        FileResult result = FileResult::kDone;
        std::unique_ptr<InputFile> file = m_files.OpenForReading(path, result);
        if (!file) m_filling.flaw = Form() + " can't be read: " + DescribeFileResult(result);
        return file;
    }

    PdfResult FillOpenForm(QPDF& pdf, const FormData& data, std::string_view target) {
        PdfFormFields fields(pdf);
        if (fields.IsEmpty()) {
            m_filling.flaw = Form() + " has no fields to be filled";
            return PdfResult::kUnreadable;
        }
        if (!SetFields(fields, data)) return PdfResult::kUnreadable;
        if (!fields.Draw(m_filling.flaw)) return PdfResult::kUnreadable;
        QPDFPageDocumentHelper document(pdf);
        const std::size_t pages = document.getAllPages().size();
        document.flattenAnnotations(an_print);
        const PdfResult written = WriteQpdf(m_files, pdf, target);
        if (written != PdfResult::kDone) return Fail(written);
        if (IsWhole(target, pages)) return PdfResult::kDone;
        m_files.Erase(target);
        m_filling.flaw = Form() + " could not be filled: what was written can't be read";
        return PdfResult::kNotWritten;
    }

    bool SetFields(PdfFormFields& fields, const FormData& data) {
        std::size_t unknown = 0;
        for (const FormData::Field& field : data.fields) {
            const PdfFormFields::Setting setting = fields.Set(field, data.isTree, m_filling.flaw);
            if (setting == PdfFormFields::Setting::kRefused) return false;
            if (setting == PdfFormFields::Setting::kDone) continue;
            ++unknown;
            if (m_filling.unknownFields.size() < kMostUnknownFields)
                m_filling.unknownFields.emplace_back(CutToSize(field.name, kLongestName));
        }
        if (data.fields.empty()) {
            m_filling.flaw = "the forms data holds no field";
            return false;
        }
        if (unknown < data.fields.size()) return true;
        m_filling.flaw = Format("%s has none of the %d fields of the forms data", Form(), unknown);
        return false;
    }

    // What came of it is read once more.
    bool IsWhole(std::string_view target, std::size_t pages) {
        FileResult result = FileResult::kDone;
        const std::unique_ptr<InputFile> file = m_files.OpenForReading(target, result);
        if (!file) return false;
        const std::unique_ptr<QPDF> written = OpenQpdf(*file, "");
        return written->getAllPages().size() == pages && written->getWarnings().empty();
    }

    Files& m_files;
    FormFilling& m_filling;
};

}  // namespace

PdfResult FillPdfForm(Files& files, std::string_view data, std::string_view password, std::string_view target,
                      FormFilling& filling) {
    filling = {};
    return FormFiller(files, filling).Fill(data, password, target);
}

}  // namespace quirepress
