#include <gmock/gmock.h>
#include <sys/mount.h>

#include "unit/embedded/spooler_bench.h"

namespace quirepress {
namespace {

using testing::HasSubstr;

// A volume of 256 KiB.
class SmallDisk {
public:
    explicit SmallDisk(const std::string& folder) : m_folder(folder) {
        m_isMounted = mount("tmpfs", m_folder.c_str(), "tmpfs", 0, "size=256k,mode=0777") == 0;
    }
    ~SmallDisk() {
        if (m_isMounted) umount2(m_folder.c_str(), MNT_DETACH);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    bool IsMounted() const { return m_isMounted; }
    // To two megabytes, and read-only or not.
    bool Change(bool readOnly) {
        const unsigned long flags = MS_REMOUNT | (readOnly ? MS_RDONLY : 0);
        return mount("tmpfs", m_folder.c_str(), "tmpfs", flags, "size=2m") == 0;
    }

private:
    std::string m_folder;
    bool m_isMounted;
};

class SmallDiskTest : public SpoolerBench {
protected:
    SmallDiskTest() { m_folder.Write("disk/.keep", ""); }
    const std::string m_large = std::string(400'000, 'L');
};

TEST_F(SmallDiskTest, AFullOutputVolumeKeepsTheJobsUntilThereIsRoom) {
    SmallDisk disk(m_folder.PathOf("disk"));
    if (!disk.IsMounted()) GTEST_SKIP() << "only root can make a small disk";
    MakePrinter("Small", "folder:" + m_folder.PathOf("disk/out"));
    Spool("Small", "fits", "fits");
    Spool("Small", "too large", m_large);
    ASSERT_TRUE(Deliver());
    ASSERT_EQ(Jobs("Small").size(), 1U);
    EXPECT_THAT(FirstJob("Small").statusText, HasSubstr("no space"));
    EXPECT_EQ(Printer("Small").statusBits, printer_status::kError);
    EXPECT_EQ(ReadFolder(m_files, m_folder.PathOf("disk/out")).size(), 1U);
    ASSERT_TRUE(disk.Change(false));
    m_loop.Wait(120'000);
    EXPECT_EQ(ReadFolder(m_files, m_folder.PathOf("disk/out"))["00000002-too large"], m_large);
    EXPECT_TRUE(Jobs("Small").empty());
    ASSERT_TRUE(disk.Change(true));
    Spool("Small", "refused");
    ASSERT_TRUE(Deliver());
    ASSERT_EQ(Jobs("Small").size(), 1U);
    EXPECT_EQ(FirstJob("Small").statusBits, job_status::kError);
    ASSERT_TRUE(disk.Change(false));
    m_loop.Wait(120'000);
    EXPECT_EQ(ReadFolder(m_files, m_folder.PathOf("disk/out")).size(), 3U);
}

TEST_F(SmallDiskTest, AFullQueueRefusesTheDocumentAndGoesOn) {
    SmallDisk disk(m_folder.PathOf("disk"));
    if (!disk.IsMounted()) GTEST_SKIP() << "only root can make a small disk";
    EmbeddedSpooler spooler(m_files, m_loop, m_network, m_clock, m_machine, m_folder.PathOf("disk"));
    ASSERT_EQ(spooler.Open(m_message), 0) << m_message;
    EXPECT_EQ(SpoolDocument(spooler, "Quirepress", "too large", m_large), -1);
    EXPECT_GT(SpoolDocument(spooler, "Quirepress", "fits", "fits"), 0);
    m_loop.Wait(5'000);
    EXPECT_TRUE(m_folder.Has("disk/Printers/Quirepress/Output/00000002-fits"));
}

}  // namespace
}  // namespace quirepress
