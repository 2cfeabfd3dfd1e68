#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "base/path.h"
#include "fakes/built_files.h"
#include "fakes/running_child.h"
#include "fakes/temporary_folder.h"
#include "platform/clock.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/libraries.h"
#include "platform/machine.h"
#include "platform/services.h"
#include "platform/shell.h"
#include "platform/terminal.h"

namespace quirepress {
namespace {

class LibrariesContract : public testing::Test {
protected:
    Services services = MakeSystemServices();
    Libraries& libraries = *services.libraries;
    const std::string path = TestLibraryPath(*services.machine);
};

TEST_F(LibrariesContract, FindsSymbolsOfALibrary) {
    std::string error;
    const auto library = libraries.Load(path, error);
    ASSERT_TRUE(library) << error;
    void* const symbol = library->FindSymbol("QuirepressTestValue");
    ASSERT_NE(symbol, nullptr);
    EXPECT_EQ(reinterpret_cast<int (*)()>(symbol)(), 42);
    EXPECT_EQ(library->FindSymbol("NoSuchFunction"), nullptr);
    EXPECT_EQ(library->FindSymbol(""), nullptr);
}

TEST_F(LibrariesContract, SaysWhyALibraryCannotBeLoaded) {
    const TemporaryFolder folder;
    const std::string garbage = folder.Write("garbage.plg", std::string(5'000, '\x7F'));
    const std::string withNul = path + std::string("\0x", 2);
    for (const std::string& name : {garbage, folder.Path(), folder.PathOf("none.plg"), std::string(), withNul,
                                    std::string("no-such-library.plg")}) {
        std::string error;
        EXPECT_EQ(libraries.Load(name, error), nullptr) << name;
        EXPECT_NE(error, "") << name;
    }
}

TEST(ClockContract, TellsTheTimeOfTheSystem) {
    const Services services = MakeSystemServices();
    constexpr Instant kSecond = 1'000'000'000;
    const auto expected = std::chrono::duration_cast<std::chrono::nanoseconds>(
        std::chrono::system_clock::now().time_since_epoch());
    const Instant now = services.clock->Now();
    EXPECT_NEAR(static_cast<double>(now), static_cast<double>(expected.count()), 5e9);
    EXPECT_EQ(services.clock->ToLocal(kNoInstant), LocalTime());

    // The zone is the machine's own: known are the steps and that it is within a day of UTC.
    const Instant noon = 1'709'294'400 * kSecond;  // 2024-03-01 12:00:00 UTC
    const LocalTime local = services.clock->ToLocal(noon);
    EXPECT_EQ(local.year, 2024);
    EXPECT_EQ(local.month, local.day == 29 ? 2 : 3);
    const LocalTime later = services.clock->ToLocal(noon + 61 * kSecond + kSecond - 1);
    EXPECT_EQ((later.minute * 60 + later.second - local.minute * 60 - local.second + 3'600) % 3'600, 61);
    EXPECT_EQ(services.clock->ToLocal(-1).year + services.clock->ToLocal(-1).month, 1969 + 12);
}

TEST(MachineContract, KnowsItsFolders) {
    const Services services = MakeSystemServices();
    Machine& machine = *services.machine;
    EXPECT_NE(machine.HostName(), "");
    EXPECT_NE(machine.LoginName(), "");
    EXPECT_NE(machine.SystemVersion(), "");
    EXPECT_EQ(machine.Family(), SystemFamily::kWindowsXpOrLater);
    EXPECT_EQ(services.files->Inspect(machine.ProgramPath()).kind, FileKind::kRegular);
    EXPECT_TRUE(IsAbsolutePath(machine.ProgramPath()));
    EXPECT_EQ(services.files->Inspect(machine.TemporaryFolder()).kind, FileKind::kFolder);
    for (const std::string& folder : {machine.TemporaryFolder(), machine.DataFolder()}) {
        EXPECT_TRUE(IsAbsolutePath(folder)) << folder;
        EXPECT_TRUE(IsSeparator(folder.back())) << folder;
    }
    std::string value = "kept";
    EXPECT_FALSE(machine.ReadEnvironment("QUIREPRESS_NOT_SET", value));
    EXPECT_FALSE(machine.ReadEnvironment("", value));
    EXPECT_EQ(value, "kept");
    EXPECT_TRUE(machine.ReadEnvironment("PATH", value));
    EXPECT_NE(value, "kept");
}

TEST(ShellContract, TakesNothingElseForAShortcut) {
    const Services services = MakeSystemServices();
    const TemporaryFolder folder;
    Shell& shell = *services.shell;
    for (const std::string ending : {".desktop", ".lnk"}) {
        const std::string garbage = folder.Write("garbage" + ending, std::string(3'000, '\xA6'));
        EXPECT_EQ(shell.ResolveShortcut(garbage), "");
        EXPECT_EQ(shell.ResolveShortcut(folder.Write("empty" + ending, "")), "");
        EXPECT_EQ(shell.ResolveShortcut(folder.PathOf("none" + ending)), "");
        services.files->MakeFolders(folder.PathOf("folder" + ending));
        EXPECT_EQ(shell.ResolveShortcut(folder.PathOf("folder" + ending)), "");
        EXPECT_EQ(shell.ResolveShortcut(garbage + std::string(1, '\0') + ending), "");
    }
    EXPECT_FALSE(shell.IsShortcut("/data/report.pdf"));
    EXPECT_FALSE(shell.IsShortcut(""));
    EXPECT_EQ(shell.ResolveShortcut(folder.Write("report.pdf", "%PDF")), "");
}

TEST(TerminalContract, ReadsLinesAndKnowsPipes) {
    Services services = MakeSystemServices();
    RunningChild terminal(services, {"terminal"});
    ASSERT_TRUE(terminal);
    EXPECT_EQ(terminal.ReadLine(), "000 80");

    RunningChild child(services, {"echo"});
    ASSERT_TRUE(child);
    child->WriteInput("one\r\n\ntw");
    services.loop->Wait(30);
    child->WriteInput("o\n" + std::string(100'000, 'x') + "\r\nlast");
    child->CloseInput();
    ASSERT_TRUE(child.ReadToEnd());
    EXPECT_EQ(child.ReadLine(), "one");
    EXPECT_EQ(child.ReadLine(), "");
    EXPECT_EQ(child.ReadLine(), "two");
    EXPECT_EQ(child.ReadLine().size(), 100'000U);
    EXPECT_EQ(child.ReadLine(), "last");
}

}  // namespace
}  // namespace quirepress
