#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>

#include "unit/core/post_print_fixture.h"

namespace quirepress {
namespace {

class PostPrintLinuxTest : public PostPrintFixture {};

// A link would lead nowhere from its new place.
TEST_F(PostPrintLinuxTest, BringsWhatALinkStandsFor) {
    Put("data/real.pdf");
    std::filesystem::create_directory(PathOf("in"));
    const std::string link = PathOf("in/a.pdf");
    const auto makeLink = [&] { std::filesystem::create_symlink("../data/real.pdf", link); };
    makeLink();
    EXPECT_TRUE(Check(link, PathOf("out")));
    EXPECT_EQ(Read("out/a.pdf"), "bytes");
    EXPECT_FALSE(std::filesystem::is_symlink(PathOf("out/a.pdf")));
    EXPECT_FALSE(std::filesystem::is_symlink(link));
    makeLink();
    EXPECT_TRUE(Check(link, "qprdelete"));
    EXPECT_FALSE(std::filesystem::is_symlink(link));
    EXPECT_EQ(Read("data/real.pdf"), "bytes");
    // Nor is a link in the target overwritten that leads nowhere.
    std::filesystem::create_symlink("nowhere", PathOf("out/b.pdf"));
    EXPECT_TRUE(Check(Put("in/b.pdf"), PathOf("out")));
    EXPECT_EQ(Read("out/b_v1.pdf"), "bytes");
    EXPECT_FALSE(Has("out/nowhere"));
    // A folder that is a link is a folder.
    std::filesystem::create_directory_symlink(PathOf("in"), PathOf("alias"));
    EXPECT_TRUE(Check(Put("in/c.pdf"), PathOf("alias")));
    EXPECT_TRUE(Has("in/c.pdf"));
    EXPECT_TRUE(prompts.boxes.empty());
}

TEST_F(PostPrintLinuxTest, MovesBetweenRealVolumes) {
    struct stat here = {}, there = {};
    const std::string other = "/dev/shm/quirepress-test-" + std::to_string(getpid());
    const bool isThere = mkdir(other.c_str(), 0700) == 0 && stat(other.c_str(), &there) == 0;
    ASSERT_EQ(stat(folder.Path().c_str(), &here), 0);
    if (!isThere || here.st_dev == there.st_dev) {
        rmdir(other.c_str());
        GTEST_SKIP() << "There is no second volume";
    }
    const std::string path = Put("in/a.pdf", std::string(1'000'000, 'b'));
    ASSERT_EQ(chmod(path.c_str(), 0600), 0);
    std::filesystem::last_write_time(path,
                                     std::filesystem::last_write_time(path) - std::chrono::hours(9'000));
    const Instant written = files.Inspect(path).written;
    EXPECT_TRUE(Check(path, other));
    EXPECT_FALSE(Has("in/a.pdf"));
    EXPECT_TRUE(Check(other + "/a.pdf", PathOf("out")));
    EXPECT_FALSE(std::filesystem::exists(other + "/a.pdf"));
    EXPECT_EQ(Read("out/a.pdf").size(), 1'000'000U);
    EXPECT_EQ(files.Inspect(PathOf("out/a.pdf")).written, written);
    ASSERT_EQ(stat(PathOf("out/a.pdf").c_str(), &here), 0);
    EXPECT_EQ(here.st_mode & 0777U, 0600U);
    std::filesystem::remove_all(other);
}

}  // namespace
}  // namespace quirepress
