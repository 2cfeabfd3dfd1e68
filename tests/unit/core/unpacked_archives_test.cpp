#include <gmock/gmock.h>

#include "base/format.h"
#include "fakes/archive_writer.h"
#include "fakes/small_pdf.h"
#include "unit/core/print_run_fixture.h"

namespace quirepress {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class UnpackedArchivesTest : public PrintRunTest {
protected:
    UnpackedArchivesTest() { options.m_extractZip = options.m_deleteZipFiles = true; }
    // Adds its row.
    std::string AddArchive(std::string_view name, std::string_view document = "%!PS\n") {
        return AddFile(name, MakeArchive("zip", {{"a.ps", std::string(document)}}));
    }
    // A run that was cut off, of this list.
    CutOffRun CutOff() {
        {
            RunSnapshot cut(files, WithTrailingSeparator(folder.Path()));
            EXPECT_EQ(cut.Create(list, {"Laser", 1, false}, 1), "");
        }
        CutOffRun cutOff;
        EXPECT_EQ(snapshot.Load(cutOff), SnapshotResult::kLoaded);
        snapshot.Leave();
        return cutOff;
    }
};

TEST_F(UnpackedArchivesTest, AreDeletedWhenTheirRowsBeginToPrint) {
    AddArchive("z.zip");
    run.UsePrinter("Nowhere");
    EXPECT_EQ(run.OnButtonPrint().end, RunSummary::End::kNoPrinter);
    EXPECT_TRUE(folder.Has("z.zip"));
    run.UsePrinter("Laser");
    recorder.onProgress = [this](const RunProgress&) { EXPECT_FALSE(folder.Has("z.zip")); };
    EXPECT_EQ(run.OnButtonPrint().done, 1);
    EXPECT_FALSE(folder.Has("z.zip"));
    recorder.onProgress = nullptr;
    AddArchive("z.zip");
    list.Clear();
    AddFile("other.ps");
    options.m_deleteZipFiles = false;
    AddArchive("kept.zip");
    EXPECT_EQ(run.OnButtonPrint().done, 2);
    EXPECT_TRUE(folder.Has("z.zip"));
    EXPECT_TRUE(folder.Has("kept.zip"));
    EXPECT_THAT(prompts.boxes, IsEmpty());
}

TEST_F(UnpackedArchivesTest, AreDeletedWhenTheirRowsAreMerged) {
    AddFile("z.zip", MakeArchive("zip", {{"a.pdf", MakeSmallPdf({"a"})}, {"b.pdf", MakeSmallPdf({"b"})}}));
    run.UseAppending(true);
    EXPECT_EQ(run.OnButtonPrint().done, 2);
    EXPECT_FALSE(folder.Has("z.zip"));
}

TEST_F(UnpackedArchivesTest, StayWhileACutOffRunWaits) {
    options.m_snapshotRestore = true;
    AddArchive("z.zip");
    const CutOffRun cutOff = CutOff();
    EXPECT_EQ(run.OnButtonPrint().end, RunSummary::End::kRefused);
    EXPECT_TRUE(folder.Has("z.zip"));
    EXPECT_EQ(run.FinishCutOffRun(cutOff).done, 1);
    EXPECT_TRUE(folder.Has("z.zip")) << "the archive of another list";
}

TEST_F(UnpackedArchivesTest, AreStillKnownWhenThatRunHadOnlyItsEndLeft) {
    options.m_snapshotRestore = true;
    AddFile("earlier.ps");
    list.MarkOf(0).pass = 1;
    CutOff();
    list.Clear();
    AddArchive("z.zip");
    EXPECT_EQ(run.OnButtonPrint().done, 1);
    EXPECT_FALSE(folder.Has("z.zip"));
}

TEST_F(UnpackedArchivesTest, AreToldWhenTheyStay) {
    const std::string path = AddArchive("z.zip");
    const std::string changed = AddArchive("y.zip");
    const std::string gone = AddArchive("x.zip");
    folder.Write("y.zip", "what came since");
    std::filesystem::remove(gone);
    files.FailAlways(FaultyFiles::Call::kErase, FileResult::kNoAccess);
    EXPECT_EQ(run.OnButtonPrint().done, 3);
    using Box = FakePrompts::Box;
    const Box boxes[] = {
        {"Delete Error", Format("Can't delete %s: it has changed since it was unpacked", changed)},
        {"Delete Error", Format("Can't delete %s: access is denied", path)}};
    EXPECT_THAT(prompts.boxes, ElementsAre(boxes[0], boxes[1]));
}

}  // namespace
}  // namespace quirepress
