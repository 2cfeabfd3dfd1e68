#include "documents/page_colors.h"

#include <gtest/gtest.h>

#include "documents/page_image.h"
#include "documents/page_renderer.h"
#include "documents/qpdf_library.h"
#include "fakes/scripted_pages.h"
#include "fakes/surroundings.h"
#include "unit/documents/pdf_samples.h"

namespace quirepress {
namespace {

// A picture of `pixels` times the colour, then once the other one.
std::string Picture(const std::string& color, int pixels, const std::string& other = "aaa") {
    std::string picture = "P6\n# made\n" + std::to_string(pixels + 1) + " 1\n255\n";
    for (int i = 0; i < pixels; ++i) picture += color;
    return picture + other;
}

TEST(PageImages, AreJudgedPictureByPicture) {
    const std::string all = Picture("abc", 3000) + Picture("abz", 3000) + Picture("abc", 3000, "ao~") +
                            Picture("abc", 3000, "a~a") + "P5 2 2 255 " + "a~z\n" + Picture("~~~", 1);
    for (const std::size_t piece : {std::size_t{1}, std::size_t{7}, all.size()}) {
        PageImages images{GreyRule()};
        for (std::size_t at = 0; at < all.size(); at += piece)
            ASSERT_TRUE(images.Take(all.substr(at, piece)));
        EXPECT_EQ(LettersOf(images.Colors()), "mcmmmm");
    }
    PageImages bright{GreyRule()};
    ASSERT_TRUE(bright.Take(Picture("abc", 3000,
                                    "a\xF0"
                                    "a")));
    EXPECT_EQ(LettersOf(bright.Colors()), "c") << "one pixel that no noise makes";
    PageImages tolerant{GreyRule{0.5}};
    ASSERT_TRUE(tolerant.Take(Picture("abz", 3000)));
    EXPECT_EQ(LettersOf(tolerant.Colors()), "m");
}

TEST(PageImages, WhatIsNoPictureIsRefused) {
    for (const std::string bad : {"P4 8 8 255 x", "junk is here now ", "P6 0 5 255 x", "P6 99999 99999 255 x",
                                  "P6 5 5 65535 x", "P6 9999 9999 255 x", "P6 -5 5 255 x"}) {
        PageImages images{GreyRule()};
        EXPECT_FALSE(images.Take(bad)) << bad;
    }
    PageImages images{GreyRule()};
    EXPECT_TRUE(images.Take("P6 "));
    EXPECT_FALSE(images.Take(std::string(300, ' ')));
}

class PageColorsTest : public testing::Test, protected Surroundings {
protected:
    std::string Judge(const std::string& password = "") {
        std::vector<PageColor> pages;
        return colors.Judge(file, password, 0, pages) == PdfResult::kDone ? LettersOf(pages) : "-";
    }
    void AddRenderer(const std::string& output, int exitCode = 0) {
        FakeProcesses::Script script;
        script.output = output;
        script.exitCode = exitCode;
        processes.AddScript(script);
    }
    const std::vector<std::string>& Arguments(std::size_t start) {
        return processes.records.at(start).request.arguments;
    }

    const std::string file = folder.Write("a.pdf", "x");
    ScriptedPages pdf;
    PageRenderer renderer{processes, loop, files};
    PageColors colors{pdf, renderer, loop, files, folder.PathOf("Temp")};
    const std::string grey = Picture("aaa", 9);
    const std::string red = Picture("a\x10\x10", 9);
};

TEST_F(PageColorsTest, OnlyUndecidedPagesAreRendered) {
    pdf.colors = "mcm";
    EXPECT_EQ(Judge(), "mcm");
    EXPECT_TRUE(processes.records.empty());
    pdf.colors = "muumcu";
    AddRenderer(grey + red);
    AddRenderer(grey);
    EXPECT_EQ(Judge(), "mmcmcm");
    ASSERT_EQ(processes.records.size(), 2U);
    const std::string path = files.ResolvePath(file);
    EXPECT_EQ(Arguments(0),
              (std::vector<std::string>{"pdftoppm", "-q", "-scale-to", "1000", "-f", "2", "-l", "3", path}));
    EXPECT_EQ(Arguments(1)[5], "6");
    EXPECT_GT(processes.records[0].request.memoryLimit, 0);
    EXPECT_TRUE(processes.records[0].destroyed);
}

TEST_F(PageColorsTest, WithoutARendererWhatIsUndecidedHasColours) {
    pdf.colors = "umu";
    for (int i = 0; i < 3; ++i) {
        FakeProcesses::Script missing;
        missing.startError = 2;
        processes.AddScript(missing);
    }
    EXPECT_EQ(Judge(), "cmc");
    ASSERT_EQ(processes.records.size(), 3U);
    EXPECT_EQ(Arguments(0)[0], "pdftoppm");
    EXPECT_EQ(Arguments(1)[0], "mutool");
    EXPECT_EQ(Arguments(1).back(), "1-1");
    EXPECT_EQ(Arguments(2)[0], "gs");
    EXPECT_EQ(Judge(), "cmc") << "and nothing is started any more";
    EXPECT_EQ(processes.records.size(), 3U);
}

TEST_F(PageColorsTest, ARendererThatFailsCostsItsPageOnly) {
    pdf.colors = "uuuu";
    AddRenderer(grey + grey.substr(0, 20), 1);
    AddRenderer("junk that is no picture at all");
    AddRenderer(grey);
    EXPECT_EQ(Judge(), "mccm");
    FakeProcesses::Script hangs;
    hangs.runsFor.reset();
    processes.AddScript(hangs);
    AddRenderer(grey + grey + grey);
    const long long start = loop.MonotonicMilliseconds();
    EXPECT_EQ(Judge(), "cmmm");
    EXPECT_LT(loop.MonotonicMilliseconds() - start, 31'000);
}

TEST_F(PageColorsTest, AStopEndsTheRenderingOfAllPages) {
    pdf.colors = "umumu";
    bool isStopped = false;
    renderer.UseStop([&] { return isStopped; });
    FakeProcesses::Script hangs;
    hangs.runsFor.reset();
    processes.AddScript(hangs);
    loop.StartTimer(1, 1'000, [&] { isStopped = true; });
    const long long start = loop.MonotonicMilliseconds();
    EXPECT_EQ(Judge(), "cmcmc");
    EXPECT_LE(loop.MonotonicMilliseconds() - start, 1'100);
    ASSERT_EQ(processes.records.size(), 1U);
    EXPECT_TRUE(processes.records[0].destroyed);
}

TEST_F(PageColorsTest, RenderersGetACopyInsteadOfThePassword) {
    pdf.colors = "u";
    AddRenderer(grey);
    pdf.failsAt = 1;
    EXPECT_EQ(Judge("secret"), "c") << "the copy was not made";
    EXPECT_EQ(pdf.lastPassword, "secret");
    EXPECT_TRUE(processes.records.empty());
    QpdfLibrary library(files);
    PageColors real(library, renderer, loop, files, folder.PathOf("Temp"));
    const std::string odd =
        Replaced(MakePdf(1), "BT (Page 0, endobj 7 0 obj) Tj ET", "0.2 0.2 0.2 0 k f % bj 7 0 obj Tj ET");
    const std::string hidden = folder.Write("hidden.pdf", Encrypted(odd, Cipher::kAes256, "secret", false));
    std::vector<PageColor> pages;
    EXPECT_EQ(real.Judge(hidden, "secret", 0, pages), PdfResult::kDone);
    EXPECT_EQ(LettersOf(pages), "m");
    ASSERT_EQ(processes.records.size(), 1U);
    for (const std::string& argument : Arguments(0)) EXPECT_EQ(argument.find("secret"), std::string::npos);
    std::vector<FolderEntry> left;
    files.ListFolder(folder.PathOf("Temp"), left);
    EXPECT_TRUE(left.empty());
    EXPECT_EQ(real.Judge(hidden, "guess", 0, pages), PdfResult::kWrongPassword);
}

TEST_F(PageColorsTest, OddTolerancesAreBounded) {
    std::vector<PageColor> pages;
    pdf.colors = "m";
    colors.Judge(file, "", 1000, pages);
    EXPECT_EQ(pdf.lastTolerance, 100);
    colors.Judge(file, "", -5, pages);
    EXPECT_EQ(pdf.lastTolerance, 0);
    pdf.result = PdfResult::kUnreadable;
    EXPECT_EQ(Judge(), "-");
}

}  // namespace
}  // namespace quirepress
