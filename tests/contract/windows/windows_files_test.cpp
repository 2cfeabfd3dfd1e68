#include <windows.h>

#include <gtest/gtest.h>

#include "fakes/temporary_folder.h"
#include "platform/files.h"
#include "platform/services.h"
#include "platform/windows/system_handle.h"
#include "platform/windows/system_path.h"
#include "platform/windows/system_text.h"

namespace quirepress {
namespace {

class WindowsFilesTest : public testing::Test {
protected:
    TemporaryFolder m_folder;
    Services m_services = MakeSystemServices();
    Files& m_files = *m_services.files;
    FileResult m_result = FileResult::kFailed;
};

TEST_F(WindowsFilesTest, TakesNoDeviceForAFile) {
    for (const char* device :
         {"CON", "NUL", "com1", "\\\\.\\pipe\\x", "\\\\?\\pipe\\x", "//./PhysicalDrive0"}) {
        EXPECT_EQ(m_files.Inspect(device).kind, FileKind::kOther) << device;
        EXPECT_EQ(m_files.OpenForReading(device, m_result), nullptr) << device;
        EXPECT_EQ(m_result, FileResult::kNoAccess) << device;
        EXPECT_EQ(m_files.OpenForWriting(device, OpenMode::kReplace, FileAccess::kShared, m_result), nullptr);
        EXPECT_EQ(m_files.TryLock(device, m_result), nullptr) << device;
    }
}

TEST_F(WindowsFilesTest, KeepsOutOfTheStreamsOfAFile) {
    const std::string file = m_folder.Write("a.txt", "text");
    EXPECT_EQ(m_files.OpenForWriting(file + ":hidden", OpenMode::kCreateNew, FileAccess::kShared, m_result),
              nullptr);
    EXPECT_EQ(m_result, FileResult::kBadName);
    EXPECT_EQ(m_files.MakeFolders(m_folder.PathOf("b:c")), FileResult::kBadName);
}

TEST_F(WindowsFilesTest, ReadsBothSeparatorsAndThePrefixOfLongPaths) {
    m_folder.Write("one/two.txt", "12345");
    const std::string folder = m_folder.Path();
    for (const std::string& path :
         {folder + "/one\\two.txt", folder + "/one/./x/../two.txt", "\\\\?\\" + folder + "\\one\\two.txt"})
        EXPECT_EQ(m_files.Inspect(path).size, 5) << path;
    EXPECT_EQ(m_files.ResolvePath("\\\\?\\" + folder + "\\one\\two.txt"),
              m_files.ResolvePath(folder + "/one/two.txt"));
}

TEST_F(WindowsFilesTest, TellsThatAnotherProgramStillWritesAFile) {
    const std::string path = m_folder.Write("copying.ps", "%!PS");
    std::wstring wide;
    ASSERT_EQ(ToSystemPath(path, wide), FileResult::kDone);
    const SystemHandle writer =
        TakeHandle(CreateFileW(wide.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_NE(writer, nullptr);
    const FileFacts facts = m_files.Inspect(path);
    EXPECT_EQ(facts.kind, FileKind::kRegular);
    EXPECT_EQ(facts.size, 4);
    EXPECT_FALSE(facts.readable);
    EXPECT_EQ(m_files.OpenForReading(path, m_result), nullptr);
    EXPECT_EQ(m_result, FileResult::kBusy);
    EXPECT_EQ(m_files.Erase(path), FileResult::kBusy);
}

TEST(SystemTextTest, GoesBothWays) {
    const std::string text = "caf\xC3\xA9 \xF0\x9F\x96\xA8";
    EXPECT_EQ(Widen(text), L"caf\u00E9 \U0001F5A8");
    EXPECT_EQ(Narrow(Widen(text)), text);
    EXPECT_EQ(Narrow(Widen("caf\xE9")), "caf\xC3\xA9");  // not UTF-8: the system's code page
    EXPECT_EQ(Narrow(L"\xD83D!"), "\xEF\xBF\xBD!");
    EXPECT_NE(DescribeSystemError(ERROR_FILE_NOT_FOUND), "");
}

}  // namespace
}  // namespace quirepress
