#pragma once

#include <map>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFAcroFormDocumentHelper.hh>
#include <string>
#include <vector>

#include "documents/form_data.h"
#include "documents/pdf_form_appearance.h"

namespace quirepress {

// The fields of an open form, by their full names. Throws what the library throws.
class PdfFormFields {
public:
    explicit PdfFormFields(QPDF& pdf);

    bool IsEmpty() const { return m_fields.empty(); }

    enum class Setting { kDone, kUnknown, kRefused };
    // kRefused, with `flaw`, when the field can't have such a value.
    Setting Set(const FormData::Field& data, bool isTree, std::string& flaw);

    // Makes what was set visible; where the form asks for it, all that is in its fields. False with `flaw`
    // when a text can't be drawn whole.
    bool Draw(std::string& flaw);

private:
    // One or more places on the pages with one value.
    struct Field {
        QPDFObjectHandle holder;  // of the value
        std::vector<QPDFObjectHandle> widgets;
        bool isSet = false;
    };

    void SetValue(Field& field, const QPDFObjectHandle& value);
    bool SetText(Field& field, const FormData::Field& data, std::string& flaw);
    bool SetChoices(Field& field, const FormData::Field& data, std::string& flaw);
    bool SetButton(Field& field, const FormData::Field& data, std::string& flaw);
    FormTextResult DrawField(Field& field);
    static bool IsPrinted(const Field& field, const QPDFObjectHandle& widget);
    FormText TextOf(Field& field);
    FormTextStyle StyleOf(const QPDFObjectHandle& widget);

    QPDF& m_pdf;
    QPDFAcroFormDocumentHelper m_form;
    std::map<std::string, Field> m_fields;
    std::map<std::string, std::string> m_treeNames;  // to the full name
};

}  // namespace quirepress
