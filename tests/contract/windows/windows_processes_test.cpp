#include <windows.h>

#include <shellapi.h>

#include <gtest/gtest.h>

#include "fakes/temporary_folder.h"
#include "platform/event_loop.h"
#include "platform/processes.h"
#include "platform/services.h"
#include "platform/windows/command_line.h"
#include "platform/windows/environment.h"

namespace quirepress {
namespace {

TEST(CommandLineTest, IsTakenApartIntoTheSameWords) {
    const std::vector<std::wstring> words = {L"C:\\Program Files\\x.exe",
                                             L"",
                                             L"plain",
                                             L"two words",
                                             L"say \"hi\"",
                                             L"ends in\\",
                                             L"\\\\server\\share\\",
                                             L"a\\\\\"b c\\\\",
                                             L"tab\there",
                                             L"%PATH% & | > ^ !x!"};
    int count = 0;
    LPWSTR* const parsed = CommandLineToArgvW(MakeCommandLine(words).c_str(), &count);
    ASSERT_NE(parsed, nullptr);
    EXPECT_EQ(std::vector<std::wstring>(parsed, parsed + count), words);
    LocalFree(parsed);
}

TEST(CommandLineTest, SaysNothingToABatchFileThatWouldBeCarriedOut) {
    std::wstring line;
    ASSERT_TRUE(MakeBatchCommandLine({L"C:\\a b.bat", L"x & del *", L"%PATH%"}, line));
    EXPECT_EQ(line,
              L"cmd.exe /e:on /v:off /d /s /c \"\"C:\\a b.bat\" \"x & del *\" \"%%cd:~,%PATH%%cd:~,%\"\"");
    EXPECT_FALSE(MakeBatchCommandLine({L"a.bat", L"\" & del *"}, line));
    EXPECT_FALSE(MakeBatchCommandLine({L"a.bat", L"x\ny"}, line));
}

TEST(EnvironmentTest, ReplacesAVariableWhateverItsCase) {
    SetEnvironmentVariableW(L"QuirepressTest", L"old");
    const std::wstring block = MakeEnvironment({{"QUIREPRESSTEST", "new"}});
    SetEnvironmentVariableW(L"QuirepressTest", nullptr);
    EXPECT_NE(block.find(std::wstring(L"QuirepressTest=new\0", 19)), std::wstring::npos);
    EXPECT_EQ(block.find(L"old"), std::wstring::npos);
    EXPECT_TRUE(block.ends_with(std::wstring(2, L'\0')));
}

class WindowsProcessesTest : public testing::Test {
protected:
    // What it wrote, once it has ended.
    std::string RunToEnd(const ProcessRequest& request) {
        int error = 0;
        const auto process = m_services.processes->Start(request, error);
        EXPECT_NE(process, nullptr) << error;
        if (!process) return {};
        process->CloseInput();
        std::string output;
        while (process->ReadOutput(output)) m_services.loop->Wait(5);
        EXPECT_TRUE(WaitForProcess(*m_services.loop, *process, 20'000));
        m_exitCode = process->ExitCode();
        return output;
    }

    TemporaryFolder m_folder;
    Services m_services = MakeSystemServices();
    int m_exitCode = -1;
};

TEST_F(WindowsProcessesTest, GivesABatchFileItsWordsUnchanged) {
    ProcessRequest request;
    request.pipes = true;
    request.arguments = {m_folder.Write("print it.bat", "@echo %1 %2\r\n@exit /b 7\r\n"), "a & echo b",
                         "c|d"};
    EXPECT_EQ(RunToEnd(request), "\"a & echo b\" \"c|d\"\r\n");
    EXPECT_EQ(m_exitCode, 7);
}

}  // namespace
}  // namespace quirepress
