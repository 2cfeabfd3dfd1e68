#include "documents/pdf_form_fields.h"

#include <algorithm>
#include <array>
#include <qpdf/QPDFAnnotationObjectHelper.hh>
#include <qpdf/QPDFFormFieldObjectHelper.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <set>
#include <string_view>

#include "base/format.h"
#include "base/text.h"

namespace quirepress {

namespace {

using Handle = QPDFObjectHandle;
using Helper = QPDFFormFieldObjectHelper;

constexpr const char* kOff = "/Off";
// Bits of a field's flags.
constexpr int kMultiline = 1 << 12, kPassword = 1 << 13, kPushButton = 1 << 16;
constexpr int kCombo = 1 << 17, kEditable = 1 << 18, kComb = 1 << 24;

int FlagsOf(const Handle& field) {
    return Helper(field).getFlags();
}

// What stands in a message for a field.
std::string Shown(const FormData::Field& data) {
    constexpr std::size_t kLongest = 100;
    return "the field \"" + ToPrintableLine(CutToSize(data.name, kLongest)) + "\"";
}

// "form1[0].#subform[0].row[1].name[0]" is "form1.row[1].name" in a tree of data.
std::string TreeNameOf(std::string_view name) {
    std::string tree;
    for (std::string_view part : SplitAt(name, '.')) {
        if (StartsWith(part, "#")) continue;
        if (EndsWith(part, "[0]")) part.remove_suffix(3);
        tree += (tree.empty() ? "" : ".") + std::string(part);
    }
    return tree;
}

// A choice as data name it, and as it is shown.
struct Choice {
    std::string value;
    std::string shown;
};

std::vector<Choice> ChoicesOf(const Handle& field) {
    std::vector<Choice> choices;
    Handle options = Helper(field).getInheritableFieldValue("/Opt");
    const int count = options.isArray() ? options.getArrayNItems() : 0;
    for (int i = 0; i < count; ++i) {
        Handle option = options.getArrayItem(i);
        const bool isPair = option.isArray() && option.getArrayNItems() == 2;
        Handle value = isPair ? option.getArrayItem(0) : option;
        Handle shown = isPair ? option.getArrayItem(1) : option;
        choices.push_back(
            {value.isString() ? value.getUTF8Value() : "", shown.isString() ? shown.getUTF8Value() : ""});
    }
    return choices;
}

const Choice* FindChoice(const std::vector<Choice>& choices, const std::string& value) {
    const auto has = [&](std::string Choice::*text) {
        return std::find_if(choices.begin(), choices.end(),
                            [&](const Choice& choice) { return choice.*text == value; });
    };
    auto found = has(&Choice::value);
    if (found == choices.end()) found = has(&Choice::shown);
    return found == choices.end() ? nullptr : &*found;
}

// The name of a box's state when it is on; empty when it looks like nothing.
std::string OnState(Handle widget) {
    Handle looks = widget.getKey("/AP");
    Handle states = looks.isDictionary() ? looks.getKey("/N") : Handle::newNull();
    if (states.isDictionary())
        for (const std::string& state : states.getKeys())
            if (state != kOff) return state;
    return "";
}

bool IsOneOf(const std::string& value, std::initializer_list<std::string_view> words) {
    return std::find(words.begin(), words.end(), ToLowerAscii(value)) != words.end();
}

}  // namespace

PdfFormFields::PdfFormFields(QPDF& pdf) : m_pdf(pdf), m_form(pdf) {
    constexpr int kDeepest = 100;
    for (QPDFPageObjectHelper& page : QPDFPageDocumentHelper(pdf).getAllPages()) {
        for (QPDFAnnotationObjectHelper& widget : m_form.getWidgetAnnotationsForPage(page)) {
            Handle holder = m_form.getFieldForAnnotation(widget).getObjectHandle();
            if (!holder.isDictionary()) continue;
            const std::string name = Helper(holder).getFullyQualifiedName();
            for (int i = 0; i < kDeepest && !holder.hasKey("/T") && holder.getKey("/Parent").isDictionary();
                 ++i)
                holder = holder.getKey("/Parent");
            Field& field = m_fields[name];
            field.holder = holder;
            field.widgets.push_back(widget.getObjectHandle());
            m_treeNames.emplace(TreeNameOf(name), name);
        }
    }
}

PdfFormFields::Setting PdfFormFields::Set(const FormData::Field& data, bool isTree, std::string& flaw) {
    auto found = m_fields.find(data.name);
    if (found == m_fields.end() && isTree) {
        const auto name = m_treeNames.find(data.name);
        if (name != m_treeNames.end()) found = m_fields.find(name->second);
    }
    if (found == m_fields.end()) return Setting::kUnknown;
    Field& field = found->second;
    const std::string type = Helper(field.holder).getFieldType();
    if (type == "/Btn" && (FlagsOf(field.holder) & kPushButton) != 0) return Setting::kDone;  // it has none
    bool isDone = false;
    if (type == "/Tx")
        isDone = SetText(field, data, flaw);
    else if (type == "/Ch")
        isDone = SetChoices(field, data, flaw);
    else if (type == "/Btn")
        isDone = SetButton(field, data, flaw);
    else
        return Setting::kUnknown;  // signatures are not data
    field.isSet = field.isSet || isDone;
    return isDone ? Setting::kDone : Setting::kRefused;
}

void PdfFormFields::SetValue(Field& field, const Handle& value) {
    for (Handle widget : field.widgets) widget.removeKey("/V");
    field.holder.replaceKey("/V", value);
}

bool PdfFormFields::SetText(Field& field, const FormData::Field& data, std::string& flaw) {
    const std::string text = data.values.empty() ? "" : data.values[0];
    Handle most = Helper(field.holder).getInheritableFieldValue("/MaxLen");
    const long long limit = most.isInteger() ? most.getIntValue() : 0;
    if (!IsValidUtf8(text)) flaw = "the text for " + Shown(data) + " is not encoded as it says";
    if (limit > 0 && CountCharacters(text) > static_cast<std::size_t>(limit))
        flaw = Format("the text for %s is longer than its %d characters", Shown(data), limit);
    if (!flaw.empty()) return false;
    SetValue(field, Handle::newUnicodeString(text));
    return true;
}

bool PdfFormFields::SetChoices(Field& field, const FormData::Field& data, std::string& flaw) {
    const std::vector<Choice> choices = ChoicesOf(field.holder);
    Handle chosen = Handle::newArray();
    for (const std::string& value : data.values) {
        const Choice* const choice = FindChoice(choices, value);
        const bool isFree = value.empty() || (FlagsOf(field.holder) & kEditable) != 0;
        if (choice == nullptr && !isFree) {
            flaw = Shown(data) + " has no choice \"" + ToPrintableLine(value) + "\"";
            return false;
        }
        chosen.appendItem(Handle::newUnicodeString(choice != nullptr ? choice->value : value));
    }
    SetValue(field, chosen.getArrayNItems() == 1 ? chosen.getArrayItem(0) : chosen);
    field.holder.removeKey("/I");
    return true;
}

// Check boxes, and buttons of which one is on.
bool PdfFormFields::SetButton(Field& field, const FormData::Field& data, std::string& flaw) {
    const std::string value = data.values.empty() ? "" : data.values[0];
    const std::vector<Choice> choices = ChoicesOf(field.holder);
    const bool isOff = value.empty() || "/" + value == kOff;
    std::vector<std::string> states;
    std::string on;
    for (std::size_t i = 0; i < field.widgets.size(); ++i) {
        Handle widget = field.widgets[i];
        if (OnState(widget).empty()) DrawCheckMark(m_pdf, widget, "/Yes");
        states.push_back(OnState(widget));
        const bool isNamed = i < choices.size() && choices[i].value == value;
        if (!isOff && on.empty() && (states[i] == "/" + value || isNamed)) on = states[i];
    }
    const bool isSingle = std::set<std::string>(states.begin(), states.end()).size() == 1;
    if (on.empty() && isSingle && IsOneOf(value, {"yes", "on", "true", "1"})) on = states[0];
    if (on.empty() && !isOff && !IsOneOf(value, {"no", "false", "0"})) {
        flaw = Shown(data) + " has no choice \"" + ToPrintableLine(value) + "\"";
        return false;
    }
    SetValue(field, Handle::newName(on.empty() ? kOff : on));
    for (std::size_t i = 0; i < field.widgets.size(); ++i)
        field.widgets[i].replaceKey("/AS",
                                    Handle::newName(states[i] == on && !on.empty() ? states[i] : kOff));
    return true;
}

bool PdfFormFields::Draw(std::string& flaw) {
    const bool isAll = m_form.getNeedAppearances();
    for (auto& [name, field] : m_fields) {
        if (!field.isSet && !isAll) continue;
        const FormTextResult result = DrawField(field);
        if (result == FormTextResult::kNoCharacters)
            flaw = Shown({name, {}}) +
                   " has characters that can't be drawn: only those of Western European " + "languages can";
        if (result == FormTextResult::kNoRoom)
            flaw = "the text for " + Shown({name, {}}) + " has no room in it";
        if (result != FormTextResult::kDrawn) return false;
        for (Handle widget : field.widgets) {
            const int flags = QPDFAnnotationObjectHelper(widget).getFlags();
            if (IsPrinted(field, widget)) widget.replaceKey("/F", Handle::newInteger(flags | an_print));
        }
    }
    m_form.setNeedAppearances(false);
    return true;
}

FormTextResult PdfFormFields::DrawField(Field& field) {
    const std::string type = Helper(field.holder).getFieldType();
    FormTextResult result = FormTextResult::kDrawn;
    if (type != "/Tx" && type != "/Ch") return result;
    FormText text = TextOf(field);
    const bool isMasked = text.mayBeCut;
    for (const Handle& widget : field.widgets) {
        text.mayBeCut = isMasked || !IsPrinted(field, widget);
        result = DrawFormText(m_pdf, widget, text, StyleOf(widget));
        if (result != FormTextResult::kDrawn) break;
    }
    return result;
}

bool PdfFormFields::IsPrinted(const Field& field, const Handle& widget) {
    const int flags = QPDFAnnotationObjectHelper(widget).getFlags();
    return (flags & (an_invisible | an_hidden)) == 0 && (field.isSet || (flags & an_print) != 0);
}

FormText PdfFormFields::TextOf(Field& field) {
    Helper helper(field.holder);
    const int flags = FlagsOf(field.holder);
    FormText text;
    if (helper.getFieldType() == "/Tx") {
        text.text = helper.getValueAsString();
        text.isMultiline = (flags & kMultiline) != 0;
        text.mayBeCut = (flags & kPassword) != 0;  // stars tell nothing
        if (text.mayBeCut) text.text.assign(CountCharacters(text.text), '*');
        Handle most = helper.getInheritableFieldValue("/MaxLen");
        const bool isComb = (flags & (kComb | kMultiline | kPassword)) == kComb && most.isInteger();
        text.cells = isComb ? std::max(0, most.getIntValueAsInt()) : 0;
        return text;
    }
    std::vector<std::string> values;
    Handle value = helper.getValue();
    if (value.isString()) values.push_back(value.getUTF8Value());
    for (int i = 0; value.isArray() && i < value.getArrayNItems(); ++i)
        if (value.getArrayItem(i).isString()) values.push_back(value.getArrayItem(i).getUTF8Value());
    const std::vector<Choice> choices = ChoicesOf(field.holder);
    if ((flags & kCombo) != 0) {
        const Choice* const choice = values.empty() ? nullptr : FindChoice(choices, values[0]);
        text.text = choice != nullptr ? choice->shown : values.empty() ? "" : values[0];
        return text;
    }
    for (const Choice& choice : choices) {
        text.text += (text.chosenLines.empty() ? "" : "\n") + choice.shown;
        text.chosenLines.push_back(std::find(values.begin(), values.end(), choice.value) != values.end());
    }
    return text;
}

FormTextStyle PdfFormFields::StyleOf(const Handle& widget) {
    Helper helper(m_form.getFieldForAnnotation(QPDFAnnotationObjectHelper(widget)));
    FormTextStyle style;
    style.appearance = helper.getDefaultAppearance();
    style.alignment = helper.getQuadding();
    Handle resources = helper.getDefaultResources();
    if (resources.isDictionary()) style.fonts = resources.getKey("/Font");
    return style;
}

}  // namespace quirepress
