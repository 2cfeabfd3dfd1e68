#include <windows.h>

#include <shellapi.h>

#include <cstdio>
#include <cstdlib>

#include <gtest/gtest.h>

#include "fakes/temporary_folder.h"
#include "platform/event_loop.h"
#include "platform/machine.h"
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
    std::string RunToEnd(const ProcessRequest& request, std::string_view input = {}) {
        int error = 0;
        const auto process = m_services.processes->Start(request, error);
        EXPECT_NE(process, nullptr) << error;
        if (!process) return {};
        EXPECT_TRUE(process->WriteInput(input));
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

// Run again with this variable set, the test program counts its input instead of testing.
constexpr const char* kCountInput = "QUIREPRESS_COUNT_INPUT";
const bool g_countsInput = [] {
    if (std::getenv(kCountInput) == nullptr) return false;
    std::size_t size = 0;
    while (std::fgetc(stdin) != EOF) ++size;
    std::printf("%zu", size);
    std::exit(0);
}();

TEST_F(WindowsProcessesTest, KeepsInputThatTheProgramHasNotReadYet) {
    ASSERT_FALSE(g_countsInput);
    const std::string input(1'000'000, 'x');  // far more than a pipe holds
    ProcessRequest request;
    request.pipes = true;
    request.arguments = {m_services.machine->ProgramPath()};
    request.environment = {{kCountInput, "1"}};
    EXPECT_EQ(RunToEnd(request, input), std::to_string(input.size()));
}

TEST_F(WindowsProcessesTest, EndsWhatAProgramHasStarted) {
    const std::string mark = m_folder.PathOf("mark");
    ProcessRequest request;
    request.pipes = true;
    // The inner program holds the mark open for as long as it runs.
    request.arguments = {m_folder.Write("outer.bat", "@cmd /c \"ping -n 60 127.0.0.1 >%~1\"\r\n"), mark};
    int error = 0;
    auto process = m_services.processes->Start(request, error);
    ASSERT_NE(process, nullptr);
    while (!m_folder.Has("mark")) m_services.loop->Wait(10);
    process.reset();
    for (int i = 0; i < 100 && DeleteFileA(mark.c_str()) == 0; ++i) m_services.loop->Wait(20);
    EXPECT_FALSE(m_folder.Has("mark"));
}

}  // namespace
}  // namespace quirepress
