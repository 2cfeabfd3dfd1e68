#include "core/file_target.h"

#include <gtest/gtest.h>

#include "base/path.h"
#include "fakes/faulty_files.h"
#include "fakes/temporary_folder.h"
#include "platform/services.h"

namespace quirepress {
namespace {

TEST(FileTargetTest, ReadsEveryMoveTo) {
    struct Case {
        const char* text;
        MoveAction action;
        const char* folder;
    };
    for (const Case& item : {Case{"", MoveAction::kNone, ""},
                             {"qprdelete", MoveAction::kErase, ""},
                             {"qprdelete+job", MoveAction::kEraseWithJob, ""},
                             {"qprjobdelete", MoveAction::kEraseJob, ""},
                             {"copy:/out", MoveAction::kCopy, "/out"},
                             {"Copy: /out", MoveAction::kCopy, "/out"},
                             {"COPY:out", MoveAction::kCopy, "out"},
                             {"copy:", MoveAction::kCopy, ""},
                             {"cOPY:/out", MoveAction::kMove, "cOPY:/out"},
                             {"qprdelete ", MoveAction::kMove, "qprdelete "},
                             {"QPRDELETE", MoveAction::kMove, "QPRDELETE"},
                             {"/out", MoveAction::kMove, "/out"}}) {
        const MoveTarget target = ParseMoveTo(item.text);
        EXPECT_EQ(target.action, item.action) << item.text;
        EXPECT_EQ(target.folder, item.folder) << item.text;
    }
}

// A document of the user in a folder of such a name is none.
TEST(FileTargetTest, KnowsMergedFilesByTheirOwnName) {
    EXPECT_TRUE(IsMergedFile("/tmp/QPRMerged_12.pdf"));
    EXPECT_TRUE(IsMergedFile("C:\\Temp\\QPRMerged_12.pdf"));
    EXPECT_FALSE(IsMergedFile("/data/QPRMerged_old/report.pdf"));
    EXPECT_FALSE(IsMergedFile("/data/myQPRMerged_1.pdf"));
    EXPECT_FALSE(IsMergedFile("/data/qprmerged_1.pdf"));
}

TEST(FileTargetTest, TakesTheTitleAsANameOnly) {
    EXPECT_EQ(TargetName("/in/a.pdf", "a.pdf"), "a.pdf");
    EXPECT_EQ(TargetName("/in/a.pdf", ""), "a.pdf");
    EXPECT_EQ(TargetName("/in/a.pdf", "Invoice 12"), "Invoice 12.pdf");
    EXPECT_EQ(TargetName("/in/a.pdf", "Invoice 1.2"), "Invoice 1.2.pdf");
    EXPECT_EQ(TargetName("/in/a.pdf", "B.PDF"), "B.PDF");
    EXPECT_EQ(TargetName("/in/a.pdf", "/etc/x\\b.pdf"), "b.pdf");
    EXPECT_EQ(TargetName("/in/a.pdf", "../../b.pdf"), "a.pdf");
    EXPECT_EQ(TargetName("/in/a?.pdf", "a?.pdf"), "a?.pdf");
}

TEST(FileTargetTest, FindsTheFirstFreeVersion) {
    TemporaryFolder folder;
    const Services system = MakeSystemServices();
    FaultyFiles files(*system.files);
    const auto find = [&](std::string_view name, int first = 1) {
        return FindFreeVersion(files, folder.Path(), name, first);
    };
    EXPECT_EQ(VersionName("a.b.pdf", 2), "a.b_v2.pdf");
    EXPECT_EQ(VersionName("plain", 1), "plain_v1");
    EXPECT_EQ(VersionName(".hidden", 1), ".hidden_v1");
    EXPECT_EQ(find("r.pdf"), 1);
    for (const char* name : {"r_v1.pdf", "r_v2.pdf", "r_v4.pdf", "r_v03.pdf", "r_v3.ps", "r_v3_v3.pdf", "r_v",
                             "r_v-3.pdf", "r_v99999999999.pdf", "x_v3.pdf"})
        folder.Write(name, "");
    EXPECT_EQ(find("r.pdf"), 3);
    EXPECT_EQ(find("r.pdf", 4), 5);
    EXPECT_EQ(find("r.pdf", kMostVersions), kMostVersions);
    EXPECT_EQ(find("r.pdf", kMostVersions + 1), 0);
    files.FailAlways(FaultyFiles::Call::kListFolder, FileResult::kNoAccess);
    EXPECT_EQ(find("r.pdf", 7), 7);
    EXPECT_EQ(find("r.pdf", kMostVersions + 1), 0);
}

TEST(FileTargetTest, ExtendsFoldersByTheWayBelowTheMonitoredOne) {
    const std::string separator(1, PlatformSeparator());
    EXPECT_EQ(ExtendMoveTo("/out", "/in", "/in/x/y/a.pdf"), "/out" + separator + "x/y");
    EXPECT_EQ(ExtendMoveTo("copy:/out/", "/in/", "/in//x/a.pdf"), "copy:/out/x");
    for (const char* path : {"/in/a.pdf", "/inner/x/a.pdf", "/in/../x/a.pdf", "/in", "", "/other/a.pdf"})
        EXPECT_EQ(ExtendMoveTo("/out", "/in", path), "/out") << path;
    for (const char* marker : {"", "qprdelete", "qprdelete+job", "qprjobdelete"})
        EXPECT_EQ(ExtendMoveTo(marker, "/in", "/in/x/a.pdf"), marker);
}

}  // namespace
}  // namespace quirepress
