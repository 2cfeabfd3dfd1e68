#include "base/path.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace quirepress
