#include "backends/color_split.h"

#include <gmock/gmock.h>

#include "base/format.h"
#include "documents/page_colors.h"
#include "documents/page_renderer.h"
#include "fakes/fake_event_loop.h"
#include "fakes/fake_processes.h"
#include "fakes/temporary_folder.h"
#include "platform/services.h"
#include "settings/color_printer_options.h"

namespace quirepress {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<PageColor> Pages(const std::string& letters) {
    std::vector<PageColor> pages;
    for (const char letter : letters)
        pages.push_back(static_cast<PageColor>(std::string("muc").find(letter)));
    return pages;
}

// "m1-3 c4-4"
std::string Plan(const std::string& letters, const ColorPrinterOptions& options) {
    std::string plan;
    for (const ColorRun& run : PlanColorRuns(Pages(letters), options))
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

// Pages as the test says; what is extracted is noted, and written.
class ScriptedPages : public PdfPages {
public:
    explicit ScriptedPages(const TemporaryFolder& folder) : m_folder(folder) {}
    PdfResult InspectColors(std::string_view, std::string_view, int, std::vector<PageColor>& pages) override {
        pages = colors;
        return result;
    }
    PdfResult ExtractPages(std::string_view, std::string_view, const std::vector<PdfPageRange>& ranges,
                           std::string_view target) override {
        const std::string title = std::string(target.substr(target.find_last_of("/\\") + 1));
        extracted.push_back(Format("%d-%d %s", ranges[0].first, ranges[0].last, title));
        if (extracted.size() == failsAt) return PdfResult::kGaveUp;
        m_folder.Write("Temp/" + title, "piece");
        return PdfResult::kDone;
    }
    PdfResult result = PdfResult::kDone;
    std::vector<PageColor> colors;
    std::vector<std::string> extracted;
    std::size_t failsAt = 0;

private:
    const TemporaryFolder& m_folder;
};

class ColorSplitTest : public testing::Test {
protected:
    int Split(const std::string& password = "") {
        return split.SplitByColor("/docs/report.v2.pdf", password, options, folder.PathOf("Temp"), pieces,
                                  message);
    }
    std::vector<FolderEntry> Left() {
        std::vector<FolderEntry> entries;
        services.files->ListFolder(folder.PathOf("Temp"), entries);
        return entries;
    }

    const TemporaryFolder folder;
    const Services services = MakeSystemServices();
    FakeEventLoop loop;
    FakeProcesses processes;
    ScriptedPages pdf{folder};
    PageRenderer renderer{processes, loop, *services.files};
    PageColors colors{pdf, renderer, loop, *services.files, folder.PathOf("Temp")};
    ColorSplit split{colors, pdf, *services.files};
    ColorPrinterOptions options;
    std::vector<ColorPiece> pieces;
    std::string message;
};

TEST_F(ColorSplitTest, WritesTheRunsInTheirOrder) {
    pdf.colors = Pages("mmcm");
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
    pdf.colors = Pages("mmm");
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
    pdf.colors = Pages("mcm");
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
