#include "documents/file_signature.h"

#include <gtest/gtest.h>

#include "fakes/surroundings.h"

namespace quirepress {
namespace {

class FileSignatureTest : public testing::Test, protected Surroundings {
protected:
    bool Fits(std::string_view name, std::string_view bytes) {
        return HasSignatureOfItsName(files, folder.Write(name, bytes));
    }
    PdfState Inspect(std::string_view bytes) { return InspectPdf(files, folder.Write("x.pdf", bytes)); }
};

TEST_F(FileSignatureTest, GarbageUnderTheNameOfADocumentIsFound) {
    const std::string garbage("\x01\x00\x7F\xFE garbage", 12);
    const std::string zip = "PK\x03\x04 and so on";
    const std::string ole("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1\0\0", 10);
    for (const char* name :
         {"a.docx", "a.DOC", "a.xlsx", "a.odt", "a.rtf", "a.html", "a.csv", "a.pdf", "a.ppt"})
        EXPECT_FALSE(Fits(name, garbage)) << name;
    EXPECT_TRUE(Fits("a.docx", zip));
    EXPECT_TRUE(Fits("a.docx", ole)) << "with a password";
    EXPECT_FALSE(Fits("a.docx", "plain text"));
    EXPECT_TRUE(Fits("a.odt", zip));
    EXPECT_TRUE(Fits("a.rtf", "{\\rtf1 x}"));
    for (const std::string& bytes : {ole, zip, std::string("{\\rtf1 x}"), std::string("<html>")})
        EXPECT_TRUE(Fits("a.doc", bytes));
    EXPECT_TRUE(Fits("a.csv", "\xFF\xFE\x61\x00"));
    EXPECT_TRUE(Fits("a.pdf", "leading bytes\n%PDF-1.4"));
    EXPECT_TRUE(Fits("a.unknown", garbage));
    EXPECT_TRUE(Fits("none", garbage));
    EXPECT_FALSE(HasSignatureOfItsName(files, folder.PathOf("missing.docx")));
}

TEST_F(FileSignatureTest, AWholePdfHasItsBeginningAndItsEnd) {
    EXPECT_EQ(Inspect("%PDF-1.4\n" + std::string(10'000, 'x') + "\n%%EOF\n"), PdfState::kWhole);
    EXPECT_EQ(Inspect("%PDF-1.4\n%%EOF" + std::string(10'000, 'x')), PdfState::kCutOff);
    EXPECT_EQ(Inspect("%PDF-1.4\n"), PdfState::kCutOff);
    EXPECT_EQ(Inspect(" %PDF-1.4\n%%EOF"), PdfState::kNoPdf);
    EXPECT_EQ(Inspect(""), PdfState::kEmpty);
    EXPECT_EQ(InspectPdf(files, folder.PathOf("missing.pdf")), PdfState::kMissing);
    EXPECT_EQ(InspectPdf(files, folder.Path()), PdfState::kMissing);
}

}  // namespace
}  // namespace quirepress
