#include "core/run_snapshot.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "core/print_run_ways.h"
#include "fakes/halting_files.h"
#include "unit/core/print_run_fixture.h"

namespace quirepress {
namespace {

class RunSnapshotTest : public testing::Test, protected RunStage<FakeSpooler> {
protected:
    void MakeRows() {
        for (const auto& entry : std::filesystem::directory_iterator(folder.Path()))
            std::filesystem::remove(entry.path());
        list.Clear();
        for (const char* name : {"a.ps", "b%20\n\t;c.ps", "d.ps", "e.ps"}) AddFile(name);
    }

    int NextRow(int copy) {
        for (int i = 1; i <= list.RowCount(); ++i) {
            const int row = (list.CurrentRow() + i) % list.RowCount();
            if (list.MarkOf(row).pass < copy) return row;
        }
        return -1;
    }

    void FinishAt(int row, int copy, std::string_view status, RowOutcome outcome) {
        RunMark& mark = list.MarkOf(row);
        mark.pass = copy;
        mark.outcome = outcome;
        if (outcome == RowOutcome::kDone) ++mark.printed;
        list.SetText(row, kColumnStatus, status);
    }

    SnapshotResult Load(CutOffRun& cutOff) {
        return RunSnapshot(*services.files, WithTrailingSeparator(folder.Path())).Load(cutOff);
    }
};

TEST_F(RunSnapshotTest, ComesBackWithEveryTextAndMark) {
    MakeRows();
    CutOffRun cutOff;
    EXPECT_EQ(Load(cutOff), SnapshotResult::kNone);
    {
        RunSnapshot first(files, WithTrailingSeparator(folder.Path()));
        ASSERT_EQ(first.Create(list, {"Laser\t2", 3}, 1), "");
        EXPECT_TRUE(first.NoteBegun(list, 0, 1));
        FinishAt(0, 1, "Error - \"x\"\n", RowOutcome::kFailed);
        EXPECT_TRUE(first.NoteFinished(list, 0));
        list.SetText(0, kColumnStatus, "Error, not moved: \tx");
        first.NoteFiled(list, 0);
        EXPECT_TRUE(first.NoteBegun(list, 1, 1));
        list.SetText(1, kColumnFilename, "fetched.ps");
        first.NoteFetched(list, 1);
        first.NotePrinter(list, 1, "Plotter");
        EXPECT_EQ(Load(cutOff), SnapshotResult::kInUse);
        RunSnapshot second(files, WithTrailingSeparator(folder.Path()));
        EXPECT_EQ(second.Create(list, {"Laser", 1}, 1), kSnapshotInUse);
        EXPECT_FALSE(second.Discard());
    }
    ASSERT_EQ(Load(cutOff), SnapshotResult::kLoaded);
    EXPECT_EQ(cutOff.printer, "Laser\t2");
    EXPECT_EQ(cutOff.copies, 3);
    EXPECT_EQ(cutOff.copy, 1);
    EXPECT_EQ(cutOff.rowAtWork, 1);
    EXPECT_EQ(cutOff.printerAtWork, "Plotter");
    ASSERT_EQ(cutOff.rows.size(), 4U);
    EXPECT_EQ(cutOff.rows[0].texts[kColumnStatus], "Error, not moved: \tx");
    EXPECT_TRUE(cutOff.rows[0].mark.isFiled);
    EXPECT_EQ(cutOff.rows[0].mark.outcome, RowOutcome::kFailed);
    for (int row = 0; row < 4; ++row)
        EXPECT_EQ(cutOff.rows[row].texts[kColumnFilename], list.Text(row, kColumnFilename));

    EXPECT_TRUE(RunSnapshot(files, WithTrailingSeparator(folder.Path())).Discard());
    EXPECT_EQ(Load(cutOff), SnapshotResult::kNone);
}

// Two walks over the rows, in the run's order: downwards, and then what has come in above meanwhile.
TEST_F(RunSnapshotTest, WhereverItIsCutOffNoRowIsDoneTwiceOrForgotten) {
    int halts = 0;
    for (bool isWhole = false; !isWhole; ++halts) {
        MakeRows();
        std::map<std::string, int> begun, finished;  // how often, by file name
        HaltingFiles halting(*services.files);
        halting.HaltAfter(halts);
        const auto goThrough = [&] {
            RunSnapshot written(halting, WithTrailingSeparator(folder.Path()));
            if (!written.Create(list, {"Laser", 2}, 1).empty()) return;
            list.SetCurrentRow(-1);
            for (int copy = 1; copy <= 2; ++copy) {
                for (int row = NextRow(copy); row >= 0; row = NextRow(copy)) {
                    list.SetCurrentRow(row);
                    list.MarkOf(row).pass = copy;
                    const std::string name = Text(row, kColumnFilename);
                    if (!written.NoteBegun(list, row, copy) || halting.HasHalted()) return;
                    ++begun[name];
                    if (copy == 1 && name.ends_with("a.ps") && list.RowCount() == 4) {
                        list.SetPendingPosition(0);
                        AddFile("late.ps");
                    }
                    ++finished[name];
                    row = list.CurrentRow();
                    FinishAt(row, copy, "Done", RowOutcome::kDone);
                    if (!written.NoteFinished(list, row) || halting.HasHalted()) return;
                }
            }
        };
        goThrough();
        isWhole = !halting.HasHalted();
        CutOffRun cutOff;
        if (Load(cutOff) != SnapshotResult::kLoaded) {
            EXPECT_TRUE(begun.empty()) << halts;
            continue;
        }
        for (int row = 0; row < static_cast<int>(cutOff.rows.size()); ++row) {
            const std::string& name = cutOff.rows[row].texts[kColumnFilename];
            const int passes = cutOff.rows[row].mark.pass;
            EXPECT_LE(begun[name], passes + (row == cutOff.rowAtWork ? 1 : 0))
                << name << " would be printed again, halted at " << halts;
            if (row != cutOff.rowAtWork) {
                EXPECT_EQ(finished[name], passes) << name << ", halted at " << halts;
            }
        }
    }
    EXPECT_GT(halts, 60);
}

// Documents whose pages are in a merged file end with it, before the rows between them.
TEST_F(RunSnapshotTest, ARowThatEndsOutOfItsTurnFinishesNoOther) {
    MakeRows();
    RunSnapshot written(files, WithTrailingSeparator(folder.Path()));
    ASSERT_EQ(written.Create(list, {"Laser", 1}, 1), "");
    ASSERT_TRUE(written.NoteBegun(list, 0, 1));
    for (const int row : {0, 2}) {
        FinishAt(row, 1, "Done", RowOutcome::kDone);
        ASSERT_TRUE(written.NoteFinished(list, row));
    }
    ASSERT_TRUE(written.NoteBegun(list, 3, 1));
    written.Leave();
    CutOffRun cutOff;
    ASSERT_EQ(Load(cutOff), SnapshotResult::kLoaded);
    EXPECT_EQ(cutOff.rows[1].mark.pass, 0);
    EXPECT_EQ(cutOff.rows[2].mark.pass, 1);
    EXPECT_EQ(cutOff.rowAtWork, 3);
}

TEST_F(RunSnapshotTest, WhatNobodyCanTellStaysSoWhenTheRestoredRunIsCutOffToo) {
    MakeRows();
    const std::string here = WithTrailingSeparator(folder.Path());
    for (const int atWork : {1, 4}) {
        AddFile("upper.tra");
        CutOffRun cutOff;
        {
            RunSnapshot first(files, here);
            ASSERT_EQ(first.Create(list, {"Laser", 2}, 1), "");
            EXPECT_TRUE(first.NoteBegun(list, atWork, 2));
        }
        ASSERT_EQ(Load(cutOff), SnapshotResult::kLoaded);
        ASSERT_EQ(cutOff.rowAtWork, atWork);
        PutRowsBack(list, cutOff);
        { ASSERT_EQ(RunSnapshot(files, here).Create(list, {"Laser", 2}, 2), ""); }
        ASSERT_EQ(Load(cutOff), SnapshotResult::kLoaded);
        const bool isSetting = atWork == 4;  // it just gets its turn again
        EXPECT_EQ(cutOff.rows[atWork].mark.pass, isSetting ? 1 : 2);
        EXPECT_EQ(cutOff.rows[atWork].mark.outcome,
                  isSetting ? RowOutcome::kNotSelected : RowOutcome::kFailed);
        EXPECT_EQ(cutOff.rows[atWork].texts[kColumnStatus] == kStatusUnknown, !isSetting);
        EXPECT_EQ(cutOff.rows[2].mark.pass, 0);
        list.RemoveRow(4);
    }
}

// The machine went down, and its disk has lost the end of the list's file, which the checkpoint counts on.
TEST_F(RunSnapshotTest, AnEndThatIsLostIsUnknownAndSettingsAreAppliedAgain) {
    list.Clear();
    for (const char* name : {"upper.tra", "a.ps", "b.ps", "c.ps"}) AddFile(name);
    RunSnapshot written(files, WithTrailingSeparator(folder.Path()));
    ASSERT_EQ(written.Create(list, {"Laser", 1}, 1), "");
    for (int row = 0; row < 4; ++row) {
        ASSERT_TRUE(written.NoteBegun(list, row, 1));
        FinishAt(row, 1, "Done", RowOutcome::kDone);
        if (row < 3) {
            ASSERT_TRUE(written.NoteFinished(list, row));
        }
    }
    written.Leave();
    const std::string whole = folder.Read("SnapshotRestore.List");
    folder.Write("SnapshotRestore.List", whole.substr(0, whole.find("FINISHED")));
    CutOffRun cutOff;
    ASSERT_EQ(Load(cutOff), SnapshotResult::kLoaded);
    EXPECT_EQ(cutOff.rowAtWork, 3);
    PutRowsBack(list, cutOff);
    for (int row = 1; row < 4; ++row) {
        EXPECT_EQ(Text(row, kColumnStatus), kStatusUnknown) << row;
        EXPECT_TRUE(IsOfUnknownOutcome(cutOff, row)) << row;
    }
    EXPECT_EQ(list.MarkOf(0).outcome, RowOutcome::kDone);
}

TEST_F(RunSnapshotTest, RefusesWhatIsNotWhole) {
    MakeRows();
    { ASSERT_EQ(RunSnapshot(files, WithTrailingSeparator(folder.Path())).Create(list, {"Laser", 1}, 1), ""); }
    const std::string whole = folder.Read("SnapshotRestore.List");
    CutOffRun cutOff;
    for (std::size_t size = 0; size < whole.size(); size += 7) {
        folder.Write("SnapshotRestore.List", whole.substr(0, size));
        EXPECT_EQ(Load(cutOff), SnapshotResult::kDamaged) << size;
    }
    folder.Write("SnapshotRestore.List", whole +
                                             "FINISHED\t99\t1\t1\t1\t0\t0\t0\t1\t1\tDone\n"
                                             "FINISHED\t0\t1\t1\t1\t0\t0\t0\t1\t1\tDo");
    folder.Write("SnapshotRestore.Checkpoint", "QUIREPRESS CHECKPOINT 1\t77\t1\t0\t78\t1\n");
    ASSERT_EQ(Load(cutOff), SnapshotResult::kLoaded);
    EXPECT_EQ(cutOff.rowAtWork, -1);
    for (const CutOffRun::Row& row : cutOff.rows) EXPECT_EQ(row.mark.pass, 0);
}

TEST_F(RunSnapshotTest, AFullDiskEndsTheSnapshotAndSaysSo) {
    MakeRows();
    RunSnapshot first(files, WithTrailingSeparator(folder.Path()));
    ASSERT_EQ(first.Create(list, {"Laser", 1}, 1), "");
    files.FillDiskAfter(0);
    EXPECT_FALSE(first.NoteBegun(list, 0, 1));
    EXPECT_FALSE(first.IsOn());
    EXPECT_TRUE(first.NoteBegun(list, 1, 1)) << "what is off has nothing to write";
    files.FillDiskAfter(-1);
    CutOffRun cutOff;
    EXPECT_EQ(Load(cutOff), SnapshotResult::kNone) << "it would print once more what came out since";
}

TEST_F(RunSnapshotTest, WhoTakesItUpHasItAlone) {
    MakeRows();
    const std::string here = WithTrailingSeparator(folder.Path());
    { ASSERT_EQ(RunSnapshot(files, here).Create(list, {"Laser", 2, true}, 1), ""); }
    CutOffRun cutOff;
    RunSnapshot first(files, here);
    ASSERT_EQ(first.Load(cutOff), SnapshotResult::kLoaded);
    EXPECT_TRUE(cutOff.isBalanced);
    EXPECT_EQ(Load(cutOff), SnapshotResult::kInUse);
    files.FillDiskAfter(0);
    EXPECT_EQ(first.Create(list, {"Laser", 2}, 1), kSnapshotFailed);
    files.FillDiskAfter(-1);
    EXPECT_EQ(Load(cutOff), SnapshotResult::kLoaded) << "it stays for another time";
    ASSERT_EQ(first.Load(cutOff), SnapshotResult::kLoaded);
    first.Leave();
    EXPECT_EQ(Load(cutOff), SnapshotResult::kLoaded);
}

}  // namespace
}  // namespace quirepress
