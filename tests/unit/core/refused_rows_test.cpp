#include <gmock/gmock.h>

#include "unit/core/print_run_fixture.h"

namespace quirepress {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

// What could not be taken into the list.
class RefusedRowsTest : public PrintRunTest {
protected:
    RefusedRowsTest() {
        options.m_errorLog = options.m_generateReports = options.m_extractZip = true;
        run.UsePrinter("Laser");
    }
    // A job file that is not there, one that nobody may read, and an archive that is none.
    void AddRefused() {
        list.InsertFileIntoList(folder.PathOf("none.job"), 1, "", {});
        files.FailOnce(FaultyFiles::Call::kOpenForReading, FileResult::kNoAccess);
        AddFile("locked.job", "a.ps\n");
        AddFile("damaged.zip", "no archive");
    }
    void ExpectTold(const RunSummary& summary) {
        EXPECT_EQ(summary.failed, 3);
        EXPECT_EQ(summary.skipped, 0);
        const std::string reasons[] = {"Error - Can't read job parameters file: it does not exist",
                                       "Error - Can't read job parameters file: access is denied",
                                       "Error - It is no archive of a known kind, or damaged"};
        const std::string report = ReportText(".txt");
        EXPECT_THAT(report, HasSubstr("Failed                3 "));
        EXPECT_THAT(report, AllOf(HasSubstr("none.job\r\n    " + reasons[0]),
                                  HasSubstr("locked.job\r\n    " + reasons[1]),
                                  HasSubstr("damaged.zip\r\n    " + reasons[2])));
        EXPECT_THAT(ErrorLines(),
                    ElementsAre(AllOf(HasSubstr(folder.PathOf("none.job")), HasSubstr(reasons[0])),
                                AllOf(HasSubstr(folder.PathOf("locked.job")), HasSubstr(reasons[1])),
                                AllOf(HasSubstr(folder.PathOf("damaged.zip")), HasSubstr(reasons[2]))));
        ASSERT_THAT(notices.told, SizeIs(4));  // with that of the end
        EXPECT_THAT(notices.told[1], HasSubstr("locked.job"));
    }
    TextList ErrorLines() const {
        const std::string text = ErrorRecords();
        TextList lines;
        for (const std::string_view line : SplitAt(text, '\n'))
            if (!line.empty()) lines.emplace_back(line);
        return lines;
    }
};

TEST_F(RefusedRowsTest, FailOnceInARunOfSeveralCopies) {
    AddRefused();
    AddFile("a.ps");
    run.SetCopies(2);
    const RunSummary summary = run.OnButtonPrint();
    ExpectTold(summary);
    EXPECT_EQ(summary.done, 1);
    EXPECT_EQ(Text(0, kColumnStatus), "Error - Can't read job parameters file: it does not exist");
}

TEST_F(RefusedRowsTest, FailWhereNothingElseIsInTheList) {
    AddRefused();
    const RunSummary summary = run.OnButtonPrint();
    ExpectTold(summary);
    EXPECT_EQ(summary.end, RunSummary::End::kNothingToPrint);
}

TEST_F(RefusedRowsTest, FailInARunThatIsTakenUp) {
    AddRefused();
    AddFile("a.ps");
    {
        RunSnapshot cut(files, WithTrailingSeparator(folder.Path()));
        ASSERT_EQ(cut.Create(list, {"Laser", 1, false}, 1), "");
    }
    CutOffRun cutOff;
    ASSERT_EQ(snapshot.Load(cutOff), SnapshotResult::kLoaded);
    ExpectTold(run.FinishCutOffRun(cutOff));
}

}  // namespace
}  // namespace quirepress
