#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

#include "base/path.h"
#include "fakes/temporary_folder.h"
#include "platform/file_tools.h"
#include "platform/files.h"
#include "platform/services.h"

namespace quirepress {
namespace {

// What only this system has: FIFOs, links, permissions, small volumes.
class LinuxFilesTest : public testing::Test {
protected:
    Files& files() { return *services.files; }
    std::string PathOf(std::string_view name) const { return folder.PathOf(name); }

    FileResult WriteResult(const std::string& path, OpenMode mode) {
        FileResult result = FileResult::kDone;
        files().OpenForWriting(path, mode, FileAccess::kShared, result);
        return result;
    }

    FileResult ReadResult(const std::string& path) {
        FileResult result = FileResult::kDone;
        files().OpenForReading(path, result);
        return result;
    }

    unsigned ModeOf(const std::string& path) {
        struct stat status = {};
        EXPECT_EQ(stat(path.c_str(), &status), 0);
        return status.st_mode & 0777U;
    }

    Services services = MakeSystemServices();
    TemporaryFolder folder;
};

// A volume of one megabyte, or nothing when this user may not make one.
class SmallVolume {
public:
    explicit SmallVolume(const std::string& path) : m_path(path) {
        mkdir(path.c_str(), 0700);
        m_mounted = mount("tmpfs", path.c_str(), "tmpfs", 0, "size=1m") == 0;
    }
    ~SmallVolume() {
        if (m_mounted) umount2(m_path.c_str(), MNT_DETACH);
    }
    SmallVolume(const SmallVolume&) = delete;
    SmallVolume& operator=(const SmallVolume&) = delete;
    bool IsMounted() const { return m_mounted; }
    bool MakeReadOnly() const {
        return mount("tmpfs", m_path.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, nullptr) == 0;
    }

private:
    std::string m_path;
    bool m_mounted = false;
};

#define SKIP_UNLESS_MOUNTED(volume) \
    if (!(volume).IsMounted()) GTEST_SKIP() << "a volume can be mounted by root only"

TEST_F(LinuxFilesTest, CopiesPermissionsButNoSpecialBits) {
    const std::string from = folder.Write("from", "secret");
    ASSERT_EQ(chmod(from.c_str(), 04640), 0);
    EXPECT_EQ(CopyFileDurably(files(), from, PathOf("to")), FileResult::kDone);
    struct stat status = {};
    ASSERT_EQ(stat(PathOf("to").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
}

TEST_F(LinuxFilesTest, LookingAtAFifoDoesNotLetGoTheWriterThatWaitsThere) {
    const std::string fifo = PathOf("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0666), 0);
    const pid_t writer = fork();
    if (writer == 0) {
        const int end = open(fifo.c_str(), O_WRONLY);  // waits for a reader
        _exit(end >= 0 ? 0 : 1);
    }
    usleep(50'000);
    FileResult result = FileResult::kDone;
    EXPECT_EQ(files().Inspect(fifo).kind, FileKind::kOther);
    EXPECT_EQ(files().OpenForReading(fifo, result), nullptr);
    usleep(50'000);
    int status = 0;
    EXPECT_EQ(waitpid(writer, &status, WNOHANG), 0);  // still waiting
    kill(writer, SIGKILL);
    waitpid(writer, &status, 0);
}

TEST_F(LinuxFilesTest, NeverWaitsForFifosSocketsAndDevices) {
    const std::string fifo = PathOf("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0666), 0);
    const std::string socketPath = PathOf("socket");
    const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, socketPath.c_str());
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    for (const std::string& path : {fifo, socketPath, std::string("/dev/zero")}) {
        const FileFacts facts = files().Inspect(path);
        EXPECT_EQ(facts.kind, FileKind::kOther) << path;
        EXPECT_FALSE(facts.readable) << path;
        EXPECT_EQ(facts.size, 0) << path;
        EXPECT_EQ(ReadResult(path), FileResult::kNoAccess) << path;
        EXPECT_EQ(WriteResult(path, OpenMode::kReplace), FileResult::kNoAccess) << path;
        EXPECT_EQ(WriteResult(path, OpenMode::kAppend), FileResult::kNoAccess) << path;
        std::vector<FolderEntry> entries;
        EXPECT_NE(files().ListFolder(path, entries), FileResult::kDone) << path;
    }
    close(listener);
    std::string text;
    FileResult result = FileResult::kDone;
    EXPECT_FALSE(ReadWholeFile(files(), fifo, 100, text, result));
    EXPECT_NE(CopyFileDurably(files(), fifo, PathOf("copy")), FileResult::kDone);
    EXPECT_EQ(files().Erase(fifo), FileResult::kDone);
}

TEST_F(LinuxFilesTest, FollowsLinksButErasesThemAlone) {
    folder.Write("outside/kept", "1");
    files().MakeFolders(PathOf("tree/sub"));
    ASSERT_EQ(symlink(PathOf("outside").c_str(), PathOf("tree/sub/link").c_str()), 0);
    ASSERT_EQ(symlink("nowhere", PathOf("tree/dangling").c_str()), 0);
    ASSERT_EQ(symlink("loop", PathOf("tree/loop").c_str()), 0);
    EXPECT_EQ(files().Inspect(PathOf("tree/sub/link")).kind, FileKind::kFolder);
    EXPECT_EQ(files().Inspect(PathOf("tree/dangling")).kind, FileKind::kMissing);
    EXPECT_EQ(files().Inspect(PathOf("tree/loop")).kind, FileKind::kMissing);
    EXPECT_EQ(files().ResolvePath(PathOf("tree/sub/link/kept")), files().ResolvePath(PathOf("outside/kept")));
    std::vector<FolderEntry> entries;
    ASSERT_EQ(files().ListFolder(PathOf("tree/sub"), entries), FileResult::kDone);
    EXPECT_EQ(entries.at(0).kind, FileKind::kFolder);

    ASSERT_EQ(symlink("kept", PathOf("outside/alias").c_str()), 0);
    EXPECT_EQ(ReplaceFileDurably(files(), PathOf("outside/alias"), "2"), FileResult::kDone);
    EXPECT_EQ(folder.Read("outside/kept"), "2");

    EXPECT_EQ(EraseTree(files(), PathOf("tree")), FileResult::kDone);
    EXPECT_FALSE(folder.Has("tree"));
    EXPECT_EQ(folder.Read("outside/kept"), "2");
}

TEST_F(LinuxFilesTest, KeepsSecretsFromOthers) {
    FileResult result = FileResult::kFailed;
    const mode_t before = umask(0);
    for (const OpenMode mode : {OpenMode::kCreateNew, OpenMode::kReplace, OpenMode::kAppend}) {
        const std::string path = PathOf("secret" + std::to_string(static_cast<int>(mode)));
        ASSERT_TRUE(files().OpenForWriting(path, mode, FileAccess::kOwnerOnly, result));
        EXPECT_EQ(ModeOf(path), 0600U);
    }
    const std::string open = folder.Write("open", "old");
    chmod(open.c_str(), 0666);
    ASSERT_TRUE(files().OpenForWriting(open, OpenMode::kReplace, FileAccess::kOwnerOnly, result));
    EXPECT_EQ(ModeOf(open), 0600U);
    EXPECT_EQ(ReplaceFileDurably(files(), PathOf("replaced"), "x", FileAccess::kOwnerOnly),
              FileResult::kDone);
    EXPECT_EQ(ModeOf(PathOf("replaced")), 0600U);

    ASSERT_EQ(files().MakePrivateFolders(PathOf("outer/inner")), FileResult::kDone);
    EXPECT_EQ(ModeOf(PathOf("outer")), 0700U);
    EXPECT_EQ(ModeOf(PathOf("outer/inner")), 0700U);
    ASSERT_TRUE(files().OpenForWriting(PathOf("shared"), OpenMode::kReplace, FileAccess::kShared, result));
    EXPECT_EQ(ModeOf(PathOf("shared")), 0666U);
    umask(before);
}

TEST_F(LinuxFilesTest, TakesPathsOfAnyLength) {
    std::string deep = folder.Path();
    while (deep.size() < 9'000) deep = JoinPath(deep, std::string(200, 'd'));
    ASSERT_EQ(files().MakeFolders(deep), FileResult::kDone);
    const std::string path = JoinPath(deep, "file");
    ASSERT_EQ(ReplaceFileDurably(files(), path, "deep"), FileResult::kDone);
    ASSERT_EQ(files().Rename(path, path + "2", false), FileResult::kDone);
    std::string text;
    FileResult result = FileResult::kFailed;
    EXPECT_TRUE(ReadWholeFile(files(), path + "2", 10, text, result));
    EXPECT_EQ(text, "deep");
    EXPECT_EQ(files().Inspect(path).kind, FileKind::kMissing);
    EXPECT_TRUE(files().TryLock(path, result));
    EXPECT_GT(files().FreeSpace(deep), 0);
    EXPECT_EQ(ReadResult(JoinPath(deep, std::string(5'000, 'n'))), FileResult::kBadName);
    EXPECT_EQ(EraseTree(files(), folder.Path()), FileResult::kDone);
}

TEST_F(LinuxFilesTest, ReportsAFullDiskAndLeavesWhatWasThere) {
    const std::string path = PathOf("volume");
    const SmallVolume volume(path);
    SKIP_UNLESS_MOUNTED(volume);
    const std::string settings = JoinPath(path, "settings");
    const std::string log = JoinPath(path, "log");
    ASSERT_EQ(ReplaceFileDurably(files(), settings, "old settings"), FileResult::kDone);
    FileResult result = FileResult::kFailed;
    const auto out = files().OpenForWriting(log, OpenMode::kAppend, FileAccess::kShared, result);
    ASSERT_TRUE(out);
    EXPECT_EQ(out->Write("record\r\n", 8), FileResult::kDone);

    const std::string large(2 * 1024 * 1024, 'x');
    EXPECT_EQ(ReplaceFileDurably(files(), settings, large), FileResult::kNoSpace);
    EXPECT_EQ(CopyFileDurably(files(), folder.Write("large", large), JoinPath(path, "copy")),
              FileResult::kNoSpace);
    EXPECT_EQ(out->Write(large.data(), large.size()), FileResult::kNoSpace);
    // No half record, and room again for a whole one.
    EXPECT_EQ(files().Inspect(log).size, 8);
    EXPECT_EQ(out->Write("record\r\n", 8), FileResult::kDone);
    std::string text;
    EXPECT_TRUE(ReadWholeFile(files(), settings, 100, text, result));
    EXPECT_EQ(text, "old settings");
    std::vector<FolderEntry> entries;
    EXPECT_EQ(files().ListFolder(path, entries), FileResult::kDone);
    EXPECT_EQ(entries.size(), 2U);
}

TEST_F(LinuxFilesTest, TreatsALimitOnFileSizesAsAFullDisk) {
    rlimit before = {};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small = {100'000, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const FileResult result = ReplaceFileDurably(files(), PathOf("file"), std::string(200'000, 'x'));
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(result, FileResult::kNoSpace);
    EXPECT_FALSE(folder.Has("file"));
}

TEST_F(LinuxFilesTest, WritesNothingOnAReadOnlyVolume) {
    const std::string path = PathOf("volume");
    const SmallVolume volume(path);
    SKIP_UNLESS_MOUNTED(volume);
    const std::string file = JoinPath(path, "file");
    ASSERT_EQ(ReplaceFileDurably(files(), file, "kept"), FileResult::kDone);
    ASSERT_TRUE(volume.MakeReadOnly());
    EXPECT_EQ(ReplaceFileDurably(files(), file, "new"), FileResult::kNoAccess);
    EXPECT_EQ(WriteResult(file, OpenMode::kAppend), FileResult::kNoAccess);
    EXPECT_EQ(WriteResult(JoinPath(path, "new"), OpenMode::kCreateNew), FileResult::kNoAccess);
    EXPECT_EQ(files().Rename(file, JoinPath(path, "to"), false), FileResult::kNoAccess);
    EXPECT_EQ(files().Erase(file), FileResult::kNoAccess);
    EXPECT_EQ(files().MakeFolders(JoinPath(path, "a/b")), FileResult::kNoAccess);
    EXPECT_EQ(files().MakeFolders(path), FileResult::kDone);
    EXPECT_EQ(ReadResult(file), FileResult::kDone);
}

TEST_F(LinuxFilesTest, RenamesWithinOneVolumeOnly) {
    const std::string path = PathOf("volume");
    const SmallVolume volume(path);
    SKIP_UNLESS_MOUNTED(volume);
    const std::string file = folder.Write("file", "1");
    for (const bool replace : {false, true})
        EXPECT_EQ(files().Rename(file, JoinPath(path, "file"), replace), FileResult::kOtherVolume);
    EXPECT_EQ(folder.Read("file"), "1");
}

TEST_F(LinuxFilesTest, TellsWhatItMayNotRead) {
    const std::string file = folder.Write("file", "1");
    chmod(file.c_str(), 0);
    constexpr uid_t kNobody = 65534;
    const bool isRoot = geteuid() == 0;  // may read everything
    if (isRoot) {
        ASSERT_EQ(seteuid(kNobody), 0);
    }
    EXPECT_EQ(files().Inspect(file).kind, FileKind::kRegular);
    EXPECT_FALSE(files().Inspect(file).readable);
    EXPECT_EQ(files().Inspect(file).size, 1);
    EXPECT_EQ(ReadResult(file), FileResult::kNoAccess);
    EXPECT_EQ(WriteResult(PathOf("new"), OpenMode::kCreateNew),
              isRoot ? FileResult::kNoAccess : FileResult::kDone);
    if (isRoot) {
        ASSERT_EQ(seteuid(0), 0);
    }
}

TEST_F(LinuxFilesTest, BearsTimesOutOfRange) {
    const std::string file = folder.Write("file", "1");
    for (const time_t seconds : {time_t{15'000'000'000}, time_t{-2'000'000'000}}) {
        const timespec times[2] = {{seconds, 0}, {seconds, 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
        const FileFacts facts = files().Inspect(file);
        EXPECT_NE(facts.written, kNoInstant);
        EXPECT_EQ(facts.written > 0, seconds > 0);
    }
}

TEST_F(LinuxFilesTest, TakesNoLockOnARemovedFile) {
    const std::string path = PathOf("lock");
    FileResult result = FileResult::kFailed;
    const auto first = files().TryLock(path, result);
    ASSERT_TRUE(first);
    EXPECT_EQ(files().Erase(path), FileResult::kDone);
    const auto second = files().TryLock(path, result);
    ASSERT_TRUE(second);
    EXPECT_FALSE(files().TryLock(path, result));
}

}  // namespace
}  // namespace quirepress
