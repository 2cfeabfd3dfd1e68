#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <map>
#include <thread>

#include "base/path.h"
#include "fakes/both_kinds.h"
#include "fakes/built_files.h"
#include "fakes/faulty_files.h"
#include "fakes/temporary_folder.h"
#include "platform/clock.h"
#include "platform/event_loop.h"
#include "platform/file_tools.h"
#include "platform/files.h"
#include "platform/machine.h"
#include "platform/processes.h"
#include "platform/services.h"

namespace quirepress {
namespace {

using testing::Contains;
using testing::Pair;

// The system's own files, and the same seen through a fake that has no faults.
class FilesContract : public testing::TestWithParam<bool> {
protected:
    Files& files() { return GetParam() ? static_cast<Files&>(m_faultless) : *services.files; }

    FileResult WriteFile(const std::string& path, std::string_view bytes, OpenMode mode) {
        FileResult result = FileResult::kFailed;
        const auto file = files().OpenForWriting(path, mode, FileAccess::kShared, result);
        if (!file) return result;
        EXPECT_EQ(file->Write(bytes.data(), bytes.size()), FileResult::kDone);
        return file->Close();
    }

    FileResult OpenResult(std::string_view path) {
        FileResult result = FileResult::kDone;
        const auto file = files().OpenForReading(path, result);
        EXPECT_EQ(file != nullptr, result == FileResult::kDone);
        return result;
    }

    std::string PathOf(std::string_view name) const { return folder.PathOf(name); }

    Services services = MakeSystemServices();
    TemporaryFolder folder;

private:
    FaultyFiles m_faultless{*services.files};
};

INSTANTIATE_TEST_SUITE_P(Implementations, FilesContract, testing::Bool(), NameOfKind);

TEST_P(FilesContract, ReadsAnywhereInWhatWasWritten) {
    std::string bytes(3'000'000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7 + i / 1000);
    FileResult result = FileResult::kFailed;
    const auto out =
        files().OpenForWriting(PathOf("data"), OpenMode::kCreateNew, FileAccess::kOwnerOnly, result);
    ASSERT_TRUE(out);
    EXPECT_EQ(out->Write(bytes.data(), 1'000'000), FileResult::kDone);
    EXPECT_EQ(out->Write(bytes.data() + 1'000'000, 2'000'000), FileResult::kDone);
    EXPECT_EQ(out->Write(bytes.data(), 0), FileResult::kDone);
    EXPECT_EQ(out->FlushToDisk(), FileResult::kDone);
    EXPECT_EQ(out->Close(), FileResult::kDone);

    const auto in = files().OpenForReading(PathOf("data"), result);
    ASSERT_TRUE(in);
    EXPECT_EQ(in->Size(), 3'000'000);
    std::string read(3'000'010, 'x');
    EXPECT_EQ(in->ReadAt(0, read.data(), read.size()), 3'000'000);
    EXPECT_TRUE(std::string_view(read).substr(0, 3'000'000) == bytes);
    EXPECT_EQ(in->ReadAt(2'999'998, read.data(), 10), 2);
    EXPECT_EQ(read.substr(0, 2), bytes.substr(2'999'998));
    EXPECT_EQ(in->ReadAt(3'000'000, read.data(), 10), 0);
    EXPECT_EQ(in->ReadAt(9'000'000'000, read.data(), 10), 0);
    EXPECT_EQ(in->ReadAt(-1, read.data(), 10), -1);
}

TEST_P(FilesContract, KeepsTheWordOfEachOpenMode) {
    EXPECT_EQ(WriteFile(PathOf("a"), "first and long", OpenMode::kCreateNew), FileResult::kDone);
    EXPECT_EQ(WriteFile(PathOf("a"), "second", OpenMode::kCreateNew), FileResult::kExists);
    EXPECT_EQ(folder.Read("a"), "first and long");
    EXPECT_EQ(WriteFile(PathOf("a"), "third", OpenMode::kReplace), FileResult::kDone);
    EXPECT_EQ(folder.Read("a"), "third");
    EXPECT_EQ(WriteFile(PathOf("a"), "+1", OpenMode::kAppend), FileResult::kDone);
    EXPECT_EQ(WriteFile(PathOf("new"), "+2", OpenMode::kAppend), FileResult::kDone);
    EXPECT_EQ(folder.Read("a"), "third+1");
    EXPECT_EQ(folder.Read("new"), "+2");
    EXPECT_EQ(WriteFile(PathOf("none/b"), "", OpenMode::kReplace), FileResult::kMissing);
}

TEST_P(FilesContract, AppendsBehindWhatOthersAppended) {
    FileResult result = FileResult::kFailed;
    const auto one = files().OpenForWriting(PathOf("log"), OpenMode::kAppend, FileAccess::kShared, result);
    const auto two = files().OpenForWriting(PathOf("log"), OpenMode::kAppend, FileAccess::kShared, result);
    ASSERT_TRUE(one && two);
    one->Write("one ", 4);
    two->Write("two ", 4);
    one->Write("three", 5);
    EXPECT_EQ(folder.Read("log"), "one two three");
}

TEST_P(FilesContract, WritesNothingAfterClosing) {
    FileResult result = FileResult::kFailed;
    const auto file = files().OpenForWriting(PathOf("a"), OpenMode::kReplace, FileAccess::kShared, result);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->Close(), FileResult::kDone);
    EXPECT_NE(file->Write("x", 1), FileResult::kDone);
    EXPECT_NE(file->FlushToDisk(), FileResult::kDone);
    EXPECT_EQ(folder.Read("a"), "");
}

TEST_P(FilesContract, SaysThatThereIsNothing) {
    std::vector<FolderEntry> entries = {{"kept", FileKind::kRegular}};
    for (const std::string& path : {PathOf("none"), PathOf("none/deeper"), std::string()}) {
        EXPECT_EQ(files().Inspect(path).kind, FileKind::kMissing) << path;
        EXPECT_EQ(OpenResult(path), FileResult::kMissing) << path;
        EXPECT_EQ(files().ListFolder(path, entries), FileResult::kMissing) << path;
        EXPECT_EQ(files().Erase(path), FileResult::kMissing) << path;
        EXPECT_EQ(files().Rename(path, PathOf("to"), true), FileResult::kMissing) << path;
        EXPECT_EQ(files().FlushFolder(path), FileResult::kMissing) << path;
        EXPECT_EQ(files().ResolvePath(path), "") << path;
        EXPECT_EQ(files().FreeSpace(path), -1) << path;
    }
    EXPECT_EQ(entries.size(), 1U);
    EXPECT_EQ(files().Inspect(PathOf("none")).created, kNoInstant);
}

TEST_P(FilesContract, TakesAFolderForNoFile) {
    ASSERT_EQ(files().MakeFolders(PathOf("sub")), FileResult::kDone);
    const FileFacts facts = files().Inspect(PathOf("sub"));
    EXPECT_EQ(facts.kind, FileKind::kFolder);
    EXPECT_FALSE(facts.readable);
    EXPECT_EQ(facts.size, 0);
    EXPECT_EQ(OpenResult(PathOf("sub")), FileResult::kNoAccess);
    for (const OpenMode mode : {OpenMode::kReplace, OpenMode::kAppend})
        EXPECT_EQ(WriteFile(PathOf("sub"), "", mode), FileResult::kNoAccess);
    EXPECT_EQ(WriteFile(PathOf("sub"), "", OpenMode::kCreateNew), FileResult::kExists);
    folder.Write("file", "1");
    EXPECT_NE(files().Rename(PathOf("file"), PathOf("sub"), true), FileResult::kDone);
    std::vector<FolderEntry> entries;
    EXPECT_NE(files().ListFolder(PathOf("file"), entries), FileResult::kDone);
    EXPECT_EQ(folder.Read("file"), "1");
}

TEST_P(FilesContract, RefusesNamesWithNuls) {
    const std::string path = folder.Write("file", "content");
    const std::string withNul = path + std::string("\0.txt", 5);
    std::vector<FolderEntry> entries;
    EXPECT_EQ(files().Inspect(withNul).kind, FileKind::kMissing);
    EXPECT_EQ(OpenResult(withNul), FileResult::kBadName);
    EXPECT_EQ(WriteFile(withNul, "", OpenMode::kReplace), FileResult::kBadName);
    EXPECT_EQ(files().ListFolder(withNul, entries), FileResult::kBadName);
    EXPECT_EQ(files().MakeFolders(withNul), FileResult::kBadName);
    EXPECT_EQ(files().Rename(withNul, PathOf("to"), true), FileResult::kBadName);
    EXPECT_EQ(files().Rename(path, withNul, true), FileResult::kBadName);
    EXPECT_EQ(files().Erase(withNul), FileResult::kBadName);
    EXPECT_EQ(files().FlushFolder(withNul), FileResult::kBadName);
    EXPECT_EQ(files().CopyAttributes(withNul, path), FileResult::kBadName);
    EXPECT_EQ(files().CopyAttributes(path, withNul), FileResult::kBadName);
    EXPECT_EQ(files().ResolvePath(withNul), "");
    EXPECT_EQ(files().FreeSpace(withNul), -1);
    FileResult result = FileResult::kDone;
    EXPECT_EQ(files().TryLock(withNul, result), nullptr);
    EXPECT_EQ(result, FileResult::kBadName);
    EXPECT_EQ(folder.Read("file"), "content");
}

TEST_P(FilesContract, InspectsFiles) {
    const Instant before = services.clock->Now();
    const std::string path = folder.Write("file", "12345");
    const FileFacts facts = files().Inspect(path);
    EXPECT_EQ(facts.kind, FileKind::kRegular);
    EXPECT_TRUE(facts.readable);
    EXPECT_EQ(facts.size, 5);
    constexpr Instant kMinute = 60'000'000'000;
    for (const Instant time : {facts.created, facts.written, facts.accessed}) {
        EXPECT_GT(time, before - kMinute);
        EXPECT_LT(time, before + kMinute);
    }
}

TEST_P(FilesContract, ListsEveryEntryOnce) {
    const std::vector<std::string> names = {"\xC3\xBC\xE2\x82\xAC.txt", "a b", "-x", "%41", "..a", ".hidden"};
    for (const std::string& name : names) folder.Write(name, "");
    for (int i = 0; i < 500; ++i) folder.Write("file" + std::to_string(i), "");
    ASSERT_EQ(files().MakeFolders(PathOf("folder")), FileResult::kDone);

    std::vector<FolderEntry> entries = {{"before", FileKind::kOther}};
    ASSERT_EQ(files().ListFolder(folder.Path(), entries), FileResult::kDone);
    ASSERT_EQ(entries.size(), 1 + names.size() + 500 + 1);
    EXPECT_EQ(entries[0].name, "before");
    std::map<std::string, FileKind> kinds;
    for (const FolderEntry& entry : entries) kinds[entry.name] = entry.kind;
    EXPECT_EQ(kinds.size(), entries.size());
    for (const std::string& name : names) EXPECT_THAT(kinds, Contains(Pair(name, FileKind::kRegular)));
    EXPECT_THAT(kinds, Contains(Pair("folder", FileKind::kFolder)));
}

TEST_P(FilesContract, MakesFoldersWithTheirParents) {
    EXPECT_EQ(files().MakeFolders(PathOf("a/b/c")), FileResult::kDone);
    EXPECT_EQ(files().MakeFolders(PathOf("a/b/c/")), FileResult::kDone);
    EXPECT_EQ(files().MakeFolders(folder.Path()), FileResult::kDone);
    EXPECT_EQ(files().Inspect(PathOf("a/b/c")).kind, FileKind::kFolder);
    folder.Write("file", "1");
    EXPECT_EQ(files().MakeFolders(PathOf("file")), FileResult::kExists);
    EXPECT_NE(files().MakeFolders(PathOf("file/sub")), FileResult::kDone);
    EXPECT_NE(files().MakeFolders(""), FileResult::kDone);
    EXPECT_EQ(folder.Read("file"), "1");
}

TEST_P(FilesContract, RenamesWithoutAndWithReplacing) {
    const std::string a = folder.Write("a", "1");
    const std::string b = folder.Write("b", "2");
    EXPECT_EQ(files().Rename(a, b, false), FileResult::kExists);
    EXPECT_EQ(folder.Read("a") + folder.Read("b"), "12");
    EXPECT_EQ(files().Rename(a, PathOf("c"), false), FileResult::kDone);
    EXPECT_EQ(files().Rename(PathOf("c"), b, true), FileResult::kDone);
    EXPECT_EQ(folder.Read("b"), "1");
    EXPECT_FALSE(folder.Has("a") || folder.Has("c"));
    EXPECT_EQ(files().Rename(b, PathOf("none/b"), false), FileResult::kMissing);
    EXPECT_TRUE(folder.Has("b"));

    folder.Write("x/file", "3");
    EXPECT_EQ(files().Rename(PathOf("x"), PathOf("y"), false), FileResult::kDone);
    EXPECT_EQ(folder.Read("y/file"), "3");
    EXPECT_EQ(files().FlushFolder(folder.Path()), FileResult::kDone);
}

TEST_P(FilesContract, ReplacesAFileThatOthersRead) {
    const std::string path = folder.Write("read", "old");
    std::atomic<bool> ends = false;
    std::thread reader([&] {
        FileResult result = FileResult::kDone;
        const auto pause = std::chrono::milliseconds(2);
        for (; !ends; std::this_thread::sleep_for(pause)) {
            const auto file = services.files->OpenForReading(path, result);
            std::this_thread::sleep_for(pause);
        }
    });
    for (int i = 0; i < 50; ++i) {
        const std::string fresh = folder.Write("fresh", std::to_string(i));
        EXPECT_EQ(files().Rename(fresh, path, true), FileResult::kDone) << i;
    }
    ends = true;
    reader.join();
    EXPECT_EQ(folder.Read("read"), "49");
}

TEST_P(FilesContract, CopiesTimes) {
    const std::string from = folder.Write("from", "1");
    const std::string to = folder.Write("to", "22");
    std::filesystem::last_write_time(from, std::filesystem::last_write_time(to) - std::chrono::hours(30'000));
    EXPECT_EQ(files().CopyAttributes(from, to), FileResult::kDone);
    EXPECT_EQ(files().Inspect(to).written, files().Inspect(from).written);
    EXPECT_EQ(std::filesystem::last_write_time(to), std::filesystem::last_write_time(from));
    EXPECT_EQ(folder.Read("to"), "22");
    EXPECT_EQ(files().CopyAttributes(from, PathOf("none")), FileResult::kMissing);
    EXPECT_EQ(files().CopyAttributes(PathOf("none"), to), FileResult::kMissing);
    EXPECT_FALSE(folder.Has("none"));
}

TEST_P(FilesContract, ErasesFilesAndEmptyFoldersOnly) {
    folder.Write("full/file", "1");
    EXPECT_EQ(files().Erase(PathOf("full")), FileResult::kExists);
    EXPECT_EQ(folder.Read("full/file"), "1");
    EXPECT_EQ(files().Erase(PathOf("full/file")), FileResult::kDone);
    EXPECT_EQ(files().Erase(PathOf("full")), FileResult::kDone);
    EXPECT_FALSE(folder.Has("full"));
}

TEST_P(FilesContract, LetsOthersUseAnOpenFile) {
    const std::string path = folder.Write("a", "1234");
    FileResult result = FileResult::kFailed;
    const auto in = files().OpenForReading(path, result);
    ASSERT_TRUE(in);
    EXPECT_EQ(WriteFile(path, "5678", OpenMode::kAppend), FileResult::kDone);
    EXPECT_EQ(in->Size(), 8);
    EXPECT_EQ(files().Rename(path, PathOf("b"), false), FileResult::kDone);
    EXPECT_EQ(files().Erase(PathOf("b")), FileResult::kDone);
    std::string read(8, ' ');
    EXPECT_EQ(in->ReadAt(0, read.data(), 8), 8);
    EXPECT_EQ(read, "12345678");
}

TEST_P(FilesContract, TakesLongPaths) {
    std::string deep = folder.Path();
    while (deep.size() < 3'800) deep = JoinPath(deep, std::string(95, 'd'));
    ASSERT_EQ(files().MakeFolders(deep), FileResult::kDone);
    const std::string path = JoinPath(deep, "file");
    EXPECT_EQ(WriteFile(path, "deep", OpenMode::kCreateNew), FileResult::kDone);
    EXPECT_EQ(files().Inspect(path).size, 4);
    EXPECT_EQ(files().Rename(path, path + "2", false), FileResult::kDone);
    std::vector<FolderEntry> entries;
    EXPECT_EQ(files().ListFolder(deep, entries), FileResult::kDone);
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].name, "file2");
    const std::string tooLong = PathOf(std::string(1'000, 'n'));
    EXPECT_EQ(files().Inspect(tooLong).kind, FileKind::kMissing);
    EXPECT_EQ(WriteFile(tooLong, "", OpenMode::kReplace), FileResult::kBadName);
    EXPECT_EQ(EraseTree(files(), folder.Path()), FileResult::kDone);
    EXPECT_EQ(files().Inspect(folder.Path()).kind, FileKind::kMissing);
}

TEST_P(FilesContract, ResolvesPaths) {
    const std::string path = folder.Write("sub/file", "");
    const std::string plain = files().ResolvePath(path);
    EXPECT_TRUE(IsAbsolutePath(plain));
    EXPECT_EQ(FileTitle(plain), "file");
    EXPECT_EQ(files().ResolvePath(PathOf("./sub/../sub/file")), plain);
    EXPECT_EQ(files().ResolvePath(plain), plain);
    const std::string longName = folder.Write("a rather long name.and endings.too", "");
    EXPECT_EQ(files().ResolvePath(files().ShortPath(longName)), files().ResolvePath(longName));
    EXPECT_EQ(files().ShortPath(""), "");
    EXPECT_GT(files().FreeSpace(folder.Path()), 0);
}

TEST_P(FilesContract, LocksForOneHolderAtATime) {
    FileResult result = FileResult::kFailed;
    auto held = files().TryLock(PathOf("lock"), result);
    ASSERT_TRUE(held);
    EXPECT_EQ(result, FileResult::kDone);
    EXPECT_FALSE(files().TryLock(PathOf("lock"), result));
    EXPECT_EQ(result, FileResult::kBusy);
    EXPECT_TRUE(files().TryLock(PathOf("other"), result));
    held.reset();
    EXPECT_TRUE(files().TryLock(PathOf("lock"), result));
    EXPECT_FALSE(files().TryLock(PathOf("none/lock"), result));
    EXPECT_EQ(result, FileResult::kMissing);
}

TEST_P(FilesContract, LocksBetweenProcesses) {
    ProcessRequest request;
    request.arguments = {TestChildPath(*services.machine), "hold-lock", PathOf("lock")};
    request.pipes = true;
    int error = 0;
    const auto child = services.processes->Start(request, error);
    ASSERT_TRUE(child) << error;
    std::string output;
    for (int i = 0; i < 500 && output.empty() && child->ReadOutput(output); ++i) services.loop->Wait(20);
    ASSERT_EQ(output.substr(0, 4), "held");
    FileResult result = FileResult::kDone;
    EXPECT_FALSE(files().TryLock(PathOf("lock"), result));
    EXPECT_EQ(result, FileResult::kBusy);
    child->EndTree();
    EXPECT_TRUE(files().TryLock(PathOf("lock"), result));
}

}  // namespace
}  // namespace quirepress
