#include "backends/color_split.h"

#include <gmock/gmock.h>

#include "base/format.h"
#include "documents/page_colors.h"
#include "documents/page_renderer.h"
#include "fakes/scripted_pages.h"
#include "fakes/surroundings.h"
#include "settings/color_printer_options.h"

namespace quirepress {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// "m1-3 c4-4"
std::string Plan(const std::string& letters, const ColorPrinterOptions& options) {
    std::string plan;
    for (const ColorRun& run : PlanColorRuns(PagesOf(letters), options))
        plan += Format("%s%s%d-%d", plan.empty() ? "" : " ", run.isColor ? "c" : "m", run.firstPage,
                       run.lastPage);
    return plan;
}

TEST(PlanColorRuns, KeepsTheOrderAndAllPages) {
    ColorPrinterOptions options;
    EXPECT_EQ(Plan("", options), "");
    EXPECT_EQ(Plan("m", options), "m1-1");
    EXPECT_EQ(Plan("mmcumm", options), "m1-2 c3-4 m5-6");
    EXPECT_EQ(Plan("cmcm", options), "c1-1 m2-2 c3-3 m4-4");
    options.m_leastMonoPages = 2;
    EXPECT_EQ(Plan("cmcmmcm", options), "c1-3 m4-5 c6-7");
    EXPECT_EQ(Plan("m", options), "m1-1") << "nothing that it could stay with";
    options.m_duplex = true;
    EXPECT_EQ(Plan("mcmmmmcmm", options), "c1-2 m3-6 c7-9");
    options.m_leastMonoPages = 1;
    EXPECT_EQ(Plan("mcmmm", options), "c1-2 m3-5");
    options.m_wholeDocuments = true;
    EXPECT_EQ(Plan("mmmmc", options), "c1-5");
    EXPECT_EQ(Plan("mmmm", options), "m1-4");
}

class ColorSplitTest : public testing::Test, protected Surroundings {
protected:
    int Split(const std::string& password = "") {
        return split.SplitByColor("/docs/report.v2.pdf", password, options, folder.PathOf("Temp"), pieces,
                                  message);
    }
    std::vector<FolderEntry> Left() {
        std::vector<FolderEntry> entries;
        files.ListFolder(folder.PathOf("Temp"), entries);
        return entries;
    }

    ColorSplitTest() { files.MakeFolders(folder.PathOf("Temp")); }
    ScriptedPages pdf;
    PageRenderer renderer{processes, loop, files};
    PageColors colors{pdf, renderer, loop, files, folder.PathOf("Temp")};
    ColorSplit split{colors, pdf, files};
    ColorPrinterOptions options;
    std::vector<ColorPiece> pieces;
    std::string message;
};

TEST_F(ColorSplitTest, WritesTheRunsInTheirOrder) {
    pdf.colors = "mmcm";
    ASSERT_EQ(Split(), 0) << message;
    EXPECT_THAT(pdf.extracted,
                ElementsAre("1-2 report.v2 (1-2).pdf", "3-3 report.v2 (3-3).pdf", "4-4 report.v2 (4-4).pdf"));
    ASSERT_EQ(pieces.size(), 3U);
    EXPECT_EQ(pieces[1].file, folder.PathOf("Temp/report.v2 (3-3).pdf"));
    EXPECT_TRUE(pieces[1].isColor);
    EXPECT_TRUE(pieces[1].isTemporary);
    EXPECT_FALSE(pieces[2].isColor);
    EXPECT_EQ(pieces[2].firstPage, 4);
    EXPECT_EQ(Left().size(), 3U);
}

TEST_F(ColorSplitTest, ADocumentOfOneRunIsLeftAsItIs) {
    pdf.colors = "mmm";
    ASSERT_EQ(Split(), 0) << message;
    EXPECT_THAT(pdf.extracted, IsEmpty());
    ASSERT_EQ(pieces.size(), 1U);
    EXPECT_EQ(pieces[0].file, "/docs/report.v2.pdf");
    EXPECT_FALSE(pieces[0].isTemporary);
    EXPECT_EQ(pieces[0].lastPage, 3);
    ASSERT_EQ(Split("secret"), 0) << message;
    EXPECT_THAT(pdf.extracted, ElementsAre("1-3 report.v2 (1-3).pdf")) << "without its password";
}

TEST_F(ColorSplitTest, WhatFailsLeavesNothingBehind) {
    pdf.colors = "mcm";
    pdf.failsAt = 3;
    pieces = {{"before", false}};
    EXPECT_EQ(Split(), -1);
    EXPECT_EQ(message, "Can't split report.v2.pdf by colours: the file takes too long, or too much memory.");
    EXPECT_THAT(Left(), IsEmpty());
    EXPECT_EQ(pieces.size(), 1U) << "as they were";
    pdf.result = PdfResult::kWrongPassword;
    EXPECT_EQ(Split("guess"), -1);
    EXPECT_EQ(message,
              "Can't split report.v2.pdf by colours: the file is protected by a password that is not known "
              "(USEOPENPASSWORD).");
    EXPECT_EQ(pdf.extracted.size(), 3U);
}

}  // namespace
}  // namespace quirepress
