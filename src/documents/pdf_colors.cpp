#include "documents/pdf_colors.h"

#include <qpdf/QPDF.hh>
#include <stdexcept>

#include "documents/pdf_content_color.h"
#include "documents/qpdf_file.h"

namespace quirepress {
namespace {

using Handle = QPDFObjectHandle;

constexpr int kMostAnnotations = 10'000;
constexpr long long kHidden = 2;
constexpr long long kPrinted = 4;

// The appearance that is shown: of several, that of the annotation's state.
Handle ShownAppearance(Handle annotation) {
    Handle normal = annotation.getKey("/AP").getKeyIfDict("/N");
    Handle state = annotation.getKey("/AS");
    if (normal.isDictionary() && state.isName()) return normal.getKey(state.getName());
    return normal;
}

// What a viewer might draw for an annotation that brings no appearance.
bool MayBeDrawn(Handle annotation) {
    if (annotation.getKey("/Subtype").isNameAndEquals("/Popup")) return false;
    for (const char* key : {"/C", "/IC", "/DA", "/MK"})
        if (!annotation.getKey(key).isNull()) return true;
    return false;
}

PageColor JudgeAnnotation(PdfContentColor& content, Handle annotation) {
    if (!annotation.isDictionary()) return PageColor::kMono;
    Handle flags = annotation.getKey("/F");
    const long long bits = flags.isInteger() ? flags.getIntValue() : 0;
    if ((bits & kPrinted) == 0 || (bits & kHidden) != 0) return PageColor::kMono;
    Handle appearance = ShownAppearance(annotation);
    if (appearance.isStream()) return content.JudgeAppearance(appearance);
    return MayBeDrawn(annotation) ? PageColor::kUndecided : PageColor::kMono;
}

PageColor JudgeWholePage(PdfContentColor& content, Handle page) {
    PageColor color = content.JudgePage(page);
    Handle annotations = page.getKey("/Annots");
    const int count = annotations.isArray() ? annotations.getArrayNItems() : 0;
    if (count > kMostAnnotations) return Both(color, PageColor::kUndecided);
    for (int i = 0; i < count && color != PageColor::kColor; ++i)
        color = Both(color, JudgeAnnotation(content, annotations.getArrayItem(i)));
    return color;
}

// Whatever is wrong with a page costs that page.
PageColor JudgeSafely(PdfContentColor& content, const Handle& page, const std::function<bool()>& isTimeUp) {
    try {
        return isTimeUp() ? PageColor::kUndecided : JudgeWholePage(content, page);
    } catch (const std::exception&) {
        return PageColor::kUndecided;
    }
}

}  // namespace

PdfResult InspectPdfColors(InputFile& file, std::string_view password, const GreyRule& rule,
                           const std::function<bool()>& isTimeUp, std::vector<PageColor>& pages) {
    try {
        const std::unique_ptr<QPDF> pdf = OpenQpdf(file, password);
        PdfContentColor content(rule, isTimeUp);
        std::vector<PageColor> colors;
        for (const Handle& page : pdf->getAllPages()) colors.push_back(JudgeSafely(content, page, isTimeUp));
        if (colors.empty()) return PdfResult::kUnreadable;
        pages = std::move(colors);
        return PdfResult::kDone;
    } catch (const std::exception& error) {
        return ResultOf(error);
    }
}

}  // namespace quirepress
