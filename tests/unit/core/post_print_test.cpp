#include "core/post_print.h"

#include "fakes/halting_files.h"
#include "platform/file_tools.h"
#include "unit/core/post_print_fixture.h"

namespace quirepress {
namespace {

using Call = FaultyFiles::Call;
using Box = FakePrompts::Box;

constexpr std::string_view kHint =
    "\n\nto log this instead of popup go into General options and turn on error log";

class PostPrintTest : public PostPrintFixture {
protected:
    RowHandled HandleRow(const std::string& path, const std::string& moveTo, PrintEnd end,
                         const std::string& moveToOnError = "", const std::string& jobFile = "") {
        return m_postPrint.Handle(
            {path, moveTo, moveToOnError, std::string(FileTitle(path)), jobFile, "Laser"}, end);
    }
};

TEST_F(PostPrintTest, DoesWhatTheMoveToSays) {
    const std::string out = PathOf("out/new");
    EXPECT_FALSE(Check(Put(), ""));
    EXPECT_FALSE(Check(Put(), "qprjobdelete"));
    EXPECT_TRUE(Has("in/a.pdf"));
    EXPECT_TRUE(Check(PathOf("in/a.pdf"), "copy:" + out));
    EXPECT_EQ(Read("out/new/a.pdf"), "bytes");
    EXPECT_EQ(prompts.statusTexts.back(), "Copying file to:" + JoinPath(out, "a.pdf"));
    std::filesystem::remove(PathOf("out/new/a.pdf"));
    EXPECT_TRUE(Check(PathOf("in/a.pdf"), out));
    EXPECT_EQ(Read("out/new/a.pdf"), "bytes");
    EXPECT_EQ(prompts.statusTexts.back(), "Moving file to:" + JoinPath(out, "a.pdf"));
    EXPECT_FALSE(Has("in/a.pdf"));
    for (const char* marker : {"qprdelete", "qprdelete+job"}) {
        EXPECT_TRUE(Check(Put(), marker));
        EXPECT_FALSE(Has("in/a.pdf")) << marker;
        EXPECT_EQ(prompts.statusTexts.back(), "Delete file status 1");
    }
    EXPECT_TRUE(Check(Put("in/QPRMerged_1.pdf"), ""));
    EXPECT_FALSE(Has("in/QPRMerged_1.pdf"));
    EXPECT_TRUE(Check(Put(), "below"));  // the working folder
    EXPECT_TRUE(Has("below/a.pdf"));
    EXPECT_TRUE(m_postPrint.CheckForFileOnMove(Put(), out, "Invoice 7"));
    EXPECT_TRUE(Has("out/new/Invoice 7.pdf"));
    EXPECT_TRUE(m_postPrint.MoveFromCommandLine(Put(), out, "by hand.pdf"));
    EXPECT_TRUE(Has("out/new/by hand.pdf"));
    EXPECT_TRUE(prompts.boxes.empty() && m_notices.all.empty());
}

TEST_F(PostPrintTest, TellsThatAFileWasNotDeleted) {
    OpenDebugLog();
    const std::string path = Put();
    files.FailAlways(Call::kErase, FileResult::kBusy);
    EXPECT_FALSE(Check(path, "qprdelete"));
    EXPECT_EQ(files.CountOf(Call::kErase), 200);
    EXPECT_EQ(Count(DebugText(), "Delete file status 0\r\n"), 200);
    EXPECT_TRUE(DebugText().ends_with("DeleteFile: 0, 0=error moving file  " + path + " to qprdelete\r\n"));
    const Box box = {"Delete Error", "File didn't delete, please check acrobat\n\nFROM:" + path};
    EXPECT_EQ(prompts.boxes, (std::vector<Box>{{box.title, box.text + std::string(kHint)}}));
    ASSERT_EQ(m_notices.all.size(), 1U);
    EXPECT_EQ(m_notices.all[0].kind, 2);
    EXPECT_EQ(m_notices.all[0].body,
              "Date/Time:2024-03-01 12:00:49\r\nStatus: Delete Error\r\nFilename:" + path);

    files.Heal();
    std::filesystem::remove(path);
    EXPECT_TRUE(Check(path, "qprdelete"));  // somebody else was quicker
    std::filesystem::create_directory(path);
    EXPECT_FALSE(Check(path, "qprdelete"));
    EXPECT_TRUE(Has("in/a.pdf"));
}

TEST_F(PostPrintTest, TellsThatAFileWasNotMoved) {
    const std::string path = Put();
    files.FailAlways(Call::kRename, FileResult::kNoAccess);
    EXPECT_FALSE(Check(path, PathOf("out")));
    EXPECT_EQ(prompts.boxes,
              (std::vector<Box>{{"Move Error", "File didn't move\n\nFROM:" + path + "\nTO:" +
                                                   JoinPath(PathOf("out"), "a.pdf") + std::string(kHint) +
                                                   " (this message does not show in NT services)"}}));
    EXPECT_TRUE(m_notices.all.at(0).body.ends_with("\r\nStatus: Move Error\r\nFilename:" + path));
    EXPECT_EQ(Read("in/a.pdf"), "bytes");

    m_options.m_errorLog = true;
    EXPECT_EQ(HandleRow(path, PathOf("out"), PrintEnd::kPrinted), RowHandled::kFailed);
    EXPECT_EQ(prompts.boxes.size(), 1U);
    for (const std::string& part : {path, JoinPath(PathOf("out"), "a.pdf"),
                                    std::string("Move Error: access is denied"), std::string("Laser")})
        EXPECT_EQ(Count(Read("error.log"), part), 1) << part;
    EXPECT_EQ(m_notices.all.size(), 2U);
    // A log that cannot be written is told once, at the end.
    files.FailAlways(Call::kOpenForWriting, FileResult::kNoSpace);
    EXPECT_FALSE(Check(path, PathOf("out")));
    EXPECT_FALSE(Check(path, PathOf("out")));
    EXPECT_EQ(prompts.boxes.size(), 1U);
    m_postPrint.AtRunEnd(m_list, 1);
    m_postPrint.AtRunEnd(m_list, 1);
    ASSERT_EQ(prompts.boxes.size(), 2U);
    EXPECT_EQ(prompts.boxes[1].title, "Log File Error");
}

TEST_F(PostPrintTest, TriesAgainAsOftenAsTheOptionsSay) {
    const std::string path = Put();
    const auto attempts = [&](int extra) {
        m_options.m_extraMoveRetry = extra;
        const int before = files.CountOf(Call::kRename);
        const long long start = loop.MonotonicMilliseconds();
        Check(path, PathOf("out"));
        const int count = files.CountOf(Call::kRename) - before;
        EXPECT_EQ(loop.MonotonicMilliseconds() - start, 250 * (count - 1));
        return count;
    };
    files.FailAlways(Call::kRename, FileResult::kBusy);
    EXPECT_EQ(attempts(0), 200);
    EXPECT_EQ(attempts(5), 205);
    EXPECT_EQ(attempts(-5), 200);
    int left = 2;
    m_postPrint.UseStop([&] { return --left < 0; });
    EXPECT_EQ(attempts(0), 2);
    m_postPrint.UseStop([] { return true; });
    EXPECT_EQ(attempts(0), 1);
    EXPECT_TRUE(Has("in/a.pdf"));
    m_postPrint.UseStop([] { return false; });
    files.Heal();
    files.FailOnce(Call::kRename, FileResult::kBusy);
    EXPECT_EQ(attempts(0), 2);
    EXPECT_TRUE(Has("out/a.pdf"));
    // What no later attempt can mend.
    const long long start = loop.MonotonicMilliseconds();
    for (const std::string& target : {std::string("out\0x", 5), std::string(300, 'n'),
                                      std::string("in/a.pdf"), std::string("in/a.pdf/x")})
        EXPECT_FALSE(Check(Put(), PathOf(target)));
    EXPECT_FALSE(Check(PathOf("in"), PathOf("out")));
    EXPECT_FALSE(Check(PathOf("in"), "qprdelete"));
    files.FailAlways(Call::kRename, FileResult::kNoSpace);
    EXPECT_FALSE(Check(Put(), PathOf("out")));
    EXPECT_EQ(loop.MonotonicMilliseconds(), start);
    // A folder that has refused one file for as long gives the next one attempt, until the run ends.
    files.FailAlways(Call::kRename, FileResult::kNoAccess);
    EXPECT_EQ(attempts(0), 200);
    EXPECT_EQ(attempts(0), 1);
    m_postPrint.AtRunEnd(m_list, 1);
    EXPECT_EQ(attempts(0), 200);
    files.Heal();
    EXPECT_TRUE(Check(path, PathOf("out")));
    Put();
    files.FailAlways(Call::kRename, FileResult::kNoAccess);
    EXPECT_EQ(attempts(0), 200) << "it has taken one meanwhile";
    EXPECT_EQ(prompts.boxes.size(), 16U);
}

TEST_F(PostPrintTest, PausesBeforeMovesOnly) {
    m_options.m_pauseMove = 3;
    const auto elapsed = [&](const std::string& moveTo) {
        const long long start = loop.MonotonicMilliseconds();
        EXPECT_TRUE(Check(Put(), moveTo));
        return loop.MonotonicMilliseconds() - start;
    };
    const int waits = loop.WaitCount();
    EXPECT_EQ(elapsed(PathOf("out")), 3'000);
    EXPECT_EQ(loop.WaitCount() - waits, 30);
    EXPECT_EQ(elapsed("qprdelete"), 0);
    m_postPrint.UseStop([&] { return loop.WaitCount() > waits + 40; });
    EXPECT_EQ(elapsed("copy:" + PathOf("out")), 1'100);
    EXPECT_TRUE(Has("out/a_v1.pdf"));
}

TEST_F(PostPrintTest, NeverOverwritesAFile) {
    for (const char* name : {"out/a.pdf", "out/a_v1.pdf", "out/a_v2.pdf", "out/a_v3.pdf", "out/b"})
        Put(name, name);
    EXPECT_TRUE(Check(Put(), PathOf("out")));
    EXPECT_EQ(Read("out/a_v4.pdf"), "bytes");
    EXPECT_TRUE(Check(Put("in/b"), "copy:" + PathOf("out")));
    EXPECT_EQ(Read("out/b_v1"), "bytes");

    m_postPrint.RenameOldFiles(true);
    EXPECT_TRUE(Check(Put("in/a.pdf", "newest"), PathOf("out")));
    EXPECT_EQ(Read("out/a.pdf"), "newest");
    EXPECT_EQ(Read("out/a_v5.pdf"), "out/a.pdf");
    EXPECT_TRUE(Check(Put("in/b", "newest"), "copy:" + PathOf("out")));
    EXPECT_EQ(Read("out/b") + Read("out/b_v2"), "newestout/b");
    // A folder of that name is nobody's old file.
    Put("out/c.pdf/x");
    EXPECT_TRUE(Check(Put("in/c.pdf"), PathOf("out")));
    EXPECT_TRUE(Has("out/c.pdf/x") && Has("out/c_v1.pdf"));
    // Nor is one in the way of itself.
    EXPECT_TRUE(Check(PathOf("out/b"), PathOf("out")));
    EXPECT_TRUE(Check(PathOf("out/b"), "copy:" + PathOf("out/../out")));
    EXPECT_TRUE(Has("out/b") && !Has("out/b_v3"));
    EXPECT_TRUE(prompts.boxes.empty());
}

TEST_F(PostPrintTest, TellsThatAnOldFileWasNotRenamed) {
    m_postPrint.RenameOldFiles(true);
    const std::string path = Put();
    Put("out/a.pdf", "old");
    files.BeforeEach(Call::kRename, [&](std::string_view from) {
        if (from != path) files.FailOnce(Call::kRename, FileResult::kBusy);
    });
    EXPECT_FALSE(Check(path, PathOf("out")));
    EXPECT_EQ(files.CountOf(Call::kRename), 400) << "two for each attempt";
    ASSERT_EQ(prompts.boxes.size(), 1U);
    EXPECT_EQ(prompts.boxes[0].title, "Rename Error");
    EXPECT_TRUE(m_notices.all.at(0).body.ends_with("\r\nStatus: Rename Error\r\nFilename:" + path));
    EXPECT_EQ(Read("out/a.pdf") + Read("in/a.pdf"), "oldbytes");
    // It keeps its name when it is the new one that does not come.
    files.BeforeEach(Call::kRename, [&](std::string_view from) {
        if (from == path && Has("out/a_v1.pdf")) files.FailOnce(Call::kRename, FileResult::kBusy);
    });
    EXPECT_FALSE(Check(path, PathOf("out")));
    EXPECT_EQ(prompts.boxes.back().title, "Move Error");
    EXPECT_EQ(Read("out/a.pdf") + Read("in/a.pdf"), "oldbytes");
    EXPECT_FALSE(Has("out/a_v1.pdf"));
}

// Also lists versions of a.pdf that are not there, from 1 on.
class CrowdedFiles : public FaultyFiles {
public:
    using FaultyFiles::FaultyFiles;
    FileResult ListFolder(std::string_view path, std::vector<FolderEntry>& entries) override {
        for (int i = 1; i <= versions; ++i)
            entries.push_back({"a_v" + std::to_string(i) + ".pdf", FileKind::kRegular});
        return FaultyFiles::ListFolder(path, entries);
    }
    int versions = 0;
};

TEST_F(PostPrintTest, StopsWhenEveryVersionIsTaken) {
    CrowdedFiles crowded(*system.files);
    PostPrint postPrint = MakePostPrint(crowded);
    Put("out/a.pdf", "old");
    crowded.versions = 999'998;
    EXPECT_TRUE(postPrint.CheckForFileOnMove(Put(), PathOf("out"), "a.pdf"));
    EXPECT_EQ(Read("out/a_v999999.pdf"), "bytes");
    EXPECT_EQ(crowded.CountOf(Call::kRename), 2);
    EXPECT_FALSE(postPrint.CheckForFileOnMove(Put(), PathOf("out"), "a.pdf"));
    EXPECT_EQ(
        prompts.boxes,
        (std::vector<Box>{{"Limit Reached!",
                           "Sorry same name limit reached!,\nyou must delete some of the old versions to "
                           "continue."}}));
    EXPECT_EQ(loop.WaitCount(), 0);
    EXPECT_TRUE(Has("in/a.pdf"));
}

TEST_F(PostPrintTest, KeepsTheSourceWhateverIsWrongWithTheTarget) {
    const std::string path = Put();
    Put("file");
    m_options.m_errorLog = true;
    EXPECT_FALSE(Check(path, PathOf("file")));
    EXPECT_FALSE(Check(path, PathOf("file/below")));
    EXPECT_EQ(Count(Read("error.log"), "Move Error: the folder can't be made: a file has its name"), 2);
    m_options.m_errorLog = false;
    EXPECT_FALSE(Check(path, "copy:"));
    files.FillDiskAfter(3);
    EXPECT_FALSE(Check(path, "copy:" + PathOf("out")));
    files.Heal();
    files.FailAlways(Call::kMakeFolders, FileResult::kNoAccess);
    EXPECT_FALSE(Check(path, PathOf("new")));
    files.Heal();
    EXPECT_EQ(Read("in/a.pdf"), "bytes");
    EXPECT_EQ(Read("file"), "bytes");
    std::vector<FolderEntry> entries;
    files.ListFolder(PathOf("out"), entries);
    EXPECT_TRUE(entries.empty());
    EXPECT_FALSE(Check(PathOf("in/gone.pdf"), PathOf("out")));
    EXPECT_FALSE(Check(PathOf("in"), PathOf("out")));  // a folder is no document
    EXPECT_EQ(prompts.boxes.size(), 5U);
}

class OtherVolumeTest : public PostPrintTest {
protected:
    OtherVolumeTest() { m_halting.PutOnOtherVolume(PathOf("out")); }
    bool CheckAcross(const std::string& moveTo) {
        return m_acrossVolumes.CheckForFileOnMove(PathOf("in/a.pdf"), moveTo, "a.pdf");
    }

    HaltingFiles m_halting{*system.files};
    FaultyFiles m_faulty{m_halting};
    PostPrint m_acrossVolumes = MakePostPrint(m_faulty);
};

TEST_F(OtherVolumeTest, CopiesOnceHoweverOftenTheSourceCannotBeErased) {
    const std::string path = Put();
    m_faulty.BeforeEach(Call::kErase, [&](std::string_view erased) {
        if (erased == path) m_faulty.FailOnce(Call::kErase, FileResult::kBusy);
    });
    EXPECT_FALSE(CheckAcross(PathOf("out")));
    EXPECT_EQ(Read("in/a.pdf"), "bytes");
    EXPECT_FALSE(Has("out/a.pdf") || Has("out/a_v1.pdf"));
    EXPECT_EQ(m_faulty.CountOf(Call::kWrite), 1);
    // It can be erased later.
    int left = 3;
    m_faulty.BeforeEach(Call::kErase, [&](std::string_view) {
        if (--left > 0) m_faulty.FailOnce(Call::kErase, FileResult::kBusy);
    });
    EXPECT_TRUE(CheckAcross(PathOf("out")));
    EXPECT_EQ(Read("out/a.pdf"), "bytes");
    EXPECT_FALSE(Has("in/a.pdf"));
}

// A document that grows while it is copied must arrive with all that it has come to hold.
TEST_F(OtherVolumeTest, CopiesASourceAnewThatHasChanged) {
    Put();
    int writes = 0;
    m_faulty.BeforeEach(Call::kFlushToDisk, [&](std::string_view) {
        if (++writes == 1) Put("in/a.pdf", "bytes and more");
    });
    EXPECT_TRUE(CheckAcross(PathOf("out")));
    EXPECT_EQ(Read("out/a.pdf"), "bytes and more");
    writes = 0;
    Put("in/a.pdf", "b");
    EXPECT_TRUE(CheckAcross("copy:" + PathOf("copies")));
    EXPECT_EQ(Read("copies/a.pdf"), "bytes and more");
    int erasures = 0;
    Put("in/a.pdf", "first");
    m_faulty.BeforeEach(Call::kErase, [&](std::string_view) {
        if (++erasures > 1) return;
        Put("in/a.pdf", "second one");
        m_faulty.FailOnce(Call::kErase, FileResult::kBusy);
    });
    EXPECT_TRUE(CheckAcross(PathOf("out")));
    EXPECT_EQ(Read("out/a_v1.pdf"), "second one");
    EXPECT_FALSE(Has("in/a.pdf") || Has("out/a_v2.pdf"));
}

// Killed at any change: each document is whole where it was or where it goes, and no other file is touched.
TEST_F(OtherVolumeTest, LosesNothingWhereverItIsKilled) {
    const std::string bytes(300'000, 'b');
    for (const char* target : {"out", "near", "copy:out"}) {
        for (const bool renamesOld : {false, true}) {
            bool isWhole = false;
            for (int changes = 0; !isWhole; ++changes) {
                for (const char* name : {"in", "out", "near"}) EraseTree(*system.files, PathOf(name));
                Put("in/a.pdf", bytes);
                for (const char* name : {"out/a.pdf", "near/a.pdf"}) Put(name, "old");
                HaltingFiles halting(*system.files);
                halting.PutOnOtherVolume(PathOf("out"));
                halting.HaltAfter(changes);
                PostPrint postPrint = MakePostPrint(halting);
                postPrint.RenameOldFiles(renamesOld);
                postPrint.UseStop([] { return true; });
                postPrint.CheckForFileOnMove(PathOf("in/a.pdf"), target, "a.pdf");
                isWhole = !halting.HasHalted();

                int whole = Read("in/a.pdf") == bytes ? 1 : 0;
                int old = 0;
                for (const char* where : {"out", "near"})
                    for (const char* name : {"/a.pdf", "/a_v1.pdf"}) {
                        const std::string read = Read(where + std::string(name));
                        whole += read == bytes ? 1 : 0;
                        old += read == "old" ? 1 : 0;
                        EXPECT_TRUE(read.empty() || read == bytes || read == "old") << target << changes;
                    }
                EXPECT_GE(whole, 1) << target << ", " << changes;
                EXPECT_EQ(old, 2) << target << ", " << changes;
                ASSERT_LT(changes, 100);
                const bool isCopy = target[0] == 'c';
                EXPECT_TRUE(!isWhole || Has("in/a.pdf") == isCopy) << target;
            }
        }
    }
}

TEST_F(PostPrintTest, HandlesARowByTheEndOfItsPrint) {
    const std::string out = PathOf("out"), bad = PathOf("bad");
    EXPECT_EQ(HandleRow(Put(), out, PrintEnd::kPrinted, bad), RowHandled::kBrought);
    EXPECT_TRUE(Has("out/a.pdf"));
    EXPECT_EQ(HandleRow(Put(), "qprdelete", PrintEnd::kFailed, bad), RowHandled::kBrought);
    EXPECT_TRUE(Has("bad/a.pdf"));
    EXPECT_EQ(HandleRow(Put(), "qprdelete", PrintEnd::kFailed), RowHandled::kLeft);
    EXPECT_EQ(HandleRow(Put("in/QPRMerged_1.pdf"), "qprdelete", PrintEnd::kFailed, bad), RowHandled::kLeft);
    EXPECT_TRUE(Has("in/a.pdf") && Has("in/QPRMerged_1.pdf"));
    // What may not have come out whole is moved, but never deleted.
    EXPECT_EQ(HandleRow(Put(), "qprdelete", PrintEnd::kDoubtful), RowHandled::kLeft);
    EXPECT_EQ(HandleRow(Put(), "qprdelete", PrintEnd::kDoubtful, "qprdelete"), RowHandled::kLeft);
    EXPECT_EQ(HandleRow(Put(), "", PrintEnd::kDoubtful, bad), RowHandled::kLeft);
    EXPECT_TRUE(Has("in/a.pdf"));
    EXPECT_EQ(HandleRow(Put(), out, PrintEnd::kDoubtful, bad), RowHandled::kBrought);
    EXPECT_TRUE(Has("out/a_v1.pdf"));
    EXPECT_EQ(HandleRow(Put(), "qprdelete", PrintEnd::kDoubtful, bad), RowHandled::kBrought);
    EXPECT_TRUE(Has("bad/a_v1.pdf"));
    // Only documents.
    EXPECT_EQ(HandleRow(Put("in/x.prs"), out, PrintEnd::kPrinted), RowHandled::kLeft);
    EXPECT_EQ(HandleRow("-------Separator-------", out, PrintEnd::kPrinted), RowHandled::kLeft);
    // A row that failed because its file is gone costs no time.
    EXPECT_EQ(HandleRow(PathOf("in/gone.pdf"), out, PrintEnd::kFailed, bad), RowHandled::kLeft);
    EXPECT_EQ(loop.WaitCount(), 0);
}

TEST_F(PostPrintTest, TellsAtTheEndWhatItHasDone) {
    m_postPrint.AtRunEnd(m_list, 1);
    EXPECT_TRUE(m_notices.all.empty());
    const std::string out = PathOf("out");
    HandleRow(Put("in/a.pdf"), out, PrintEnd::kPrinted);
    HandleRow(Put("in/b.pdf"), "copy:" + out, PrintEnd::kPrinted);
    HandleRow(Put("in/c.pdf"), "qprdelete", PrintEnd::kPrinted);
    HandleRow(Put("in/d.pdf"), "", PrintEnd::kPrinted);
    m_postPrint.AtRunEnd(m_list, 1);
    m_postPrint.AtRunEnd(m_list, 1);
    ASSERT_EQ(m_notices.all.size(), 1U);
    EXPECT_EQ(m_notices.all[0].kind, 5);
    EXPECT_EQ(m_notices.all[0].body,
              "Date/Time:2024-03-01 12:00:00\r\nStatus: Print(s) Finished\r\nFilename:" + PathOf("in/a.pdf") +
                  ", moved to " + JoinPath(out, "a.pdf") + "\r\nFilename:" + PathOf("in/b.pdf") +
                  ", copied to " + JoinPath(out, "b.pdf") + "\r\nFilename:" + PathOf("in/c.pdf") +
                  ", deleted\r\n");
}

// One job for each case: the two rows that it brings, and how they end.
TEST_F(PostPrintTest, DeletesJobFilesOfWhichEverythingWasPrinted) {
    struct Case {
        const char* moveTo;
        PrintEnd first, second;
        bool isDeleted;
    };
    constexpr PrintEnd kPrinted = PrintEnd::kPrinted;
    for (const Case& item : {Case{"qprjobdelete", kPrinted, kPrinted, true},
                             {"qprdelete+job", kPrinted, kPrinted, true},
                             {"qprdelete", kPrinted, kPrinted, false},
                             {"", kPrinted, kPrinted, false},
                             {"qprjobdelete", kPrinted, PrintEnd::kFailed, false},
                             {"qprdelete+job", PrintEnd::kDoubtful, kPrinted, false}}) {
        m_list.Clear();
        Put("in/a.ps");
        Put("in/b.ps");
        const std::string job = Put("in/night.job", "a.ps\r\nb.ps\r\n");
        m_list.InsertFileIntoList(job, 1, item.moveTo, {});
        ASSERT_EQ(m_list.RowCount(), 2);
        const PrintEnd ends[] = {item.first, item.second};
        for (int row = 0; row < 2; ++row) {
            const bool isPrinted = ends[row] != PrintEnd::kFailed;
            m_list.MarkOf(row) = {1, isPrinted ? 1 : 0, isPrinted ? RowOutcome::kDone : RowOutcome::kFailed};
            m_postPrint.Handle(ReadPrintedRow(m_list, row, "Laser"), ends[row]);
            EXPECT_TRUE(Has("in/night.job"));
        }
        m_postPrint.AtRunEnd(m_list, 1);
        EXPECT_EQ(Has("in/night.job"), !item.isDeleted) << item.moveTo;
    }
}

TEST_F(PostPrintTest, KeepsTheJobFileOfRowsThatWereNotReached) {
    Put("in/a.ps");
    const std::string inner = Put("in/inner.job", "a.ps\r\na.ps\r\n");
    const std::string outer = Put("in/outer.job", "inner.job\r\na.ps\r\n");
    m_list.InsertFileIntoList(outer, 1, "qprjobdelete", {});
    ASSERT_EQ(m_list.RowCount(), 3);
    EXPECT_EQ(m_list.JobFileOf(0), inner);
    EXPECT_EQ(m_list.JobFileOf(2), outer);
    for (const int row : {0, 2}) {
        m_list.MarkOf(row) = {1, 1, RowOutcome::kDone};
        m_postPrint.Handle(ReadPrintedRow(m_list, row, ""), PrintEnd::kPrinted);
    }
    m_postPrint.AtRunEnd(m_list, 1);
    EXPECT_TRUE(Has("in/inner.job"));
    EXPECT_FALSE(Has("in/outer.job"));
    // A walk is missing.
    m_list.MarkOf(1) = {1, 1, RowOutcome::kDone};
    m_postPrint.Handle(ReadPrintedRow(m_list, 0, ""), PrintEnd::kPrinted);
    m_postPrint.AtRunEnd(m_list, 2);
    EXPECT_TRUE(Has("in/inner.job"));
    // A job file that was not taken in to its end names none of its rows.
    m_list.Clear();
    files.BeforeEach(Call::kInspect, [&](std::string_view path) { m_keepGoing = path == inner; });
    m_list.InsertFileIntoList(inner, 1, "qprjobdelete", {});
    ASSERT_EQ(m_list.RowCount(), 1);
    EXPECT_EQ(m_list.JobFileOf(0), "");
}

}  // namespace
}  // namespace quirepress
