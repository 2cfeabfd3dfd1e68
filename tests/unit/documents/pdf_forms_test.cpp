#include "documents/pdf_forms.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "base/format.h"
#include "documents/form_data.h"
#include "fakes/surroundings.h"
#include "platform/file_tools.h"
#include "unit/documents/pdf_samples.h"

namespace quirepress {
namespace {

std::string Widget(const std::string& keys) {
    return "<< /Type /Annot /Subtype /Widget /Rect [10 10 110 30] /P 3 0 R " + keys + " >>";
}

std::string Look(const std::string& name) {
    return "/AP << /N << /" + name + " 20 0 R /Off 21 0 R >> >> /AS /Off ";
}

// A text of a hierarchical name, one of more lines, a comb, a check box, two radio buttons, a choice of one,
// an open list, a button, and a text that nobody fills.
std::string MakeForm(const std::string& formKeys = "") {
    const std::string fields = "7 0 R 8 0 R 9 0 R 10 0 R 11 0 R 14 0 R 15 0 R 16 0 R 17 0 R";
    return MakePdfOf(
        {{1, "<< /Type /Catalog /Pages 2 0 R /AcroForm << /Fields [ " + fields +
                 " ] /DA (/Helv 0 Tf 0 g) /DR << /Font << /Helv 5 0 R >> >> " + formKeys + " >> >>"},
         {2, "<< /Type /Pages /Count 1 /Kids [ 3 0 R ] >>"},
         {3,
          "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 300 300] /Contents 4 0 R /Annots [ 6 0 R 8 0 R 9 0 "
          "R 10 0 R 12 0 R 13 0 R 14 0 R 15 0 R 16 0 R 17 0 R ] >>"},
         {4, "<< /Length 14 >>\nstream\n(Page 0) Tj   \nendstream"},
         {5, "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>"},
         {6, Widget("/F 4 /Parent 7 0 R /T (name)")},
         {7, "<< /FT /Tx /T (client) /Kids [ 6 0 R ] >>"},
         {8, Widget("/FT /Tx /T (notes) /Ff 4096 /DA (/Helv 9 Tf 1 0 0 rg)")},
         {9, Widget("/F 4 /FT /Tx /T (code) /Ff 16777216 /MaxLen 4")},
         {10, Widget("/F 4 /FT /Btn /T (agree) " + Look("Sure"))},
         {11, "<< /FT /Btn /T (size) /Ff 32768 /Kids [ 12 0 R 13 0 R ] >>"},
         {12, Widget("/F 4 /Parent 11 0 R " + Look("S"))},
         {13, Widget("/F 4 /Parent 11 0 R " + Look("L"))},
         {14, Widget("/F 4 /FT /Ch /T (land) /Ff 131072 /Opt [ [ (no) (Norway) ] [ (se) (Sweden) ] ]")},
         {15, Widget("/F 4 /FT /Ch /T (days) /Opt [ (Mon) (Tue) ]")},
         {16, Widget("/FT /Btn /T (send) /Ff 65536 /AP << /N 22 0 R >>")},
         {17, Widget("/F 4 /FT /Tx /T (kept) /V (as it was)")},
         {20, "<< /Type /XObject /Subtype /Form /BBox [0 0 9 9] /Length 8 >>\nstream\n(on) Tj \nendstream"},
         {21, "<< /Type /XObject /Subtype /Form /BBox [0 0 9 9] /Length 8 >>\nstream\n(off) Tj\nendstream"},
         {22, "<< /Type /XObject /Subtype /Form /BBox [0 0 9 9] /Length 8 >>\nstream\n(go)  Tj\nendstream"}},
        "/Size 23 /Root 1 0 R");
}

// One field, of this width and height.
std::string MakeFieldForm(const std::string& keys, const std::string& size) {
    return MakePdfOf(
        {{1,
          "<< /Type /Catalog /Pages 2 0 R /AcroForm << /Fields [ 5 0 R ] /DA (/Helv 0 Tf 0 g) "
          "/NeedAppearances true >> >>"},
         {2, "<< /Type /Pages /Count 1 /Kids [ 3 0 R ] >>"},
         {3,
          "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 300 300] /Contents 4 0 R /Annots [ 5 0 R "
          "6 0 R ] >>"},
         {4, "<< /Length 14 >>\nstream\n(Page 0) Tj   \nendstream"},
         {5, "<< /Type /Annot /Subtype /Widget /P 3 0 R /T (a) /Rect [0 0 " + size + "] " + keys + " >>"},
         {6, Widget("/F 4 /FT /Tx /T (b)")}},
        "/Size 7 /Root 1 0 R");
}

std::string Hex(const std::string& text) {
    std::string hex = "<";
    for (const char c : text) hex += Format("%02X", static_cast<int>(static_cast<unsigned char>(c)));
    return hex + ">";
}

std::string Fdf(const std::string& keys) {
    return "%FDF-1.2\n1 0 obj\n<< /FDF << " + keys + " >> >>\nendobj\ntrailer\n<< /Root 1 0 R >>\n%%EOF\n";
}

std::string Xfdf(const std::string& fields, const std::string& form = "form.pdf") {
    return "<?xml version=\"1.0\"?><xfdf xmlns=\"http://ns.adobe.com/xfdf/\"><f href=\"" + form +
           "\"/><fields>" + fields + "</fields></xfdf>";
}

std::string Value(const std::string& name, const std::string& value) {
    return "<field name=\"" + name + "\"><value>" + value + "</value></field>";
}

class PdfFormsTest : public testing::Test, protected Surroundings {
protected:
    PdfFormsTest() { folder.Write("form.pdf", MakeForm()); }

    PdfResult Fill(const std::string& bytes, const std::string& password = "") {
        const std::string data = folder.Write("data.xfdf", bytes);
        return FillPdfForm(files, data, password, target, filling);
    }
    // What is to be seen on the page: the bytes of its contents and of all that it shows.
    std::string Seen() {
        std::string bytes;
        FileResult result = FileResult::kDone;
        EXPECT_TRUE(ReadWholeFile(files, target, 1 << 24, bytes, result)) << filling.flaw;
        EXPECT_EQ(ObjectAt(bytes, "root /AcroForm"), "null") << "no viewer changes it any more";
        return bytes;
    }
    bool Sees(const std::string& text) { return Seen().find(text) != std::string::npos; }
    bool SeesText(const std::string& text) { return Sees(Hex(text)); }

    const std::string target = folder.PathOf("filled.pdf");
    FormFilling filling;
};

TEST_F(PdfFormsTest, FieldsOfEveryKindBecomePartOfThePage) {
    ASSERT_EQ(
        Fill(Xfdf("<field name=\"client\"><field name=\"name\"><value>Zo\xC3\xAB &amp; Co</value></field>"
                  "</field>" +
                  Value("notes", "one two\nthree") + Value("code", "AB1") + Value("agree", "Yes") +
                  Value("size", "L") + Value("land", "se") + Value("send", "x") + Value("none", "x") +
                  "<field name=\"days\"><value>Tue</value></field>")),
        PdfResult::kDone)
        << filling.flaw;
    EXPECT_TRUE(SeesText("Zo\xEB & Co"));
    EXPECT_TRUE(SeesText("one two") && SeesText("three"));
    EXPECT_TRUE(Sees("1 0 0 rg\n/F0 7.716")) << "the field's own colour, its size made smaller";
    EXPECT_TRUE(SeesText("A") && SeesText("B") && SeesText("1")) << "a character a cell";
    EXPECT_TRUE(SeesText("Sweden") && SeesText("Tue"));
    EXPECT_FALSE(Sees("(go)")) << "a button that is not to be printed";
    EXPECT_EQ(filling.unknownFields, (std::vector<std::string>{"none"}));
    EXPECT_EQ(filling.form, "form.pdf");
    // One of the two radio buttons, and the check box.
    const std::string page = ObjectAt(Seen(), "0 /Resources /XObject =");
    EXPECT_NE(page.find("/Fxo"), std::string::npos) << page;
    EXPECT_TRUE(Sees("(on)") && Sees("(off)"));
    ASSERT_EQ(Fill(Xfdf(Value("agree", "Sure") + Value("size", "S"))), PdfResult::kDone);
    ASSERT_EQ(Fill(Xfdf(Value("agree", "Off") + Value("size", ""))), PdfResult::kDone);
    EXPECT_FALSE(Sees("(on)"));
}

TEST_F(PdfFormsTest, EveryFormatOfDataIsRead) {
    const std::string names =
        "/Fields [ << /T (client) /Kids [ << /T (name) /V (Ann \\(A\\)) >> ] >> << /T "
        "(agree) /V /Sure >> << /T (notes) /V <FEFF00FC> >> ]";
    ASSERT_EQ(Fill(Fdf("/F (form.pdf) " + names)), PdfResult::kDone) << filling.flaw;
    EXPECT_TRUE(SeesText("Ann (A)") && SeesText("\xFC") && Sees("(on)"));
    ASSERT_EQ(Fill(Fdf("/F << /Type /Filespec /UF (form.pdf) /F (no.pdf) >> /Encoding /utf_8 /Fields [ << /T "
                       "(notes) /V (\xC3\xBC) >> ]")),
              PdfResult::kDone)
        << filling.flaw;
    EXPECT_TRUE(SeesText("\xFC"));

    const auto xdp = [](const std::string& form) {
        return "<xdp:xdp xmlns:xdp=\"x\"><xfa:datasets xmlns:xfa=\"y\"><xfa:data><client><name>Bo</name>"
               "</client><code>9</code></xfa:data></xfa:datasets>" +
               form + "</xdp:xdp>";
    };
    ASSERT_EQ(Fill(xdp("<pdf href=\"form.pdf\"/>")), PdfResult::kDone) << filling.flaw;
    EXPECT_TRUE(SeesText("Bo") && SeesText("9"));

    // The form came along: nothing is looked for.
    const std::string form = MakeForm();
    std::string chunk;
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t i = 0; i < form.size(); i += 3) {
        unsigned bits = 0;
        for (std::size_t k = 0; k < 3; ++k)
            bits = bits << 8U | (i + k < form.size() ? static_cast<unsigned char>(form[i + k]) : 0U);
        for (const unsigned shift : {18U, 12U, 6U, 0U}) chunk += kDigits[bits >> shift & 63U];
        if (i % 57 == 0) chunk += '\n';
    }
    folder.Write("form.pdf", "junk");
    ASSERT_EQ(Fill(xdp("<pdf><document><chunk>" + chunk + "</chunk></document></pdf>")), PdfResult::kDone)
        << filling.flaw;
    EXPECT_TRUE(SeesText("Bo"));
}

TEST_F(PdfFormsTest, FormsLieWhereTheDataSay) {
    folder.Write("forms/my form.pdf", MakeForm());
    const std::string fields = Value("code", "1");
    for (const std::string& name : {std::string("forms/my form.pdf"), std::string("forms\\my%20form.pdf"),
                                    folder.PathOf("forms/my form.pdf")})
        EXPECT_EQ(Fill(Xfdf(fields, name)), PdfResult::kDone) << filling.flaw;
    const auto flawOf = [&](const std::string& name) {
        EXPECT_NE(Fill(Xfdf(fields, name)), PdfResult::kDone) << name;
        return filling.flaw;
    };
    EXPECT_EQ(flawOf("lost.pdf"), "the form is missing: \"lost.pdf\"");
    EXPECT_EQ(flawOf("forms"), "the form is missing: \"forms\"");
    EXPECT_EQ(flawOf(""), "the forms data name no form");
    for (const std::string name : {"http://127.0.0.1:1/form.pdf", "HTTPS:form.pdf", "ftp://host/form.pdf",
                                   "//host/share/form.pdf", "\\\\host\\share\\form.pdf", "file://host/f.pdf"})
        EXPECT_EQ(flawOf(name),
                  "the form is named by an address, and forms are not fetched: \"" + name + "\"");
    folder.Write("form.pdf", "junk");
    EXPECT_EQ(flawOf("form.pdf"), "the form \"form.pdf\": the file can't be read as a PDF");
    folder.Write("form.pdf", MakePdf(2));
    EXPECT_EQ(flawOf("form.pdf"), "the form \"form.pdf\" has no fields to be filled");
    folder.Write("form.pdf", Encrypted(MakeForm(), Cipher::kAes256, "secret", true));
    EXPECT_EQ(
        flawOf("form.pdf"),
        "the form \"form.pdf\": the file is protected by a password that is not known (USEOPENPASSWORD)");
    EXPECT_EQ(Fill(Xfdf(fields), "secret"), PdfResult::kDone) << filling.flaw;
}

// Nothing else may come out than what the data say.
TEST_F(PdfFormsTest, WhatCannotBeFilledIsRefused) {
    const auto flawOf = [&](const std::string& fields) {
        EXPECT_EQ(Fill(Xfdf(fields)), PdfResult::kUnreadable);
        EXPECT_FALSE(folder.Has("filled.pdf"));
        return filling.flaw;
    };
    EXPECT_EQ(flawOf(Value("land", "dk")), "the field \"land\" has no choice \"dk\"");
    EXPECT_EQ(flawOf(Value("size", "XL")), "the field \"size\" has no choice \"XL\"");
    EXPECT_EQ(flawOf(Value("code", "12345")),
              "the text for the field \"code\" is longer than its 4 characters");
    EXPECT_EQ(flawOf(Value("notes", "\xD0\x9F")),
              "the field \"notes\" has characters that can't be drawn: only those of Western European "
              "languages can");
    EXPECT_EQ(flawOf(Value("a", "1") + Value("b", "2")),
              "the form \"form.pdf\" has none of the 2 fields of the forms data");
    // A form that leaves the drawing to viewers shows what it has.
    folder.Write("form.pdf", MakeForm("/NeedAppearances true"));
    EXPECT_EQ(Fill(Xfdf(Value("code", "1"))), PdfResult::kDone);
    EXPECT_TRUE(SeesText("as it was"));
}

// At 4 points a letter "m" is 3.3 wide, a line 4.6 high.
TEST_F(PdfFormsTest, TextIsSeenWholeOrTheFormIsRefused) {
    const std::string text = "/F 4 /FT /Tx ";
    const std::string lines = text + "/Ff 4096 ";
    const std::string list = "/F 4 /FT /Ch /Ff 2097152 /Opt [ (Mon) (Tue) (Wed) (Thu) (mmmmmmmmmm) ] ";
    const std::string days = "Mon</value><value>Wed";
    const struct {
        std::string keys;
        const char* size;  // of the field
        std::string value;
        bool isSeen;
    } kFields[] = {{text, "40 20", "mmmmmmmmmm \n", true},
                   {text, "40 20", "mmmmmmmmmmmmmm", false},
                   {text + "/Ff 8388608 ", "40 20", "mmmmmmmmmmmmmm", false},  // it does not scroll
                   {text + "/Ff 8192 ", "40 20", "mmmmmmmmmmmmmm", true},      // a password: stars
                   {text, "40 3", "m", false},
                   {text, "0 0", "mmmmmmmmmmmmmm", true},
                   {"/F 2 /FT /Tx ", "40 20", "mmmmmmmmmmmmmm", true},  // hidden
                   {text + "/DA (/Helv 2 Tf 0 g) ", "40 3", "mmmmmmmmmmmmmm", true},
                   {lines, "40 20", "mmm mmm mmm mmm mmm mmm mmm mmm\n\n\n ", true},
                   {lines, "40 20", "mmm mmm mmm mmm mmm mmm mmm mmm\nm\nm", false},
                   {lines, "7 90", "mmm", true},
                   {lines, "4 90", "mmm", false},
                   {text + "/Ff 16777216 /MaxLen 8 ", "40 20", "mmmmmmmm", true},
                   {text + "/Ff 16777216 /MaxLen 13 ", "40 20", "mmmmmmmm", false},
                   {"/F 4 /FT /Ch /Ff 393216 /Opt [ (x) ] ", "40 20", "mmmmmmmmmmmmmm", false},
                   {list, "40 20", days, true},
                   {list, "40 10", days, false},
                   {list, "40 10", "Thu", true},
                   {list, "20 20", "Thu", true},
                   {list, "20 20", "mmmmmmmmmm", false}};
    for (const auto& field : kFields) {
        folder.Write("form.pdf", MakeFieldForm(field.keys, field.size));
        const bool isDone = Fill(Xfdf(Value("a", field.value))) == PdfResult::kDone;
        EXPECT_EQ(isDone, field.isSeen) << field.keys << field.size << field.value << filling.flaw;
        EXPECT_EQ(filling.flaw, isDone ? "" : "the text for the field \"a\" has no room in it");
        EXPECT_EQ(folder.Has("filled.pdf"), isDone);
        std::filesystem::remove(target);
    }
    // What the form itself brings, where it is printed.
    const std::string own = "/FT /Tx /V (mmmmmmmmmmmmmmm) ";
    folder.Write("form.pdf", MakeFieldForm(own, "40 20"));
    EXPECT_EQ(Fill(Xfdf(Value("b", "1"))), PdfResult::kDone) << filling.flaw;
    folder.Write("form.pdf", MakeFieldForm("/F 4 " + own, "40 20"));
    EXPECT_EQ(Fill(Xfdf(Value("b", "1"))), PdfResult::kUnreadable);
}

TEST_F(PdfFormsTest, BadDataCostThatFile) {
    const std::string good = Fdf("/F (form.pdf) /Fields [ << /T (code) /V (1) >> ]");
    std::string deep;
    for (int i = 0; i < 5'000; ++i) deep += "<field name=\"a\">";
    std::string deepFdf = "/F (form.pdf) /Fields ";
    for (int i = 0; i < 5'000; ++i) deepFdf += "[ << /T (a) /Kids ";
    const std::string bomb =
        "<!DOCTYPE xfdf [<!ENTITY a \"aaaaaaaa\"><!ENTITY b \"&a;&a;\">]><xfdf><fields>&b;</fields></xfdf>";
    for (const std::string& bad :
         {std::string(), std::string("junk"), std::string(3000, '\0'), std::string("%FDF"), bomb,
          good.substr(0, good.size() / 2), good.substr(0, good.size() - 6), Fdf("/Fields"), Fdf(deepFdf),
          Xfdf(deep), Xfdf(Value("code", "1")).substr(0, 90), std::string("<html><fields/></html>"),
          Fdf("/F (form.pdf) /Encoding /Shift_JIS")}) {
        EXPECT_EQ(Fill(bad), PdfResult::kUnreadable) << bad.substr(0, 60);
        EXPECT_NE(filling.flaw, "");
        EXPECT_FALSE(folder.Has("filled.pdf"));
    }
    EXPECT_EQ(Fill(bomb), PdfResult::kUnreadable);
    EXPECT_EQ(filling.flaw, "the forms data have a document type (DTD), which is refused");
    EXPECT_EQ(Fill(good), PdfResult::kDone) << filling.flaw;
}

TEST_F(PdfFormsTest, FormsDataAreKnownByNameOrBegin) {
    EXPECT_TRUE(IsFormData(files, folder.Write("a.XFDF", "")));
    EXPECT_TRUE(IsFormData(files, folder.Write("a.xdp", "")));
    EXPECT_TRUE(IsFormData(files, folder.Write("a.ps", "%FDF-1.2")));
    EXPECT_FALSE(IsFormData(files, folder.Write("a.fdf", "%FD")));
    EXPECT_FALSE(IsFormData(files, folder.PathOf("missing.ps")));
}

}  // namespace
}  // namespace quirepress
