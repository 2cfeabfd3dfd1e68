#include "documents/pdf_pages.h"

#include <gtest/gtest.h>

#include "fakes/surroundings.h"
#include "platform/file_tools.h"
#include "unit/documents/pdf_samples.h"

namespace quirepress {
namespace {

class PdfPagesTest : public testing::Test, protected Surroundings {
protected:
    PdfResult Extract(const std::string& source, const std::vector<PdfPageRange>& ranges,
                      const std::string& password = "") {
        return ExtractPdfPages(files, source, password, ranges, target);
    }
    std::string Pages() { return DescribePages(Bytes()); }
    std::string Bytes() {
        std::string bytes;
        FileResult result = FileResult::kDone;
        EXPECT_TRUE(ReadWholeFile(*system.files, target, 1 << 24, bytes, result));
        return bytes;
    }

    const std::string target = folder.PathOf("new.pdf");
    const std::string ten = folder.Write("ten.pdf", MakePdf(10));
};

TEST_F(PdfPagesTest, WritesRangesInTheirOrder) {
    EXPECT_EQ(Extract(ten, {{2, 4}, {8, 8}}), PdfResult::kDone);
    EXPECT_EQ(Pages(), "1 2 3 7 ");
    EXPECT_EQ(Extract(ten, {{9, 10}, {1, 1}, {9, 9}}), PdfResult::kDone);
    EXPECT_EQ(Pages(), "8 9 0 8 ");
    EXPECT_EQ(Extract(ten, {{7, 0}}), PdfResult::kDone);
    EXPECT_EQ(Pages(), "6 7 8 9 ");
    EXPECT_EQ(Extract(folder.Write("streams.pdf", WithObjectStreams(MakePdf(10))), {kAllPdfPages}),
              PdfResult::kDone);
    EXPECT_EQ(Pages(), "0 1 2 3 4 5 6 7 8 9 ");
}

TEST_F(PdfPagesTest, TakesThePasswordAwayAndKeepsWhatPagesInherit) {
    const std::string turned =
        Replaced(MakePdf(3), "/Count 3 /Kids [ 3 0 R ]", "/Count 3 /Rotate 90 /Kids [ 3 0 R ]");
    for (const Cipher cipher : {Cipher::kRc4Of40, Cipher::kAes256}) {
        const std::string hidden = folder.Write("hidden.pdf", Encrypted(turned, cipher, "secret", true));
        EXPECT_EQ(Extract(hidden, {{2, 2}}, "secret"), PdfResult::kDone);
        EXPECT_EQ(Pages(), "1@90 ");
    }
    const std::string hidden =
        folder.Write("hidden.pdf", Encrypted(turned, Cipher::kAes128, "secret", false));
    EXPECT_EQ(Extract(hidden, {{1, 1}}, "guess"), PdfResult::kWrongPassword);
}

// Links, outlines and form fields may name pages that are left out; their contents must not come along.
TEST_F(PdfPagesTest, LeavesOutWhatBelongsToOtherPages) {
    PdfBodies objects = {
        {1, "<< /Type /Catalog /Pages 2 0 R /Outlines << /First 9 0 R >> /OCProperties << /D << >> >> >>"},
        {2, "<< /Type /Pages /Count 2 /Kids [ 3 0 R 4 0 R ] >>"},
        {3,
         "<< /Type /Page /Parent 2 0 R /Contents 5 0 R /Annots [ << /Subtype /Link /Dest [4 0 R /Fit] >> ] "
         ">>"},
        {4, "<< /Type /Page /Parent 2 0 R /Contents 6 0 R >>"},
        {5, "<< /Length 17 >>\nstream\n(Page 0, kept) Tj\nendstream"},
        {6, "<< /Length 20 >>\nstream\n(Page 1, dropped) Tj\nendstream"},
        {9, "<< /Title (dropped) /Dest [4 0 R /Fit] >>"}};
    EXPECT_EQ(Extract(folder.Write("links.pdf", MakePdfOf(objects, "/Size 10 /Root 1 0 R")), {{1, 1}}),
              PdfResult::kDone);
    EXPECT_EQ(Pages(), "0 ");
    EXPECT_EQ(Bytes().find("dropped"), std::string::npos);
    EXPECT_NE(Bytes().find("OCProperties"), std::string::npos) << "layers that are off must stay off";
}

TEST_F(PdfPagesTest, WhatFailsLeavesTheTargetAsItWas) {
    folder.Write("new.pdf", "as it was");
    EXPECT_EQ(Extract(ten, {{0, 1}}), PdfResult::kNoSuchPages);
    EXPECT_EQ(Extract(ten, {{5, 4}}), PdfResult::kNoSuchPages);
    EXPECT_EQ(Extract(ten, {{10, 11}}), PdfResult::kNoSuchPages);
    EXPECT_EQ(Extract(ten, {}), PdfResult::kNoSuchPages);
    EXPECT_EQ(Extract(folder.Write("junk.pdf", "junk"), {{1, 1}}), PdfResult::kUnreadable);
    EXPECT_EQ(Extract(folder.PathOf("missing.pdf"), {{1, 1}}), PdfResult::kUnreadable);
    for (const FaultyFiles::Call call : {FaultyFiles::Call::kWrite, FaultyFiles::Call::kFlushToDisk,
                                         FaultyFiles::Call::kClose, FaultyFiles::Call::kRename}) {
        files.FailOnce(call, FileResult::kNoSpace);
        EXPECT_EQ(Extract(ten, {{1, 1}}), PdfResult::kNotWritten);
    }
    EXPECT_EQ(Bytes(), "as it was");
    EXPECT_FALSE(folder.Has("new.pdf.part"));
    EXPECT_EQ(ExtractPdfPages(files, ten, "", {{1, 1}}, folder.PathOf("no/folder.pdf")),
              PdfResult::kNotWritten);
}

TEST_F(PdfPagesTest, WhatCannotBeReadSaysWhy) {
    const std::string good = MakePdf(3);
    const auto reason = [&](const std::string& bytes) {
        const std::string path = folder.Write("a.pdf", bytes);
        return DescribePdfResult(Extract(path, {{1, 1}}), files, path);
    };
    EXPECT_EQ(reason(good.substr(0, good.size() / 2)), "the file is cut off: the end of the PDF is missing");
    EXPECT_EQ(reason(""), "the file is empty");
    EXPECT_EQ(reason("Dear reader"), "the file is no PDF, whatever its name says");
    EXPECT_EQ(reason("x%PDF-1.4 junk %%EOF"), "the file can't be read as a PDF");
    EXPECT_EQ(reason("%PDF-1.4 junk %%EOF"), "the file can't be read as a PDF");
    EXPECT_EQ(reason(Encrypted(good, Cipher::kAes256, "secret", true)),
              "the file is protected by a password that is not known (USEOPENPASSWORD)");
    const std::string none = folder.PathOf("none.pdf");
    EXPECT_EQ(DescribePdfResult(Extract(none, {{1, 1}}), files, none),
              "the file is missing, or can't be opened");
}

}  // namespace
}  // namespace quirepress
