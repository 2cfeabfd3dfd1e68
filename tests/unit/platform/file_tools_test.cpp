#include "platform/file_tools.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <string>

#include "fakes/surroundings.h"

namespace quirepress {
namespace {

using Call = FaultyFiles::Call;

class FileToolsTest : public testing::Test, protected Surroundings {
protected:
    std::size_t CountEntries() {
        std::vector<FolderEntry> entries;
        EXPECT_EQ(system.files->ListFolder(folder.Path(), entries), FileResult::kDone);
        return entries.size();
    }

    FileResult result = FileResult::kFailed;
};

TEST_F(FileToolsTest, ReadsFilesUpToTheLimit) {
    for (const std::size_t size : {0U, 1U, 4'095U, 4'096U, 4'097U, 9'000U}) {
        const std::string bytes(size, 'b');
        const std::string path = folder.Write("file", bytes);
        const auto limit = static_cast<std::int64_t>(size);
        std::string out = "before";
        EXPECT_TRUE(ReadWholeFile(files, path, limit, out, result)) << size;
        EXPECT_EQ(out, bytes);
        EXPECT_EQ(result, FileResult::kDone);
        if (size == 0) continue;
        EXPECT_FALSE(ReadWholeFile(files, path, limit - 1, out, result)) << size;
        EXPECT_EQ(result, FileResult::kFailed);
        EXPECT_EQ(out, bytes);
    }
    std::string out = "before";
    EXPECT_FALSE(ReadWholeFile(files, folder.PathOf("none"), 10, out, result));
    EXPECT_EQ(result, FileResult::kMissing);
    files.FailOnce(Call::kReadAt, FileResult::kFailed);
    EXPECT_FALSE(ReadWholeFile(files, folder.PathOf("file"), 100'000, out, result));
    EXPECT_NE(result, FileResult::kDone);
    EXPECT_EQ(out, "before");
}

TEST_F(FileToolsTest, ReadsAFileThatGrowsMeanwhile) {
    const std::string path = folder.Write("file", std::string(5'000, 'a'));
    bool grown = false;
    files.BeforeEach(Call::kReadAt, [&](std::string_view) {
        if (!grown) folder.Write("file", std::string(9'000, 'b'));
        grown = true;
    });
    std::string out;
    EXPECT_TRUE(ReadWholeFile(files, path, 100'000, out, result));
    EXPECT_EQ(out, std::string(9'000, 'b'));
}

TEST_F(FileToolsTest, ReplacesFilesOrLeavesThem) {
    const std::string path = folder.PathOf("settings");
    EXPECT_EQ(ReplaceFileDurably(files, path, "old"), FileResult::kDone);
    EXPECT_EQ(ReplaceFileDurably(files, path, std::string_view("new\0", 4)), FileResult::kDone);
    EXPECT_EQ(folder.Read("settings"), std::string("new\0", 4));
    EXPECT_EQ(CountEntries(), 1U);

    // Whatever fails: the old file stays and nothing is left beside it.
    for (const Call call :
         {Call::kOpenForWriting, Call::kWrite, Call::kFlushToDisk, Call::kClose, Call::kRename}) {
        files.FailOnce(call, FileResult::kNoSpace);
        EXPECT_EQ(ReplaceFileDurably(files, path, "lost"), FileResult::kNoSpace);
        EXPECT_EQ(folder.Read("settings").substr(0, 3), "new");
        EXPECT_EQ(CountEntries(), 1U) << static_cast<int>(call);
    }
    files.FillDiskAfter(2);
    EXPECT_EQ(ReplaceFileDurably(files, path, "lost"), FileResult::kNoSpace);
    EXPECT_EQ(CountEntries(), 1U);
    EXPECT_EQ(ReplaceFileDurably(files, folder.PathOf("none/settings"), "lost"), FileResult::kMissing);
}

TEST_F(FileToolsTest, FlushesBeforeItRenames) {
    EXPECT_EQ(ReplaceFileDurably(files, folder.PathOf("settings"), "x"), FileResult::kDone);
    std::vector<Call> order;
    for (const FaultyFiles::Record& record : files.Records()) order.push_back(record.call);
    const std::vector<Call> expected = {Call::kInspect,     Call::kOpenForWriting, Call::kWrite,
                                        Call::kFlushToDisk, Call::kClose,          Call::kRename};
    EXPECT_EQ(order, expected);
}

TEST_F(FileToolsTest, PassesByWhatACrashLeftBehind) {
    files.FailAlways(Call::kErase, FileResult::kFailed);
    files.FailOnce(Call::kRename, FileResult::kFailed);
    EXPECT_EQ(ReplaceFileDurably(files, folder.PathOf("a"), "1"), FileResult::kFailed);
    EXPECT_EQ(CountEntries(), 1U);
    EXPECT_EQ(ReplaceFileDurably(files, folder.PathOf("a"), "2"), FileResult::kDone);
    EXPECT_EQ(folder.Read("a"), "2");
}

// Shows files whose names end so as older than they are.
class AgeingFiles : public FaultyFiles {
public:
    using FaultyFiles::FaultyFiles;
    FileFacts Inspect(std::string_view path) override {
        FileFacts facts = FaultyFiles::Inspect(path);
        for (const auto& [end, minutes] : m_made)
            if (path.ends_with(end)) facts.created -= minutes * kMinute;
        for (const auto& [end, minutes] : m_written)
            if (path.ends_with(end)) facts.written -= minutes * kMinute;
        return facts;
    }

    static constexpr Instant kMinute = 60'000'000'000;
    std::map<std::string, int> m_made, m_written;
};

TEST_F(FileToolsTest, ErasesWhatACrashLeftBehindAnHourAgo) {
    AgeingFiles ageing(*system.files);
    ageing.m_made = {{"~qpr0.tmp", 61}, {"~qpr1.tmp", 59}, {"~qpr2.tmp", 5}, {"~qpr3.tmp", 90}};
    ageing.m_written = {{"~qpr0.tmp", 61}, {"~qpr1.tmp", 59}, {"~qpr2.tmp", 500}, {"~qpr3.tmp", 5}};
    for (const char* name : {"~qpr0.tmp", "~qpr1.tmp", "~qpr2.tmp", "~qpr3.tmp"}) folder.Write(name, "rest");
    EXPECT_EQ(ReplaceFileDurably(ageing, folder.PathOf("a"), "1"), FileResult::kDone);
    EXPECT_FALSE(folder.Has("~qpr0.tmp"));
    for (const char* name : {"~qpr1.tmp", "~qpr2.tmp", "~qpr3.tmp"})
        EXPECT_TRUE(folder.Has(name)) << name << " may be another program's at work";
    EXPECT_EQ(folder.Read("a"), "1");
}

TEST_F(FileToolsTest, CopiesCompletelyOrNotAtAll) {
    std::string bytes(700'000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i / 251);
    const std::string from = folder.Write("from", bytes);
    const std::string to = folder.PathOf("to");
    int asked = 0;
    const auto goOn = [&] { return ++asked > 0; };
    EXPECT_EQ(CopyFileDurably(files, from, to, goOn), FileResult::kDone);
    EXPECT_TRUE(folder.Read("to") == bytes);
    EXPECT_GE(asked, 2);
    EXPECT_EQ(CopyFileDurably(files, folder.Write("empty", ""), folder.PathOf("empty2")), FileResult::kDone);
    EXPECT_TRUE(folder.Has("empty2"));

    EXPECT_EQ(CopyFileDurably(files, folder.PathOf("empty"), to), FileResult::kExists);
    EXPECT_TRUE(folder.Read("to") == bytes);
    const std::size_t before = CountEntries();
    const std::string never = folder.PathOf("never");
    EXPECT_EQ(CopyFileDurably(files, from, never, [] { return false; }), FileResult::kFailed);
    EXPECT_EQ(CopyFileDurably(files, folder.PathOf("none"), never), FileResult::kMissing);
    files.FailOnce(Call::kReadAt, FileResult::kFailed, 2);
    EXPECT_EQ(CopyFileDurably(files, from, never), FileResult::kFailed);
    files.FailOnce(Call::kFlushToDisk, FileResult::kNoSpace);
    EXPECT_EQ(CopyFileDurably(files, from, never), FileResult::kNoSpace);
    files.FillDiskAfter(300'000);
    EXPECT_EQ(CopyFileDurably(files, from, never), FileResult::kNoSpace);
    EXPECT_EQ(CountEntries(), before);
}

TEST_F(FileToolsTest, KeepsTheTimesOfWhatItCopies) {
    const std::string from = folder.Write("from", "bytes");
    const std::string to = folder.PathOf("to");
    std::filesystem::last_write_time(from,
                                     std::filesystem::last_write_time(from) - std::chrono::hours(30'000));
    EXPECT_EQ(CopyFileDurably(files, from, to), FileResult::kDone);
    EXPECT_EQ(files.Inspect(to).written, files.Inspect(from).written);
    // A volume that cannot keep them gets the file all the same.
    files.FailAlways(Call::kCopyAttributes, FileResult::kNoAccess);
    EXPECT_EQ(CopyFileDurably(files, from, folder.PathOf("plain")), FileResult::kDone);
    EXPECT_EQ(folder.Read("plain"), "bytes");
}

TEST_F(FileToolsTest, DoesNotCopyOverAFileThatAppearsMeanwhile) {
    const std::string from = folder.Write("from", "mine");
    const auto appear = [&] {
        folder.Write("to", "theirs");
        return true;
    };
    EXPECT_EQ(CopyFileDurably(files, from, folder.PathOf("to"), appear), FileResult::kExists);
    EXPECT_EQ(folder.Read("to"), "theirs");
    EXPECT_EQ(CountEntries(), 2U);
}

TEST_F(FileToolsTest, ErasesTrees) {
    folder.Write("tree/a/b/file", "1");
    folder.Write("tree/file", "2");
    folder.Write("kept", "3");
    files.FailOnce(Call::kErase, FileResult::kBusy, 3);  // one entry; the others go all the same
    EXPECT_EQ(EraseTree(files, folder.PathOf("tree")), FileResult::kBusy);
    EXPECT_TRUE(folder.Has("tree"));
    EXPECT_EQ(EraseTree(files, folder.PathOf("tree")), FileResult::kDone);
    EXPECT_FALSE(folder.Has("tree"));
    EXPECT_EQ(EraseTree(files, folder.PathOf("tree")), FileResult::kDone);
    EXPECT_EQ(EraseTree(files, folder.PathOf("kept")), FileResult::kDone);
    EXPECT_EQ(CountEntries(), 0U);
}

}  // namespace
}  // namespace quirepress
