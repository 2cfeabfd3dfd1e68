#include "core/print_list.h"

#include <gmock/gmock.h>

#include "base/format.h"
#include "base/path.h"
#include "unit/core/list_fixture.h"

namespace quirepress {
namespace {

using testing::ElementsAre;

class PrintListTest : public ListFixture {};

TEST_F(PrintListTest, FillsTheColumnsOfADocument) {
    const std::string path = folder.Write("in/report.pdf", MakePdf(7));
    const ItemTexts texts = {"addon", "from",    "processing", "onerror", "",
                             "extra", "profile", "printers",   "5"};
    EXPECT_EQ(m_list.InsertFileIntoList(path, 1, "/done", texts), 1);
    ASSERT_EQ(m_list.RowCount(), 1);
    const std::string modified = TextOf(0, kColumnModified);
    EXPECT_EQ(modified, FormatDateTime(clock.ToLocal(files.Inspect(path).written)));
    const std::string size = Format("%.1lf", static_cast<double>(MakePdf(7).size()) / 1024.0);
    const std::vector<std::string> expected = {
        "Yes",      path,    "00007", "Ready.",  "/done",      TextOf(0, kColumnCreated),
        modified,   "addon", "from",  size,      "processing", "",
        "printers", "5",     "",      "onerror", "report.pdf", "extra",
        "profile"};
    for (int column = 0; column < kColumnCount; ++column)
        EXPECT_EQ(m_list.Text(0, column), expected[static_cast<std::size_t>(column)])
            << kColumns[column].heading;
}

TEST_F(PrintListTest, TicksAndStatusesFollowTheFile) {
    folder.Write("full.txt", "x");
    folder.Write("empty.txt", "");
    folder.Write("here.prs", "x");
    Insert(folder.PathOf("full.txt"), 1);
    Insert(folder.PathOf("full.txt"), 0);
    Insert(folder.PathOf("empty.txt"), 1);
    Insert(folder.PathOf("missing.txt"), 1);
    Insert(folder.PathOf("here.prs"), 0);
    Insert("none.tra", 0);
    Insert("none.printer", 0);
    Insert("DL;https://host/x.zip", 0);
    Insert("-------Separator-------", 1);
    Insert("-------Separator-------", 0);
    Insert("", 1);
    for (const char* name : {"Thumbs.db", "MyThumbs.db"}) EXPECT_EQ(Insert(folder.Write(name, "x")), 1);
    Insert(folder.Write("thumbs.db", "x"));
    EXPECT_THAT(
        Rows(),
        ElementsAre("Yes|full.txt|Ready.", "No|full.txt|Ready.", "No|empty.txt|Empty File",
                    "No|missing.txt|No File.", "Yes|here.prs|Ready.", "Yes|none.tra|No File.",
                    "Yes|none.printer|No File.", "Yes|x.zip|Ready.", "Yes|-------Separator-------|Separator",
                    "No|-------Separator-------|Separator", "No||No File.", "Yes|thumbs.db|Ready."));
    EXPECT_EQ(TextOf(3, kColumnSizeKb), "");
    EXPECT_EQ(TextOf(2, kColumnSizeKb), "0.0");
    EXPECT_EQ(TextOf(3, kColumnPages), "Unknown");
}

TEST_F(PrintListTest, WhatExistsButCannotBeOpenedSaysWhy) {
    files.FailAlways(FaultyFiles::Call::kOpenForReading, FileResult::kNoAccess);
    Insert("/dev/null", 1);
    EXPECT_EQ(Rows()[0].substr(0, 34), "No|null|Error - Can't open file: i");
    EXPECT_EQ(m_list.ColourListRow(0), RowColour::kError);
}

TEST_F(PrintListTest, PositionsOverrideEachOtherInTheirOrder) {
    for (const char* name : {"a", "b", "c"}) Insert(name);
    m_list.SetPendingPosition(1);
    Insert("pending");
    Insert("appended");
    EXPECT_THAT(Titles(), ElementsAre("a", "pending", "b", "c", "appended"));
    m_list.SetPendingPosition(0);
    m_list.InsertAtSelectedRow(2);
    Insert("selected");
    m_list.SetStartPosition(2);
    Insert("start");
    EXPECT_THAT(Titles(), ElementsAre("a", "start", "pending", "selected", "b", "c", "appended"));
    m_list.SetStartPosition(-1);
    m_list.InsertAtSelectedRow(500);
    Insert("beyond");
    EXPECT_EQ(Titles().back(), "beyond");
}

TEST_F(PrintListTest, TheRunningRowIsFollowedAndReplaced) {
    for (const char* name : {"a", "b2", "b1"}) Insert(name);
    EXPECT_EQ(m_list.InsertFileIntoList("early", kReplaceCurrentRow, "", {}), 0);
    m_list.SetCurrentRow(1);
    m_list.SetPendingPosition(0);
    Insert("first");
    m_list.RemoveRow(1);
    EXPECT_EQ(Insert("/fetched.pdf", kReplaceCurrentRow), 1);
    EXPECT_THAT(Titles(), ElementsAre("first", "fetched.pdf", "b1"));
    m_list.SortByFileTitle();
    EXPECT_EQ(m_list.CurrentRow(), 1);
    m_list.RemoveRow(1);
    EXPECT_EQ(m_list.CurrentRow(), -1);
    EXPECT_EQ(m_list.RowCount(), 2);
}

TEST_F(PrintListTest, CountsTheKindsThatHaveACounter) {
    const std::string postScript = "%!PS\n%%Pages: 3\n";
    for (const char* name : {"a.ps", "b.PS", "c.Ps"}) Insert(folder.Write(name, postScript));
    Insert(folder.Write("d.pcl",
                        "text\f\x1B"
                        "E"));
    Insert(folder.Write("e.Pdf", MakePdf(12)));
    Insert(folder.Write("f.pDF", MakePdf(12)));
    Insert(folder.Write("g.pdf", "no count"));
    Insert(folder.Write("h.ps", ""));
    Insert(folder.Write("i.pdf", ""));
    std::vector<std::string> pages;
    for (int row = 0; row < m_list.RowCount(); ++row) pages.push_back(TextOf(row, kColumnPages));
    EXPECT_THAT(pages, ElementsAre("00003", "00003", "Unknown", "00001", "00012", "Unknown", "Unknown",
                                   "00000", "Unknown"));
    m_options.m_noPdfPages = true;
    Insert(folder.PathOf("a.ps"));
    EXPECT_EQ(TextOf(9, kColumnPages), "Unknown");
}

class OneAddon : public AddonCounter {
public:
    bool CountPages(std::string_view path, int& pages) override {
        pages = path.find("mine") != std::string_view::npos ? 5 : -1;
        return pages > 0;
    }
};

TEST_F(PrintListTest, AddonsCountWhatTheyClaim) {
    OneAddon addon;
    m_list.UseAddons(&addon);
    Insert(folder.Write("mine.doc", "x"));
    Insert(folder.Write("yours.pdf", MakePdf(2)));
    EXPECT_EQ(TextOf(0, kColumnPages), "00005");
    EXPECT_EQ(TextOf(1, kColumnPages), "00002");
}

TEST_F(PrintListTest, MailIsDeletedAndPageRangesAreWritten) {
    m_list.InsertFileIntoList(folder.Write("mail.msg", "x"), 1, "/done", {});
    EXPECT_EQ(TextOf(0, kColumnMoveTo), "qprdelete");
    const std::string pdf = folder.Write("a.pdf", MakePdf(9));
    const auto parametersFor = [&](const char* options, const char* parameters) {
        ItemTexts texts;
        texts.extraOptions = options;
        texts.processingParameters = parameters;
        Insert(pdf, 1, texts);
        return TextOf(m_list.RowCount() - 1, kColumnProcessingParameters);
    };
    EXPECT_EQ(parametersFor("-s2|-e5", ""), "-s2|-e5");
    EXPECT_EQ(parametersFor("-r3 -s4", "-c2"), "-c2|-s4|-e9");
    EXPECT_EQ(parametersFor("-e3", ""), "-s1|-e3");
    EXPECT_EQ(parametersFor("-s5|-e4", ""), "");
    EXPECT_EQ(parametersFor("-sx|-e", ""), "");
    EXPECT_EQ(parametersFor("-s2|-e5", "-s1|-e1"), "-s1|-e1");
}

TEST_F(PrintListTest, TheExportedCallsAlwaysAnswerOne) {
    EXPECT_EQ(m_list.ExInsertItemsIntoList("/none", 0, nullptr), 1);
    EXPECT_EQ(m_list.ExInsertItemsIntoList(nullptr, 1, nullptr), 1);
    EXPECT_EQ(m_list.ExInsertItemsIntoListPos("/b", 1, "/done", 0, "params"), 1);
    EXPECT_EQ(TextOf(0, kColumnAddonParameters), "params");
    EXPECT_EQ(TextOf(2, kColumnMoveTo), "/done");
    EXPECT_EQ(m_list.ExInsertItemsIntoListPos("/c", 1, "", 99, "params"), 1);
    EXPECT_EQ(m_list.ExInsertItemsIntoListPos("/d", 1, "", -1, ""), 1);
    EXPECT_EQ(m_list.RowCount(), 5);
}

TEST_F(PrintListTest, RefreshDerivesStatusAndPagesAnew) {
    Insert(folder.Write("a.pdf", MakePdf(4)));
    Insert(folder.Write("b.ps", "%!PS\n%%Pages: 3\n"));
    Insert(folder.Write("c.txt", "x"));
    Insert("/missing.pdf.txt");
    Insert("-------Separator-------");
    for (int row = 0; row < m_list.RowCount(); ++row) m_list.SetText(row, kColumnStatus, "Done");
    folder.Write("a.pdf", MakePdf(44));
    m_list.RefreshListStatus();
    EXPECT_THAT(Rows(), ElementsAre("Yes|a.pdf|Ready", "Yes|b.ps|Ready", "Yes|c.txt|Ready",
                                    "No|missing.pdf.txt|No File.", "Yes|-------Separator-------|Ready"));
    EXPECT_EQ(TextOf(0, kColumnPages), "00044");
    EXPECT_EQ(TextOf(1, kColumnPages), "3");
    EXPECT_EQ(TextOf(2, kColumnPages), "Unknown");
    m_options.m_pageMask = true;
    m_options.m_noPdfPages = true;
    m_list.RefreshListStatus();
    EXPECT_EQ(TextOf(0, kColumnPages), "00004");  // as it was at insertion
    EXPECT_EQ(TextOf(1, kColumnPages), "00003");
    m_list.SetText(0, kColumnSelected, "No");
    for (const int row : {0, 1}) m_list.SetText(row, kColumnStatus, "Done");
    m_list.ProtectUntickedRows(true);
    m_list.RefreshListStatus();
    EXPECT_EQ(TextOf(0, kColumnStatus), "Done");
    EXPECT_EQ(TextOf(1, kColumnStatus), "Ready");
}

TEST_F(PrintListTest, AListThatChangesWhileItRefreshesDoesNoHarm) {
    for (int i = 0; i < 5; ++i) Insert(folder.Write("a.txt", "x"));
    files.BeforeEach(FaultyFiles::Call::kInspect, [&](std::string_view) {
        loop.Advance(1000);
        m_list.RemoveRow(0);
    });
    m_list.RefreshListStatus();
    EXPECT_LT(m_list.RowCount(), 5);
}

TEST_F(PrintListTest, ColoursFollowTheStatus) {
    struct Case {
        const char* path;
        const char* status;
        RowColour colour;
    };
    for (const Case& item : {Case{"a", "Empty File", RowColour::kError},
                             {"a", "No File.", RowColour::kError},
                             {"-------Separator-------", "No File.", RowColour::kNormal},
                             {"a", "error", RowColour::kNormal},
                             {"a.bat", "Error - x", RowColour::kError},
                             {"a.bat", "Ready", RowColour::kCommand},
                             {"-------Separator-------", "Separator", RowColour::kSeparator}}) {
        m_list.Clear();
        Insert(item.path);
        m_list.SetText(0, kColumnStatus, item.status);
        EXPECT_EQ(m_list.ColourListRow(0), item.colour) << item.path << item.status;
    }
}

TEST_F(PrintListTest, SortsNumbersInTitlesAsNumbers) {
    for (const char* path : {"/z/file10.pdf", "/y/file2.pdf", "/x/file2b.pdf", "plain.txt", "2024-01 p12.ps",
                             "2024-01 p3.ps", "file99999999999999999999.pdf", "/b/file2.pdf", "1.mp3"})
        Insert(path);
    m_list.SortByFileTitle();
    EXPECT_THAT(Titles(),
                ElementsAre("1.mp3", "2024-01 p3.ps", "2024-01 p12.ps", "file2.pdf", "file2.pdf",
                            "file2b.pdf", "file10.pdf", "file99999999999999999999.pdf", "plain.txt"));
    EXPECT_EQ(FolderOf(m_list.Text(3, kColumnFilename)), "/y/");  // equal titles stay in their order
}

}  // namespace
}  // namespace quirepress
