#include "documents/pdf_colors.h"

#include <gtest/gtest.h>

#include <qpdf/Buffer.hh>
#include <qpdf/Pl_Buffer.hh>
#include <qpdf/Pl_DCT.hh>
#include <utility>

#include "base/format.h"
#include "documents/qpdf_library.h"
#include "fakes/memory_file.h"
#include "unit/documents/pdf_samples.h"

namespace quirepress {
namespace {

using Objects = PdfBodies;

std::string Stream(const std::string& keys, const std::string& data) {
    return Format("<< %s /Length %d >>\nstream\n", keys, data.size()) + data + "\nendstream";
}

// A page of `content`; `resources` may name objects from 10 on.
std::string MakePage(const std::string& content, const std::string& resources = "", Objects more = {},
                     const std::string& pageKeys = "") {
    Objects objects = {{1, "<< /Type /Catalog /Pages 2 0 R >>"},
                       {2, "<< /Type /Pages /Count 1 /Kids [ 3 0 R ] /Resources << " + resources + " >> >>"},
                       {3, "<< /Type /Page /Parent 2 0 R /Contents 4 0 R " + pageKeys + " >>"},
                       {4, Stream("", content)}};
    objects.insert(objects.end(), more.begin(), more.end());
    return MakePdfOf(objects, "/Size 50 /Root 1 0 R");
}

// One letter a page: mono, undecided, colour; "-" when it cannot be read.
std::string Judge(const std::string& pdf, double spread = GreyRule().spread, bool isTimeUp = false) {
    MemoryFile file(pdf);
    std::vector<PageColor> pages;
    GreyRule rule;
    rule.spread = spread;
    if (InspectPdfColors(
            file, "", rule, [&] { return isTimeUp; }, pages) != PdfResult::kDone)
        return "-";
    std::string letters;
    for (const PageColor page : pages) letters += "muc"[static_cast<int>(page)];
    return letters;
}

std::string JudgeContent(const std::string& content, const std::string& resources = "", Objects more = {}) {
    return Judge(MakePage(content, resources, std::move(more)));
}

// Each is a page's content, and what it is judged to be.
using Cases = std::vector<std::pair<std::string, std::string>>;

void Check(const Cases& cases, const std::string& resources = "", const Objects& more = {}) {
    for (const auto& [content, verdict] : cases)
        EXPECT_EQ(JudgeContent(content, resources, more), verdict) << content;
}

TEST(PdfColors, DeviceColoursCountWhereTheyPaint) {
    Check({{"", "m"},
           {"0 0 100 100 re f BT (text) Tj ET", "m"},
           {"0.5 g 1 G 0 0 m 9 9 l S", "m"},
           {"0.3 0.3 0.3 rg 0 0 9 9 re f", "m"},
           {"0.30 0.32 0.31 rg 0 0 9 9 re f", "m"},
           {"0.30 0.35 0.31 rg 0 0 9 9 re f", "c"},
           {"1 0 0 RG 0 0 m 9 9 l S", "c"},
           {"0 0 0 0.7 k 0 0 9 9 re f", "m"},
           {"0.2 0 0 0 k 0 0 9 9 re f", "c"},
           {"0.2 0.2 0.2 0 k 0 0 9 9 re f", "u"},
           {"0.7 0.6 0.6 1 k 0 0 9 9 re f", "u"},
           {"1 0 0 rg 0 0 9 9 re n", "m"},
           {"1 0 0 rg 0 0 9 9 re S", "m"},
           {"1 0 0 RG 0 0 9 9 re B*", "c"},
           {"q 1 0 0 rg Q 0 0 9 9 re f", "m"},
           {"Q Q 1 0 0 rg q 0 g 0 0 9 9 re f Q 0 0 9 9 re f", "c"},
           {"1 0 0 rg BT /F 9 Tf (text) Tj ET", "c"},
           {"1 0 0 RG BT /F 9 Tf (text) Tj ET", "m"},
           {"1 0 0 RG BT 1 Tr [(te) -9 (xt)] TJ ET", "c"},
           {"1 0 0 rg (line) '", "c"},
           {"1 0 0 rg 1 2 (line) \"", "c"}});
    EXPECT_EQ(Judge(MakePage("0.30 0.35 0.31 rg 0 0 9 9 re f"), 0.1), "m");
}

TEST(PdfColors, WhatIsNotUnderstoodIsNeverMono) {
    Check({{"1 0 rg 0 0 9 9 re f", "u"},
           {"/a /b 1 rg 0 0 9 9 re f", "u"},
           {"1..0 0 0 rg 0 0 9 9 re f", "u"},
           {"1 0 0 rgf 0 0 9 9 re", "u"},
           {"BX 1 0 0 unknown EX", "m"},
           {"BX EX 1 unknown", "u"},
           {"(text never ends 1 0 0 rg 0 0 9 9 re f", "u"},
           {"<616 1 0 0 rg f", "u"},
           {"[ 1 0 0 rg f", "u"},
           {"] 0 g f", "u"},
           {"{ 0 g f }", "u"},
           {"/No Do", "u"},
           {"/No cs 1 sc f", "u"},
           {"BI /W 4", "u"},
           {"/P gs /Span << /A (x) >> BDC EMC 5 w [1 2] 0 d 0 g f", "m"},
           {"% 1 0 0 rg f\n0 g f", "m"},
           {"(a \\) 1 0 0 rg f) Tj", "m"},
           {"(a (b) c\\\\) Tj 1 0 0 rg f", "c"}});
    EXPECT_EQ(Judge("junk"), "-");
    EXPECT_EQ(Judge(MakePage("0 g f"), 0, true), "u");
    EXPECT_EQ(Judge(Replaced(MakePage("0 g f"), "/Length 5", "/Filter /FlateDecode /Length 5")), "u");
    EXPECT_EQ(Judge(Replaced(MakePage("0 g f"), "/Contents 4 0 R", "/Contents 3 0 R")), "m") << "no stream";
}

TEST(PdfColors, SpacesOfEveryKind) {
    const std::string profile = std::string(16, '\0') + "RGB " + std::string(108, '\0');
    const std::string grayProfile = std::string(16, '\0') + "GRAY" + std::string(108, '\0');
    const Objects objects = {
        {10, Stream("/N 3", profile)},
        {11, Stream("/N 1", grayProfile)},
        {12, Stream("/N 3", std::string(16, '\0') + "Lab " + std::string(108, '\0'))},
        {13, "<< /FunctionType 2 /Domain [0 1] /N 1 /C0 [0 0 0 0] /C1 [0 1 1 0] >>"},
        {14, "<< /FunctionType 2 /Domain [0 1] /N 1 /C0 [0 0 0 0] /C1 [0 0 0 1] >>"},
        {15, Stream("/FunctionType 4 /Domain [0 1] /Range [0 1 0 1 0 1 0 1]", "{ dup dup dup }")}};
    const std::string resources =
        "/ColorSpace << /Icc [/ICCBased 10 0 R] /IccGray [/ICCBased 11 0 R] /IccLab [/ICCBased 12 0 R]"
        " /Cal [/CalRGB << /WhitePoint [1 1 1] >>] /Lab [/Lab << /WhitePoint [1 1 1] >>]"
        " /Palette [/Indexed /DeviceRGB 2 <000000FF0000808080>] /GreyPalette [/Indexed /DeviceRGB 1 "
        "<000000808080>]"
        " /Black [/Separation /Black /DeviceCMYK 13 0 R] /All [/Separation /All /DeviceCMYK 13 0 R]"
        " /Red [/Separation /Red /DeviceCMYK 13 0 R] /Dark [/Separation /Dark /DeviceCMYK 14 0 R]"
        " /Odd [/Separation /Odd /DeviceCMYK 15 0 R] /OnGray [/Separation /Odd /DeviceGray 15 0 R]"
        " /Inks [/DeviceN [/Black /Magenta] /DeviceCMYK 15 0 R]"
        " /Blacks [/DeviceN [/Black /None] /DeviceCMYK 15 0 R]"
        " /Named /Named2 /Named2 /DeviceRGB /Loop /Loop >>";
    Check({{"/Icc cs 0.4 0.4 0.4 sc f", "m"},
           {"/Icc cs 0.4 0.9 0.4 scn f", "c"},
           {"/Icc cs f", "m"},
           {"/IccGray cs 0.4 sc f", "m"},
           {"/IccLab cs 0.4 0.4 0.4 sc f", "u"},
           {"/Cal CS 0.4 0.4 0.4 SC S", "m"},
           {"/Cal CS 0.4 0.4 0 SC S", "c"},
           {"/Lab cs 50 0 0 sc f", "m"},
           {"/Lab cs 50 30 0 sc f", "c"},
           {"/Palette cs 0 sc f", "m"},
           {"/Palette cs 1 sc f", "c"},
           {"/Palette cs 2 sc f", "m"},
           {"/Palette cs 3 sc f", "u"},
           {"/Palette cs -1 sc f", "u"},
           {"/GreyPalette cs 1 sc f", "m"},
           {"/Black cs 0.4 scn f", "m"},
           {"/All CS 1 SCN S", "m"},
           {"/Red cs 0 scn f", "m"},
           {"/Red cs 0.5 scn f", "c"},
           {"/Red cs f", "c"},
           {"/Dark cs 0.5 scn f", "m"},
           {"/Odd cs 0.5 scn f", "u"},
           {"/OnGray cs 0.5 scn f", "m"},
           {"/Inks cs 1 0 scn f", "m"},
           {"/Inks cs 0 1 scn f", "c"},
           {"/Blacks cs 1 1 scn f", "m"},
           {"/Named cs 1 0 0 sc f", "c"},
           {"/Loop cs 1 sc f", "u"},
           {"/DeviceCMYK cs 0 0 0 1 sc f", "m"},
           {"/DeviceRGB cs 0 0 sc f", "u"},
           {"/Black cs 1 0 0 rg 0.4 0.4 0.4 sc f", "m"}},
          resources, objects);
    Check({{"0.4 0.4 0.4 rg f", "u"}, {"1 0 0 rg f", "u"}, {"0.4 g f", "m"}},
          "/ColorSpace << /DefaultRGB [/Lab << >>] /DefaultGray /DeviceGray >>");
}

TEST(PdfColors, ImagesByTheirPixels) {
    const auto image = [](const std::string& keys, const std::string& data) {
        return JudgeContent("/I Do", "/XObject << /I 10 0 R >>",
                            {{10, Stream("/Subtype /Image /Width 2 /Height 2 " + keys, data)}});
    };
    const std::string rgb = "/ColorSpace /DeviceRGB /BitsPerComponent 8";
    EXPECT_EQ(image("/ColorSpace /DeviceGray /BitsPerComponent 8", "abcd"), "m");
    EXPECT_EQ(image(rgb, "aaabbbcccddd"), "m");
    EXPECT_EQ(image(rgb, "aaabbbcccdzd"), "c");
    EXPECT_EQ(image(rgb, std::string("aaabbbcccd\xFF\0", 12)), "c");
    EXPECT_EQ(image(rgb, "aaabbbccc"), "u") << "cut off";
    EXPECT_EQ(image(rgb + " /Decode [1 0 1 0 1 0]", "aaabbbcccddd"), "u");
    EXPECT_EQ(image("/ColorSpace /DeviceRGB /BitsPerComponent 16", "aaaaaabbbbbbccccccdddddd"), "m");
    EXPECT_EQ(image("/ColorSpace /DeviceRGB /BitsPerComponent 1", "\xFC\x1C"), "m");
    EXPECT_EQ(image("/ColorSpace /DeviceRGB /BitsPerComponent 1", "\xFC\x18"), "c");
    EXPECT_EQ(image("/ColorSpace /DeviceRGB /BitsPerComponent 3", "aaabbbcccddd"), "u");
    EXPECT_EQ(
        image("/ColorSpace /DeviceCMYK /BitsPerComponent 8", std::string("\0\0\0a\0\0\0b\0\0\0c\0\0\0d", 16)),
        "m");
    EXPECT_EQ(image("/ColorSpace /DeviceCMYK /BitsPerComponent 8",
                    std::string("\0\0\0a\0\0\0b\0\0\0c\0\xFF\0d", 16)),
              "c");
    const std::string palette = "/ColorSpace [/Indexed /DeviceRGB 2 <000000FF0000808080>] /BitsPerComponent ";
    EXPECT_EQ(image(palette + "8", std::string("\0\2\2\0", 4)), "m");
    EXPECT_EQ(image(palette + "8", std::string("\0\2\1\0", 4)), "c");
    EXPECT_EQ(image(palette + "8", std::string("\0\2\7\0", 4)), "u");
    EXPECT_EQ(image(palette + "2", "\x20\x80"), "m");
    EXPECT_EQ(image(palette + "2", "\x20\x40"), "c");
    EXPECT_EQ(image("/ColorSpace [/Lab << >>] /BitsPerComponent 8", "aaabbbcccddd"), "u");
    EXPECT_EQ(image("/Filter /JPXDecode", "junk"), "u");
    EXPECT_EQ(image("/Filter /JBIG2Decode /BitsPerComponent 1 /ColorSpace /DeviceGray", "junk"), "m");
    EXPECT_EQ(image("/Filter /FlateDecode " + rgb, "junk"), "u");
    EXPECT_EQ(image("/ImageMask true", "\x80\x80"), "m");
    EXPECT_EQ(image(rgb + " /SMask 10 0 R", "aaabbbcccddd"), "m");
    EXPECT_EQ(JudgeContent("1 0 0 rg /I Do", "/XObject << /I 10 0 R >>",
                           {{10, Stream("/Subtype /Image /Width 1 /Height 1 /ImageMask true", "a")}}),
              "c");
    EXPECT_EQ(image("/Width 99999999 /Height 99999999 " + rgb, "aaabbbcccddd"), "u");
}

std::string MakeJpeg(const std::string& pixels, int width, int components) {
    Pl_Buffer target("target");
    Pl_DCT jpeg("jpeg", &target, static_cast<JDIMENSION>(width),
                static_cast<JDIMENSION>(static_cast<int>(pixels.size()) / width / components), components,
                components == 1 ? JCS_GRAYSCALE : JCS_RGB);
    jpeg.write(reinterpret_cast<const unsigned char*>(pixels.data()), pixels.size());
    jpeg.finish();
    const std::shared_ptr<Buffer> buffer = target.getBufferSharedPointer();
    return {reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize()};
}

TEST(PdfColors, JpegImages) {
    std::string grey;
    std::string tinted;
    for (int i = 0; i < 64 * 64; ++i) {
        const char level = static_cast<char>(i % 251);
        grey += std::string(3, level);
        tinted += std::string{level, '\x20', '\x40'};
    }
    const auto image = [](const std::string& keys, const std::string& data) {
        return JudgeContent("/I Do", "/XObject << /I 10 0 R >>",
                            {{10, Stream("/Subtype /Image /Filter /DCTDecode /Width 64 /Height 64 "
                                         "/BitsPerComponent 8 " +
                                             keys,
                                         data)}});
    };
    EXPECT_EQ(image("/ColorSpace /DeviceGray", MakeJpeg(std::string(4096, 'a'), 64, 1)), "m");
    EXPECT_EQ(image("/ColorSpace /DeviceGray", MakeJpeg(tinted, 64, 3)), "u") << "it says otherwise itself";
    EXPECT_EQ(image("/ColorSpace /DeviceRGB", MakeJpeg(grey, 64, 3)), "m");
    EXPECT_EQ(image("/ColorSpace /DeviceRGB", MakeJpeg(tinted, 64, 3)), "c");
    EXPECT_EQ(image("/ColorSpace /DeviceRGB /DecodeParms << /ColorTransform 0 >>", MakeJpeg(grey, 64, 3)),
              "u");
    EXPECT_EQ(image("/ColorSpace /DeviceRGB", MakeJpeg(grey, 64, 3).substr(0, 300)), "u");
    EXPECT_EQ(image("/ColorSpace /DeviceCMYK", "\xFF\xD8\xFF\xC0"), "u");
}

TEST(PdfColors, InlineImages) {
    const std::string data(
        "\x01"
        "EI 1 0 0 rg f\xFF",
        15);
    Check({{"BI /W 15 /H 1 /BPC 8 /CS /G ID " + data + "\nEI 0 g f", "m"},
           {"BI /W 15 /H 1 /BPC 8 /CS /G ID " + data + "\nEI 1 0 0 rg f", "c"},
           {"BI /W 5 /H 1 /BPC 8 /CS /RGB ID " + data + "\nEI", "u"},
           {"BI /W 5 /H 1 /BPC 8 /CS /G ID " + data + "\nEI", "u"},
           {"BI /Width 8 /Height 1 /IM true ID x EI", "m"},
           {"1 0 0 rg BI /Width 8 /Height 1 /IM true ID x EI", "c"},
           {"BI /W 9 /H 9 /IM true /F /CCF ID \x01 EI \x02\x03 EI\n0 g f", "m"},
           {"BI /W 9 /H 9 /IM true /F /CCF ID \x01 EI \x02\x03 EI\n1 0 0 rg f", "c"},
           {"BI /W 9 /H 9 /IM true /F /CCF ID \x01", "u"},
           {"BI /W 1 /H 1 /BPC 8 /CS [/I /RGB 0 <808080>] ID x EI", "m"},
           {"BI /W 1 /H 1 /BPC 8 /CS [/I /RGB 0 <FF8080>] ID x EI", "u"},
           {"BI /W (( ID x EI", "u"}});
}

TEST(PdfColors, FormsPatternsShadingsAndGlyphs) {
    const Objects objects = {
        {10, Stream("/Subtype /Form /Resources << >>", "0 0 9 9 re f")},
        {11, Stream("/Subtype /Form /Resources << /XObject << /Form 10 0 R >> >>", "1 0 0 rg /Form Do")},
        {12, Stream("/Subtype /Form /Resources << /XObject << /Self 12 0 R >> >>", "/Self Do")},
        {13, Stream("/PatternType 1 /PaintType 1 /Resources << >>", "1 0 0 rg f")},
        {14, Stream("/PatternType 1 /PaintType 2 /Resources << >>", "0 0 9 9 re f")},
        {15, "<< /PatternType 2 /Shading 16 0 R >>"},
        {16, "<< /ShadingType 2 /ColorSpace /DeviceRGB /Function 17 0 R >>"},
        {17, "<< /FunctionType 3 /Functions [18 0 R 19 0 R] >>"},
        {18, "<< /FunctionType 2 /N 1 /C0 [0 0 0] /C1 [1 1 1] >>"},
        {19, "<< /FunctionType 2 /N 1 /C0 [0 0 0] /C1 [1 0 1] >>"},
        {20, "<< /ShadingType 2 /ColorSpace /DeviceRGB /Function 18 0 R >>"},
        {21, "<< /ShadingType 2 /ColorSpace /DeviceGray /Function 15 0 R >>"},
        {22, "<< /ShadingType 2 /ColorSpace /DeviceRGB /Function 23 0 R >>"},
        {23, "<< /FunctionType 3 /Functions [23 0 R 23 0 R] >>"},
        {24, "<< /Type /Font /Subtype /Type3 /CharProcs << /a 25 0 R >> /Resources << >> >>"},
        {25, Stream("", "9 0 d0 1 0 0 rg 0 0 9 9 re f")},
        {26, "<< /Type /Font /Subtype /Type3 /CharProcs << /a 27 0 R >> /Resources << >> >>"},
        {27, Stream("", "9 0 0 0 9 9 d1 0 0 9 9 re f")},
        {28, "<< /TR [/Identity /Identity /Identity /Identity] >>"},
        {29, Stream("/Subtype /Form", "/Red cs 1 scn f")}};
    const std::string resources =
        "/XObject << /Form 10 0 R /Outer 11 0 R /Self 12 0 R /Bare 29 0 R >>"
        " /Pattern << /Tiles 13 0 R /Stencil 14 0 R /Blend 15 0 R >>"
        " /Shading << /Colors 16 0 R /Greys 20 0 R /Gray 21 0 R /Loop 22 0 R >>"
        " /Font << /Red 24 0 R /Plain 26 0 R >> /ExtGState << /Tr 28 0 R >>"
        " /ColorSpace << /Uncolored [/Pattern /DeviceRGB] /Red [/Separation /Red /DeviceCMYK 30 0 R] >>";
    Check({{"/Form Do", "m"},
           {"1 0 0 rg /Form Do", "c"},
           {"/Form Do 1 0 0 rg /Form Do", "c"},
           {"/Outer Do", "c"},
           {"/Self Do", "u"},
           {"/Bare Do", "u"},
           {"/Pattern cs /Tiles scn f", "c"},
           {"/Pattern cs /Tiles scn n", "m"},
           {"/Uncolored cs 1 0 0 /Stencil scn f", "c"},
           {"/Uncolored cs 0.3 0.3 0.3 /Stencil scn f", "m"},
           {"/Pattern cs /Stencil scn f", "u"},
           {"/Pattern cs /Blend scn f", "c"},
           {"/Pattern cs /Missing scn f", "u"},
           {"/Colors sh", "c"},
           {"/Greys sh", "m"},
           {"/Gray sh", "m"},
           {"/Loop sh", "u"},
           {"/Missing sh", "u"},
           {"BT /Red 9 Tf (a) Tj ET", "c"},
           {"BT /Red 9 Tf ET", "m"},
           {"BT /Plain 9 Tf (a) Tj 1 0 0 rg ET", "m"},
           {"BT /Plain 9 Tf 1 0 0 rg (a) Tj ET", "c"},
           {"/Tr gs f", "u"}},
          resources, objects);
}

TEST(PdfColors, AnnotationsThatArePrinted) {
    const auto annotation = [](const std::string& keys) {
        return Judge(MakePage("0 g f", "",
                              {{10, Stream("/Subtype /Form /Resources << >>", "1 0 0 rg f")},
                               {11, Stream("/Subtype /Form /Resources << >>", "0 g f")}},
                              "/Annots [ << /Type /Annot " + keys + " >> ]"));
    };
    EXPECT_EQ(annotation("/Subtype /Stamp /F 4 /AP << /N 10 0 R >>"), "c");
    EXPECT_EQ(annotation("/Subtype /Stamp /F 4 /AP << /N 11 0 R >>"), "m");
    EXPECT_EQ(annotation("/Subtype /Widget /F 4 /AS /On /AP << /N << /On 10 0 R /Off 11 0 R >> >>"), "c");
    EXPECT_EQ(annotation("/Subtype /Widget /F 4 /AS /Off /AP << /N << /On 10 0 R /Off 11 0 R >> >>"), "m");
    EXPECT_EQ(annotation("/Subtype /Stamp /F 6 /AP << /N 10 0 R >>"), "m") << "hidden";
    EXPECT_EQ(annotation("/Subtype /Stamp /AP << /N 10 0 R >>"), "m") << "for the screen only";
    EXPECT_EQ(annotation("/Subtype /Link /C [1 0 0]"), "m");
    EXPECT_EQ(annotation("/Subtype /Highlight /F 4 /C [1 1 0]"), "u");
}

TEST(PdfColors, HostilePagesEndInTime) {
    // Forms that each show the next one many times, and have no resources of their own to be known by.
    Objects objects;
    std::string names;
    for (int i = 10; i < 21; ++i) {
        std::string content;
        for (int times = 0; times < 20; ++times) content += Format("/F%d Do ", i + 1);
        objects.emplace_back(i, Stream("/Subtype /Form", content));
        names += Format("/F%d %d 0 R ", i, i);
    }
    objects.emplace_back(21, Stream("/Subtype /Form", "0 g f"));
    const std::string pdf = MakePage("/F10 Do", "/XObject << " + names + "/F21 21 0 R >>", objects);
    MemoryFile file(pdf);
    int looks = 0;
    std::vector<PageColor> pages;
    EXPECT_EQ(InspectPdfColors(
                  file, "", {}, [&] { return ++looks > 20; }, pages),
              PdfResult::kDone);
    EXPECT_EQ(pages, std::vector<PageColor>{PageColor::kUndecided});
    EXPECT_LT(looks, 40);
    // Few bytes that become very many.
    const std::string bomb = Deflated(std::string(70'000'000, ' ') + "1 0 0 rg f");
    EXPECT_LT(bomb.size(), 100'000U);
    EXPECT_EQ(Judge(MakePage("/F Do", "/XObject << /F 10 0 R >>",
                             {{10, Stream("/Subtype /Form /Resources << >> /Filter /FlateDecode", bomb)}})),
              "u");
}

TEST(PdfColors, EveryPageIsJudgedByItself) {
    std::string pdf = MakePdf(3);
    EXPECT_EQ(Judge(pdf), "mmm");
    // The content of the second page, in as many bytes.
    pdf = Replaced(pdf, "BT (Page 1, endobj 7 0 obj) Tj ET", "BT 1 0 0 rg (endobj 7 0 ob) Tj ET");
    EXPECT_EQ(Judge(pdf), "mcm");
    EXPECT_EQ(Judge(WithObjectStreams(pdf)), "mcm");
}

}  // namespace
}  // namespace quirepress
