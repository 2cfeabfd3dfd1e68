#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <chrono>

#include "fakes/linux/scoped_variable.h"
#include "fakes/running_child.h"
#include "fakes/temporary_folder.h"
#include "platform/clock.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/interrupts.h"
#include "platform/machine.h"
#include "platform/processes.h"
#include "platform/registry.h"
#include "platform/services.h"
#include "platform/shell.h"

namespace quirepress {
namespace {

using ::testing::ElementsAre;

TEST(LinuxInterruptsTest, EndsWaitsAndThenTheProgram) {
    // In a process of its own: the second interrupt is its end.
    const auto useLoop = [] {
        Services services = MakeSystemServices();
        CatchInterrupts();
        services.loop->StartTimer(1, 20, [&] {
            services.loop->StopTimer(1);
            raise(SIGINT);
            services.loop->Wait(60'000);  // the inner wait ends, and the outer one
        });
        const auto start = std::chrono::steady_clock::now();
        services.loop->Wait(60'000);
        if (InterruptCount() != 1 || std::chrono::steady_clock::now() - start > std::chrono::seconds(20))
            _exit(1);
        const long long before = services.loop->MonotonicMilliseconds();
        services.loop->Wait(50);  // no longer cut short
        if (services.loop->MonotonicMilliseconds() - before < 50) _exit(2);
        raise(SIGTERM);
        _exit(3);
    };
    EXPECT_EXIT(useLoop(), testing::KilledBySignal(SIGTERM), "");
}

TEST(LinuxInterruptsTest, WakesASleepingWait) {
    const auto useLoop = [] {
        Services services = MakeSystemServices();
        CatchInterrupts();
        const pid_t self = getpid();
        if (fork() == 0) {
            usleep(100'000);
            kill(self, SIGTERM);
            _exit(0);
        }
        services.loop->Wait(60'000);
        _exit(services.loop->MonotonicMilliseconds() > 0 && InterruptCount() == 1 ? 7 : 1);
    };
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EXIT(useLoop(), testing::ExitedWithCode(7), "");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(LinuxInterruptsTest, TheEndOfTheTerminalCountsAsTheFirstOnly) {
    const auto hangUp = [] {
        CatchInterrupts();
        for (int i = 0; i < 3; ++i) raise(SIGHUP);
        const int hangUps = InterruptCount();
        raise(SIGTERM);
        _exit(hangUps);
    };
    EXPECT_EXIT(hangUp(), testing::KilledBySignal(SIGTERM), "");
    const auto afterInterrupt = [] {
        CatchInterrupts();
        raise(SIGINT);
        raise(SIGHUP);
        _exit(InterruptCount() + 6);
    };
    EXPECT_EXIT(afterInterrupt(), testing::ExitedWithCode(7), "");
    // As nohup starts it.
    const auto outlive = [] {
        signal(SIGHUP, SIG_IGN);
        CatchInterrupts();
        raise(SIGHUP);
        _exit(InterruptCount() + 5);
    };
    EXPECT_EXIT(outlive(), testing::ExitedWithCode(5), "");
}

TEST(LinuxClockTest, AgreesWithTheSystemAroundEveryChangeOfTheClocks) {
    // Half hours, far offsets, and a zone whose offset was once no whole minute.
    for (const char* zone : {"Europe/Berlin", "America/New_York", "Australia/Lord_Howe", "Asia/Kathmandu",
                             "Africa/Monrovia", "UTC"}) {
        const ScopedVariable timeZone("TZ", zone);
        const Services services = MakeSystemServices();
        int wrong = 0;
        for (time_t moment = -300'000'000; moment < 2'200'000'000; moment += 6'007) {
            tm parts = {};
            localtime_r(&moment, &parts);
            const LocalTime expected = {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
                                        parts.tm_hour,        parts.tm_min,     parts.tm_sec};
            if (services.clock->ToLocal(moment * 1'000'000'000 + 999'999'999) != expected) ++wrong;
        }
        EXPECT_EQ(wrong, 0) << zone;
    }
}

TEST(LinuxMachineTest, FollowsTheEnvironment) {
    const Services services = MakeSystemServices();
    Machine& machine = *services.machine;
    const ScopedVariable home("HOME", "/home/me");
    {
        const ScopedVariable data("XDG_DATA_HOME", "/data");
        EXPECT_EQ(machine.DataFolder(), "/data/quirepress/");
    }
    {
        const ScopedVariable data("XDG_DATA_HOME", "relative");
        EXPECT_EQ(machine.DataFolder(), "/home/me/.local/share/quirepress/");
    }
    const ScopedVariable temporary("TMPDIR", "/scratch");
    EXPECT_EQ(machine.TemporaryFolder(), "/scratch/");
}

class LinuxRegistryTest : public testing::Test {
protected:
    TemporaryFolder folder;
    ScopedVariable m_configuration{"XDG_CONFIG_HOME", folder.Path()};
    Services services = MakeSystemServices();
    Registry& registry = *services.registry;
};

TEST_F(LinuxRegistryTest, LosesNothingThroughGarbage) {
    const std::string garbage = "number;K;bad;99999999999\n;;;\ntext;K;n%G0;x\n\xFF\xFE" +
                                std::string("\0\0", 2) + "\nnumber;too;few\n";
    folder.Write("quirepress/registry",
                 garbage + "number;K;good;5\ntext;K;path;C:\\a%3Bb\n" + std::string(70'000, 'x'));
    std::uint32_t number = 0;
    std::string text;
    EXPECT_EQ(registry.ReadNumber("K", "good", number), 0);
    EXPECT_EQ(number, 5U);
    EXPECT_EQ(registry.ReadText("K", "path", text), 0);
    EXPECT_EQ(text, "C:\\a;b");
    EXPECT_EQ(registry.ListValues("K").size(), 2U);
    EXPECT_EQ(registry.WriteNumber("K", "good", 6), 0);
    EXPECT_EQ(registry.ListValues("K").size(), 2U);
    EXPECT_NE(folder.Read("quirepress/registry").find("number;too;few\n"), std::string::npos);
}

TEST_F(LinuxRegistryTest, FailsWhereItCannotBeKept) {
    std::uint32_t number = 0;
    services.files->MakeFolders(folder.PathOf("quirepress/registry"));
    EXPECT_EQ(registry.ReadNumber("K", "n", number), -1);
    EXPECT_EQ(registry.WriteNumber("K", "n", 1), -1);
    EXPECT_TRUE(registry.ListValues("K").empty());
    const ScopedVariable elsewhere("XDG_CONFIG_HOME", folder.Write("file", ""));
    EXPECT_EQ(registry.WriteText("K", "n", "x"), -1);
}

TEST(LinuxShellTest, ResolvesDesktopLinks) {
    const Services services = MakeSystemServices();
    const TemporaryFolder folder;
    const std::string target = folder.Write("a b%\xC3\xBC.pdf", "1");
    const std::string encoded = folder.PathOf("a%20b%25%c3%BC.pdf");
    const auto resolve = [&](const std::string& entry) {
        return services.shell->ResolveShortcut(folder.Write("link.desktop", entry));
    };
    const std::string start = "# comment\n[Desktop Entry]\r\nType = Link\r\nName=x\nURL=";
    EXPECT_TRUE(services.shell->IsShortcut("/x/Link.DESKTOP"));
    EXPECT_EQ(resolve(start + "file://" + encoded + "\r\n"), target);
    EXPECT_EQ(resolve(start + "file://localhost" + encoded), target);
    EXPECT_EQ(resolve(start + "FILE:" + encoded + "\n[Other]\nURL=file:///\n"), target);
    EXPECT_EQ(resolve(start + target), target);
    EXPECT_EQ(resolve(start + "https://example.org/a%20b?c=d"), "https://example.org/a%20b?c=d");
    EXPECT_EQ(resolve(start + "ftp://host/x"), "ftp://host/x");
    for (const std::string bad : {"file:///no/such/file", "file://otherhost/etc/passwd", "file:///etc%2",
                                  "relative", "file:///etc%00", "mailto:me", "", "http://"})
        EXPECT_EQ(resolve(start + bad), "") << bad;
    EXPECT_EQ(resolve("[Desktop Entry]\nType=Application\nURL=file://" + encoded), "");
    EXPECT_EQ(resolve("[Other]\nType=Link\nURL=file://" + encoded), "");
    EXPECT_EQ(resolve(start + "file://" + encoded + "\n" + std::string(70'000, '#')), "");
}

// A program must not outlive the one that started it, even when that one is killed.
TEST(LinuxProcessesTest, EndsTheTreeWhenThisProgramIsKilled) {
    Services services = MakeSystemServices();
    const TemporaryFolder folder;
    const std::string file = folder.PathOf("beats");
    const pid_t program = fork();
    if (program == 0) {
        Services mine = MakeSystemServices();
        const RunningChild child(mine, {"start-detached-beat", file, "30000"});
        mine.loop->Wait(60'000);
        _exit(0);
    }
    const auto size = [&] { return services.files->Inspect(file).size; };
    for (int i = 0; i < 1'000 && size() < 3; ++i) services.loop->Wait(10);
    EXPECT_GE(size(), 3);
    kill(program, SIGKILL);
    waitpid(program, nullptr, 0);
    services.loop->Wait(500);
    const std::int64_t before = size();
    services.loop->Wait(200);
    EXPECT_EQ(size(), before);
}

TEST(LinuxProcessesTest, KnowsWhatItsProgramHasLeftBehind) {
    Services services = MakeSystemServices();
    ProcessRequest request;
    request.arguments = {"sh", "-c", "setsid sleep 30 >&- 2>&- & echo $!"};
    request.pipes = true;
    int error = 0;
    const auto process = services.processes->Start(request, error);
    ASSERT_TRUE(process);
    std::string said;
    while (process->ReadOutput(said)) services.loop->Wait(5);
    ASSERT_TRUE(WaitForProcess(*services.loop, *process, 10'000));
    const std::int64_t left = std::stol(said);
    EXPECT_TRUE(process->HasInTree(left));
    process->EndTree();
    EXPECT_FALSE(process->HasInTree(left));
}

TEST(LinuxProcessesTest, TellsWhichSignalEndedIt) {
    Services services = MakeSystemServices();
    RunningChild child(services, {"sleep", "30000"});
    ASSERT_TRUE(child);
    kill(static_cast<pid_t>(child->Id()), SIGUSR1);
    EXPECT_TRUE(WaitForProcess(*services.loop, *child, 10'000));
    EXPECT_EQ(child->ExitCode(), 128 + SIGUSR1);
}

TEST(LinuxShellTest, KnowsTypesByTheMimeDatabases) {
    const TemporaryFolder folder;
    folder.Write("user/mime/globs2", "# a comment\n60:Application/X-Mine:*.rtf\n");
    folder.Write("system/mime/globs2",
                 "80:text/x-lead:*.Lead\n50:application/rtf:*.rtf\n50:text/plain:*.txt:cs\n50:x/any:*.t[xy]\n"
                 "50:text/x-readme:readme*\n40:text/x-late:*.lead\nbroken\n");
    const ScopedVariable user("XDG_DATA_HOME", folder.PathOf("user"));
    const ScopedVariable system("XDG_DATA_DIRS", folder.PathOf("none") + ":" + folder.PathOf("system"));
    const Services services = MakeSystemServices();
    EXPECT_EQ(services.shell->TypeOfFile("/x/a.RTF"), "application/x-mine");
    EXPECT_EQ(services.shell->TypeOfFile("a.txt"), "text/plain");
    EXPECT_EQ(services.shell->TypeOfFile("a.lead"), "text/x-lead");
    EXPECT_EQ(services.shell->TypeOfFile("a.ty"), "");
    EXPECT_EQ(services.shell->TypeOfFile("readme"), "");
}

TEST(LinuxShellTest, FindsProgramsThatCanBeStarted) {
    const TemporaryFolder folder;
    const std::string program = folder.Write("bin/tool", "#!/bin/sh\n");
    chmod(program.c_str(), 0755);
    const std::string data = folder.Write("bin/data", "x");
    chmod(data.c_str(), 0644);
    folder.Write("bin/folder/x", "x");
    const ScopedVariable path("PATH", "/no/such:" + folder.PathOf("bin"));
    const Services services = MakeSystemServices();
    EXPECT_EQ(services.shell->FindProgram("tool"), program);
    EXPECT_EQ(services.shell->FindProgram(program), program);
    for (const std::string& name : {std::string("data"), std::string("folder"), std::string("none"),
                                    folder.PathOf("bin/none"), std::string(), std::string("to\0ol", 5)})
        EXPECT_EQ(services.shell->FindProgram(name), "") << name;
}

TEST(LinuxShellTest, ReadsWhatRunsAScript) {
    const TemporaryFolder folder;
    const Services services = MakeSystemServices();
    const auto command = [&](std::string_view text) {
        std::vector<std::string> words = services.shell->ScriptCommand(folder.Write("s.bat", text));
        EXPECT_EQ(words.back(), folder.PathOf("s.bat"));
        words.pop_back();
        return words;
    };
    EXPECT_THAT(command("echo hello\n"), ElementsAre("/bin/sh"));
    EXPECT_THAT(command(""), ElementsAre("/bin/sh"));
    EXPECT_THAT(command("#!/usr/bin/env -S a  b \r\necho"), ElementsAre("/usr/bin/env", "-S a  b"));
    EXPECT_THAT(command("#! /bin/bash"), ElementsAre("/bin/bash"));
    EXPECT_THAT(command("#!\n"), ElementsAre("/bin/sh"));
    EXPECT_THAT(services.shell->ScriptCommand(folder.PathOf("none.bat")), ElementsAre());
    EXPECT_THAT(services.shell->ScriptCommand(folder.Path()), ElementsAre());
    RegisteredCommand registered;
    EXPECT_FALSE(services.shell->FindPrintCommand("/x/a.doc", registered));
}

}  // namespace
}  // namespace quirepress
