#include "documents/pdf_form_fonts.h"

#include <algorithm>
#include <cstdint>
#include <qpdf/QPDFObjectHandle.hh>

#include "base/code_page.h"
#include "base/text.h"

namespace quirepress {

namespace {

using Handle = QPDFObjectHandle;

constexpr int kFirstChar = 32;
constexpr double kCourierWidth = 600;

using AsciiWidths = std::array<std::uint16_t, 95>;  // from kFirstChar on

constexpr AsciiWidths kHelvetica = {
    278, 278, 355, 556, 556, 889, 667, 191, 333, 333, 389, 584, 278, 333,  278, 278, 556, 556, 556,
    556, 556, 556, 556, 556, 556, 556, 278, 278, 584, 584, 584, 556, 1015, 667, 667, 722, 722, 667,
    611, 778, 722, 278, 500, 667, 556, 833, 722, 778, 667, 778, 722, 667,  611, 722, 667, 944, 667,
    667, 611, 278, 278, 278, 469, 556, 333, 556, 556, 500, 556, 556, 278,  556, 556, 222, 222, 500,
    222, 833, 556, 556, 556, 556, 333, 500, 278, 556, 500, 722, 500, 500,  500, 334, 260, 334, 584};
constexpr AsciiWidths kHelveticaBold = {
    278, 333, 474, 556, 556, 889, 722, 238, 333, 333, 389, 584, 278, 333, 278, 278, 556, 556, 556,
    556, 556, 556, 556, 556, 556, 556, 333, 333, 584, 584, 584, 611, 975, 722, 722, 722, 722, 667,
    611, 778, 722, 278, 556, 722, 611, 833, 722, 778, 667, 778, 722, 667, 611, 722, 667, 944, 667,
    667, 611, 333, 278, 333, 584, 556, 333, 556, 611, 556, 611, 556, 333, 611, 611, 278, 278, 556,
    278, 889, 611, 611, 611, 611, 389, 556, 333, 611, 556, 778, 556, 556, 500, 389, 280, 389, 584};
constexpr AsciiWidths kTimes = {
    250, 333, 408, 500, 500, 833, 778, 180, 333, 333, 500, 564, 250, 333, 250, 278, 500, 500, 500,
    500, 500, 500, 500, 500, 500, 500, 278, 278, 564, 564, 564, 444, 921, 722, 667, 667, 722, 611,
    556, 722, 722, 333, 389, 722, 611, 889, 722, 722, 556, 722, 667, 556, 611, 722, 722, 944, 722,
    722, 611, 333, 278, 333, 469, 500, 333, 444, 500, 444, 500, 444, 333, 500, 500, 278, 278, 500,
    278, 778, 500, 500, 500, 500, 333, 389, 278, 500, 500, 722, 500, 500, 444, 480, 200, 480, 541};
// Characters of about the same width as those from 128 on: letters with accents are as wide as without.
constexpr std::string_view kAlike =
    "0 i0(@00(@S(@ Z  ii((\"0@(@s(W zY !0000|0(G\"0+-G(*+(((u0.((\"0mmm?"
    "AAAAAA@CEEEEIIIIDNOOOOO+OUUUUYPnaaaaaamceeeeiiiionooooo+ouuuuypy";
static_assert(kAlike.size() == 128);

struct Family {
    std::string_view baseFont;
    const AsciiWidths* widths;  // null: all the same
};

Family FamilyOf(std::string_view baseFont) {
    const std::string name = ToLowerAscii(baseFont);
    const bool isBold = Contains(name, "bold");
    if (Contains(name, "cour") || Contains(name, "mono"))
        return {isBold ? "/Courier-Bold" : "/Courier", nullptr};
    if (Contains(name, "times") || Contains(name, "serif") || Contains(name, "roman"))
        return {isBold ? "/Times-Bold" : "/Times-Roman", &kTimes};
    return {isBold ? "/Helvetica-Bold" : "/Helvetica", isBold ? &kHelveticaBold : &kHelvetica};
}

double WidthIn(const Family& family, int code) {
    if (family.widths == nullptr) return kCourierWidth;
    const int alike = code < 128 ? code : kAlike[static_cast<std::size_t>(code) - 128];
    const int index = alike - kFirstChar;
    return index >= 0 && index < static_cast<int>(family.widths->size())
               ? (*family.widths)[static_cast<std::size_t>(index)]
               : 0;
}

std::string BaseFontOf(const Handle& font) {
    Handle dictionary = font;
    Handle name = dictionary.isDictionary() ? dictionary.getKey("/BaseFont") : Handle::newNull();
    return name.isName() ? name.getName() : "";
}

bool IsAscii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 128; });
}

// Whether the font's codes are those of Windows-1252; for ASCII those of any Latin encoding will do.
bool HasEncodingFor(Handle font, std::string_view bytes) {
    Handle encoding = font.getKey("/Encoding");
    return IsAscii(bytes) || encoding.isNameAndEquals("/WinAnsiEncoding");
}

bool TakeWidths(Handle font, FormFont& taken) {
    Handle widths = font.getKey("/Widths");
    Handle first = font.getKey("/FirstChar");
    taken.widths.fill(0);
    if (!widths.isArray() || !first.isInteger()) return false;
    Handle list = widths;
    const long long start = Handle(first).getIntValue();
    for (int i = 0; i < list.getArrayNItems(); ++i) {
        const long long code = start + i;
        Handle width = list.getArrayItem(i);
        if (code >= 0 && code < 256 && width.isNumber())
            taken.widths[static_cast<std::size_t>(code)] = width.getNumericValue();
    }
    return true;
}

bool TakeOwn(Handle own, std::string_view bytes, FormFont& font) {
    if (!own.isDictionary()) return false;
    Handle subtype = own.getKey("/Subtype");
    const bool isSimple = subtype.isNameAndEquals("/Type1") || subtype.isNameAndEquals("/TrueType") ||
                          subtype.isNameAndEquals("/MMType1");
    if (!isSimple || !HasEncodingFor(own, bytes) || !TakeWidths(own, font)) return false;
    font.dictionary = own;
    return std::all_of(bytes.begin(), bytes.end(),
                       [&](char c) { return c == '\n' || font.widths[static_cast<unsigned char>(c)] > 0; });
}

}  // namespace

bool ChooseFormFont(const Handle& own, std::string_view text, FormFont& font, std::string& bytes) {
    if (!EncodeText(text, Windows1252(), bytes)) return false;
    if (TakeOwn(own, bytes, font)) return true;
    const Family family = FamilyOf(BaseFontOf(own));
    for (int code = 0; code < 256; ++code)
        font.widths[static_cast<std::size_t>(code)] = WidthIn(family, code);
    font.dictionary = Handle::newDictionary({{"/Type", Handle::newName("/Font")},
                                             {"/Subtype", Handle::newName("/Type1")},
                                             {"/BaseFont", Handle::newName(std::string(family.baseFont))},
                                             {"/Encoding", Handle::newName("/WinAnsiEncoding")}});
    return true;
}

double WidthOf(const FormFont& font, std::string_view bytes) {
    double width = 0;
    for (const char c : bytes) width += font.widths[static_cast<unsigned char>(c)];
    return width / 1000;
}

}  // namespace quirepress
