#include "core/append_pdfs.h"

#include <gmock/gmock.h>

#include "documents/qpdf_library.h"
#include "fakes/small_pdf.h"
#include "unit/core/list_fixture.h"

namespace quirepress {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using End = AppendOutcome::End;

class AppendPdfsTest : public ListFixture {
protected:
    AppendPdfsTest() { m_options.m_tempFolder = folder.PathOf("temp"); }

    // Documents "NAME.pdf" whose one page says "(NAME)".
    void Load(const std::vector<std::string>& names) {
        for (const std::string& name : names)
            Insert(folder.Write(name, name == "bad.pdf" ? "junk" : MakeSmallPdf({"(" + name + ")"})));
    }
    AppendOutcome Append() {
        return AppendPdfs(m_append, [this] {
            if (m_beforeEach) m_beforeEach();
            return m_keepGoing;
        });
    }
    // The contents of the pages of the merged file, in order.
    std::string Pages(const AppendOutcome& outcome) {
        const std::string merged = folder.Read("temp/" + std::string(FileTitle(outcome.path)));
        std::string pages;
        for (std::size_t at = merged.find("stream\n("); at != std::string::npos;
             at = merged.find("stream\n(", at + 1))
            pages += merged.substr(at + 7, merged.find(')', at) - at - 6);
        EXPECT_GT(m_library.CountPages(outcome.path, true, ""), 0);
        return pages;
    }
    int FilesInTemp() {
        std::vector<FolderEntry> entries;
        files.ListFolder(m_options.m_tempFolder, entries);
        return static_cast<int>(entries.size());
    }
    void Put(int row, Column column, std::string_view text) { m_list.SetText(row, column, text); }

    QpdfLibrary m_library{*system.files};
    AppendServices m_append{m_list, files, clock, debugLog, m_library, m_options, folder.Path()};
    std::function<void()> m_beforeEach;
};

TEST_F(AppendPdfsTest, TheMergedFileTakesThePlaceOfTheFirst) {
    Load({"note.txt", "a.pdf", "plan.ps", "b.PDF", "off.pdf", "c.pdf"});
    Put(4, kColumnSelected, "No");
    Put(1, kColumnPriority, "7");
    m_list.InsertAtSelectedRow(0);
    AppendOutcome outcome = Append();
    ASSERT_EQ(outcome.end, End::kMerged);
    EXPECT_EQ(Pages(outcome), "(a.pdf)(b.PDF)(c.pdf)");
    EXPECT_THAT(outcome.path, StartsWith(folder.PathOf("temp/QPRMerged_")));
    const std::string title(FileTitle(outcome.path));
    EXPECT_THAT(Rows(), ElementsAre("Yes|note.txt|Ready.", "Yes|" + title + "|Ready.", "No|a.pdf|Done Append",
                                    "Yes|plan.ps|Ready.", "No|b.PDF|Done Append", "No|off.pdf|Ready.",
                                    "No|c.pdf|Done Append"));
    EXPECT_EQ(TextOf(1, kColumnMoveTo), "qprdelete");
    EXPECT_EQ(TextOf(1, kColumnPages), "00003");
    EXPECT_EQ(TextOf(1, kColumnPriority), "7");
    EXPECT_EQ(m_list.CurrentRow(), -1);

    // What the run leaves is a list that prints again.
    TickAppendedRows(m_list);
    outcome.lock.reset();
    DropMergedRows(m_append);
    EXPECT_THAT(Rows(), ElementsAre("Yes|note.txt|Ready.", "Yes|a.pdf|Ready", "Yes|plan.ps|Ready.",
                                    "Yes|b.PDF|Ready", "No|off.pdf|Ready.", "Yes|c.pdf|Ready"));
    EXPECT_EQ(FilesInTemp(), 0);
    EXPECT_EQ(Append().end, End::kMerged);
}

TEST_F(AppendPdfsTest, OneFailureCostsOneRow) {
    Load({"a.pdf", "bad.pdf", "c.pdf"});
    Insert(folder.PathOf("missing.pdf"));
    Put(3, kColumnSelected, "Yes");
    const AppendOutcome outcome = Append();
    ASSERT_EQ(outcome.end, End::kMerged);
    EXPECT_EQ(Pages(outcome), "(a.pdf)(c.pdf)");
    const std::string error = "Error appending file: the file is no PDF, whatever its name says";
    EXPECT_EQ(TextOf(2, kColumnStatus), error);
    EXPECT_EQ(TextOf(4, kColumnStatus), "Error appending file: the file is missing, or can't be opened");
    EXPECT_EQ(m_list.ColourListRow(2), RowColour::kError);
    EXPECT_EQ(m_list.MarkOf(2).outcome, RowOutcome::kFailed);
    EXPECT_EQ(m_list.MarkOf(1).outcome, RowOutcome::kNotSelected);
    ASSERT_EQ(outcome.failures.size(), 2U);
    EXPECT_EQ(outcome.failures[0].path, folder.PathOf("bad.pdf"));
    EXPECT_EQ(outcome.failures[0].error, error);
    TickAppendedRows(m_list);
    EXPECT_EQ(TextOf(2, kColumnSelected), "Yes");
}

TEST_F(AppendPdfsTest, RangesAndProtectedFilesGoThroughTheLibrary) {
    Insert(folder.Write("a.pdf", MakeSmallPdf({"(1)", "(2)", "(3)"})));
    Insert(folder.Write("b.pdf", MakeSmallPdf({"(4)"}, true)));
    Put(0, kColumnProcessingParameters, "-s2");
    Insert(folder.Write("last.pro", "-s2|-e2"));
    Insert(folder.PathOf("a.pdf"));
    Insert(folder.PathOf("a.pdf"));
    Put(4, kColumnExtraOptions, "-e1");
    Insert(folder.PathOf("a.pdf"));
    Put(5, kColumnProcessingParameters, "-sx");
    Insert(folder.Write("junk.pro", "pages 2 to 5"));
    Insert(folder.PathOf("a.pdf"));
    const AppendOutcome outcome = Append();
    EXPECT_EQ(Pages(outcome), "(2)(3)(4)(2)(1)");
    ASSERT_EQ(outcome.failures.size(), 2U);
    const std::string error = "Error appending file: ";
    EXPECT_EQ(outcome.failures[0].error, error + "which pages are meant is unclear: \"-sx\"");
    EXPECT_EQ(outcome.failures[1].error, error + "the processing settings above it can't be used");
    EXPECT_EQ(TextOf(0, kColumnPages), "00005");
    EXPECT_EQ(FilesInTemp(), 2) << "the merged file and its lock";
}

TEST_F(AppendPdfsTest, NothingToMergeChangesNothing) {
    EXPECT_EQ(Append().end, End::kNothing);
    Load({"a.pdf", "b.ps", "off.pdf"});
    Put(2, kColumnSelected, "No");
    EXPECT_EQ(Append().end, End::kNothing);
    EXPECT_THAT(Rows(), ElementsAre("Yes|a.pdf|Ready.", "Yes|b.ps|Ready.", "No|off.pdf|Ready."));
    m_list.Clear();
    Load({"bad.pdf", "bad.pdf"});
    const AppendOutcome outcome = Append();
    EXPECT_EQ(outcome.end, End::kNothing);
    EXPECT_EQ(outcome.failures.size(), 2U);
    EXPECT_EQ(FilesInTemp(), 0);
}

TEST_F(AppendPdfsTest, WhatIsGivenUpLeavesAListThatPrints) {
    Load({"a.pdf", "bad.pdf", "c.pdf"});
    int asked = 0;
    m_beforeEach = [&] { m_keepGoing = ++asked < 3; };
    EXPECT_EQ(Append().end, End::kStopped);
    const auto untouched = ElementsAre("Yes|a.pdf|Ready", "Yes|bad.pdf|Ready", StartsWith("Yes|c.pdf|Ready"));
    EXPECT_THAT(Rows(), untouched);
    EXPECT_EQ(m_list.MarkOf(1).outcome, RowOutcome::kNotSelected);
    EXPECT_EQ(FilesInTemp(), 0);
    asked = 0;
    m_beforeEach = [&] { m_keepGoing = ++asked < 4; };
    EXPECT_EQ(Append().end, End::kStopped) << "behind the last";
    EXPECT_THAT(Rows(), untouched);
    EXPECT_EQ(FilesInTemp(), 0);
    m_beforeEach = {};
    m_keepGoing = true;
    for (const FaultyFiles::Call call : {FaultyFiles::Call::kTryLock, FaultyFiles::Call::kOpenForWriting,
                                         FaultyFiles::Call::kWrite, FaultyFiles::Call::kRename}) {
        files.FailOnce(call, FileResult::kNoSpace);
        EXPECT_EQ(Append().end, End::kNotWritten);
        EXPECT_THAT(Rows(), untouched);
    }
    EXPECT_EQ(FilesInTemp(), 0);
}

TEST_F(AppendPdfsTest, TheListMayChangeMeanwhile) {
    Load({"a.pdf", "b.pdf", "c.pdf", "d.pdf"});
    int asked = 0;
    m_beforeEach = [&] {
        ++asked;
        if (asked == 2) m_list.RemoveRow(0);
        if (asked == 3) Load({"late.pdf"});
        if (asked == 4) m_list.InsertFileAtRow(0, folder.Write("new.ps", "%!PS\n"), 1, "", {});
    };
    const AppendOutcome outcome = Append();
    EXPECT_EQ(Pages(outcome), "(a.pdf)(b.pdf)(c.pdf)(d.pdf)(late.pdf)");
    const std::string title(FileTitle(outcome.path));
    EXPECT_THAT(Titles(), ElementsAre("new.ps", title, "b.pdf", "c.pdf", "d.pdf", "late.pdf"));
}

TEST_F(AppendPdfsTest, LeftoversGoAfterADayUnlessAProgramUsesThem) {
    const std::string old = folder.Write("temp/QPRMerged_11.pdf", "old");
    folder.Write("temp/QPRMerged_11.pdf.lock", "");
    const std::string used = folder.Write("temp/QPRMerged_12.pdf", "used");
    folder.Write("temp/report.pdf", "not ours");
    FileResult result = FileResult::kDone;
    std::unique_ptr<FileLock> lock = files.TryLock(used + ".lock", result);
    constexpr Instant kHour = Instant{3600} * 1'000'000'000;
    clock.SetNow(files.Inspect(old).written + 23 * kHour);
    DropMergedRows(m_append);
    EXPECT_EQ(FilesInTemp(), 5);
    clock.SetNow(files.Inspect(used).written + 25 * kHour);
    DropMergedRows(m_append);
    EXPECT_FALSE(folder.Has("temp/QPRMerged_11.pdf"));
    EXPECT_TRUE(folder.Has("temp/QPRMerged_12.pdf"));
    EXPECT_EQ(FilesInTemp(), 3);
    lock.reset();
    DropMergedRows(m_append);
    EXPECT_EQ(FilesInTemp(), 1);
    EXPECT_TRUE(folder.Has("temp/report.pdf"));
}

}  // namespace
}  // namespace quirepress
