#include "base/path.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/entry_names.h"
#include "base/text.h"

namespace quirepress {
namespace {

bool IsWindows() {
    return PlatformSeparator() == '\\';
}

TEST(PathTest, TakesPathsApart) {
    struct Case {
        std::string path, folder, title, stem, extension;
    };
    const Case cases[] = {
        {"/data/report.pdf", "/data/", "report.pdf", "report", ".pdf"},
        {"report.tar.gz", "", "report.tar.gz", "report.tar", ".gz"},
        {"/data.d/report", "/data.d/", "report", "report", ""},
        {"/data/.hidden", "/data/", ".hidden", ".hidden", ""},
        {"/data/.a.b", "/data/", ".a.b", ".a", ".b"},
        {"/data/", "/data/", "", "", ""},
        {"/data/name.", "/data/", "name.", "name", "."},
        {"/", "/", "", "", ""},
        {"", "", "", "", ""},
        {"..", "", "..", ".", "."},
    };
    for (const Case& item : cases) {
        EXPECT_EQ(FolderOf(item.path), item.folder) << item.path;
        EXPECT_EQ(FileTitle(item.path), item.title) << item.path;
        EXPECT_EQ(TitleWithoutExtension(item.path), item.stem) << item.path;
        EXPECT_EQ(FileExtension(item.path), item.extension) << item.path;
    }
}

TEST(PathTest, JoinsWithOneSeparator) {
    const std::string separator(1, PlatformSeparator());
    EXPECT_EQ(JoinPath("/data", "file"), "/data" + separator + "file");
    EXPECT_EQ(JoinPath("/data/", "file"), "/data/file");
    EXPECT_EQ(JoinPath("/data/", "//file"), "/data/file");
    EXPECT_EQ(JoinPath("", "file"), "file");
    EXPECT_EQ(JoinPath("/data", ""), "/data" + separator);
    EXPECT_EQ(WithTrailingSeparator("/data"), "/data" + separator);
    EXPECT_EQ(WithTrailingSeparator("/data/"), "/data/");
    EXPECT_EQ(WithTrailingSeparator(""), "");
}

// A backslash separates where the system says so; elsewhere it is a letter of a name.
TEST(PathTest, FollowsThePlatformsSeparator) {
    EXPECT_TRUE(IsSeparator('/'));
    EXPECT_EQ(IsSeparator('\\'), IsWindows());
    EXPECT_EQ(FileTitle("/data/a\\b"), IsWindows() ? "b" : "a\\b");
    EXPECT_EQ(IsAbsolutePath("C:\\data"), IsWindows());
    EXPECT_EQ(IsAbsolutePath("\\\\server\\share"), IsWindows());
    EXPECT_TRUE(IsAbsolutePath("/data"));
    EXPECT_FALSE(IsAbsolutePath("data") || IsAbsolutePath("") || IsAbsolutePath("C:data"));
    EXPECT_EQ(ToPlatformSeparators("a\\b/c"), IsWindows() ? "a\\b\\c" : "a/b/c");
}

using testing::ElementsAre;
using testing::IsEmpty;

TEST(EntryNamesTest, NamesThatLeaveTheFolderHaveNoPath) {
    for (const std::string_view name :
         {"", "/", "..", "../a", "a/..", "a/../b", "a\\..\\b", "C:", "C:\\", "."})
        EXPECT_THAT(CleanEntryName(name), IsEmpty()) << name;
}

TEST(EntryNamesTest, RootsAndDrivesFallAway) {
    EXPECT_THAT(CleanEntryName("/etc//passwd"), ElementsAre("etc", "passwd"));
    EXPECT_THAT(CleanEntryName("C:\\docs\\a.pdf"), ElementsAre("docs", "a.pdf"));
    EXPECT_THAT(CleanEntryName("c:a.pdf"), ElementsAre("a.pdf"));
    EXPECT_THAT(CleanEntryName("\\\\server\\share\\a.pdf"), ElementsAre("server", "share", "a.pdf"));
    EXPECT_THAT(CleanEntryName("./a/./b/"), ElementsAre("a", "b"));
}

TEST(EntryNamesTest, PartsBecomeNamesThatEverySystemTakes) {
    EXPECT_THAT(CleanEntryName("a<b>:\"c|?*\x01\x7F.txt"), ElementsAre("a_b___c_____.txt"));
    EXPECT_THAT(CleanEntryName("trailing. /.../name. ."), ElementsAre("trailing", "_", "name"));
    EXPECT_THAT(CleanEntryName("CON/nul.txt/Com1/lpt9.a.b/aux .x"),
                ElementsAre("_CON", "_nul.txt", "_Com1", "_lpt9.a.b", "_aux .x"));
    EXPECT_THAT(CleanEntryName("console/com12/prn1"), ElementsAre("console", "com12", "prn1"));
    EXPECT_THAT(CleanEntryName("caf\xE9 \xC3\xA9.txt"), ElementsAre("caf\xE9 \xC3\xA9.txt"));
}

TEST(EntryNamesTest, LongNamesKeepTheirExtensionAndTheirCharacters) {
    const std::string cut = CleanEntryName(std::string(500, 'a') + ".pdf").at(0);
    EXPECT_LE(cut.size(), kLongestEntryName);
    EXPECT_GE(cut.size(), kLongestEntryName - 4);
    EXPECT_TRUE(EndsWith(cut, "a.pdf"));
    std::string euros;
    for (int i = 0; i < 100; ++i) euros += "\xE2\x82\xAC";
    for (const std::string_view extension : {"", ".x", ".xy", ".xyz"})
        EXPECT_TRUE(IsValidUtf8(CleanEntryName(euros + std::string(extension)).at(0))) << extension;
    // What the cut leaves may not become a device's name.
    EXPECT_EQ(CleanEntryName("con" + std::string(300, ' ') + "x").at(0), "_con");
}

TEST(EntryNamesTest, NumbersStandBeforeTheExtension) {
    EXPECT_EQ(NumberedName("report.pdf", 2), "report_2.pdf");
    EXPECT_EQ(NumberedName(".hidden", 12), ".hidden_12");
    EXPECT_EQ(NumberedName(std::string(198, 'a') + ".x", 100).size(), kLongestEntryName);
}

}  // namespace
}  // namespace quirepress
