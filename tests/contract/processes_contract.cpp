#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/path.h"
#include "fakes/built_files.h"
#include "fakes/running_child.h"
#include "fakes/temporary_folder.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/machine.h"
#include "platform/processes.h"

namespace quirepress {
namespace {

using testing::StartsWith;

class ProcessesContract : public testing::Test {
protected:
    ProcessRequest RequestFor(std::vector<std::string> words) {
        ProcessRequest request;
        request.arguments = std::move(words);
        request.arguments.insert(request.arguments.begin(), TestChildPath(*services.machine));
        return request;
    }

    // The exit code; -1000 when it does not start or does not end.
    int Run(const ProcessRequest& request, std::string* output = nullptr) {
        int error = 0;
        const auto process = services.processes->Start(request, error);
        if (!process || !WaitForProcess(*services.loop, *process, 30'000)) return -1000;
        if (output != nullptr) process->ReadOutput(*output);
        return process->ExitCode();
    }

    std::int64_t SizeOf(const std::string& path) { return services.files->Inspect(path).size; }

    // Until a program that lets the file grow is at work.
    bool AwaitGrowth(const std::string& path) {
        for (int i = 0; i < 1'000 && SizeOf(path) < 3; ++i) services.loop->Wait(10);
        return SizeOf(path) >= 3;
    }
    bool Grows(const std::string& path) {
        const std::int64_t before = SizeOf(path);
        services.loop->Wait(200);
        return SizeOf(path) > before;
    }

    Services services = MakeSystemServices();
    TemporaryFolder folder;
};

TEST_F(ProcessesContract, TellsTheExitCode) {
    for (const int code : {0, 1, 42, 255}) EXPECT_EQ(Run(RequestFor({"exit", std::to_string(code)})), code);
}

TEST_F(ProcessesContract, SaysWhyNothingStarts) {
    int error = 0;
    ProcessRequest request;
    EXPECT_EQ(services.processes->Start(request, error), nullptr);
    EXPECT_NE(error, 0);
    const std::string withNul("a\0b", 3);
    for (const std::string& program : {std::string("no-such-program-anywhere"), folder.PathOf("none"),
                                       folder.Path(), std::string(), withNul}) {
        error = 0;
        request.arguments = {program};
        EXPECT_EQ(services.processes->Start(request, error), nullptr) << program;
        EXPECT_NE(error, 0) << program;
    }
    request = RequestFor({"exit", withNul});
    EXPECT_EQ(services.processes->Start(request, error), nullptr);
    request = RequestFor({"exit", "0"});
    request.folder = folder.PathOf("none");
    error = 0;
    EXPECT_EQ(services.processes->Start(request, error), nullptr);
    EXPECT_NE(error, 0);
}

TEST_F(ProcessesContract, PassesArgumentsAsTheyAre) {
    const std::vector<std::string> words = {
        "plain",        "",          "two words",      "quo\"te",  "back\\slash\\",        "end\\\\",
        "a\\\"b\\\\\"", "tab\there", "$HOME %PATH% *", "'single'", "\xC3\xBC\xE2\x82\xAC", "-x",
        "a&b|c>d<e^f;g"};
    std::vector<std::string> all = words;
    all.insert(all.begin(), "arguments");
    RunningChild child(services, all);
    ASSERT_TRUE(child);
    for (const std::string& word : words) EXPECT_EQ(child.ReadLine(), "[" + word + "]");
    EXPECT_TRUE(child.ReadToEnd());
}

TEST_F(ProcessesContract, CarriesTheStandardStreams) {
    RunningChild child(services, {"echo"});
    ASSERT_TRUE(child);
    // More than any pipe holds, in one go.
    std::string lines;
    for (int i = 0; i < 6'000; ++i) lines += "line " + std::to_string(i) + std::string(240, '.') + "\n";
    EXPECT_TRUE(child->WriteInput(lines));
    EXPECT_TRUE(child->WriteInput("last one without an end"));
    EXPECT_TRUE(child->IsRunning());
    child->CloseInput();
    EXPECT_FALSE(child->WriteInput("more"));
    ASSERT_TRUE(child.ReadToEnd());
    EXPECT_TRUE(child.output == lines + "last one without an end\n");
    EXPECT_EQ(child.errors, "lines: 6001\n");
    EXPECT_TRUE(WaitForProcess(*services.loop, *child, 10'000));
    EXPECT_EQ(child->ExitCode(), 0);
}

TEST_F(ProcessesContract, OutlivesAReaderThatIsGone) {
    RunningChild child(services, {"exit", "3"});
    ASSERT_TRUE(child);
    ASSERT_TRUE(WaitForProcess(*services.loop, *child, 10'000));
    bool taken = true;
    for (int i = 0; i < 100 && taken; ++i) taken = child->WriteInput(std::string(100'000, 'x'));
    EXPECT_FALSE(taken);
    EXPECT_EQ(child->ExitCode(), 3);
}

TEST_F(ProcessesContract, GivesEmptyInputWithoutPipes) {
    // It would wait for this program's own input otherwise.
    EXPECT_EQ(Run(RequestFor({"echo"})), 0);
}

TEST_F(ProcessesContract, SetsFolderAndEnvironment) {
    ProcessRequest request = RequestFor({"environment", "QUIREPRESS_TEST"});
    request.pipes = true;
    request.environment = {{"QUIREPRESS_TEST", "a value with = and \xC3\xBC"}};
    std::string output;
    EXPECT_EQ(Run(request, &output), 0);
    EXPECT_THAT(output, StartsWith("a value with = and \xC3\xBC"));

    request = RequestFor({"environment", "PATH"});
    request.pipes = true;
    request.environment = {{"PATH", "replaced"}};
    output.clear();
    EXPECT_EQ(Run(request, &output), 0);
    EXPECT_THAT(output, StartsWith("replaced"));

    services.files->MakeFolders(folder.PathOf("sub"));
    request = RequestFor({"folder"});
    request.pipes = true;
    request.folder = folder.PathOf("sub");
    output.clear();
    EXPECT_EQ(Run(request, &output), 0);
    EXPECT_THAT(output, StartsWith(services.files->ResolvePath(folder.PathOf("sub"))));
}

TEST_F(ProcessesContract, WaitsNoLongerThanAsked) {
    RunningChild child(services, {"ignore-requests", "30000"});
    ASSERT_TRUE(child);
    EXPECT_EQ(child.ReadLine(), "ready");
    EXPECT_GT(child->Id(), 0);
    int ticks = 0;
    services.loop->StartTimer(1, 10, [&] { ++ticks; });
    const long long start = services.loop->MonotonicMilliseconds();
    EXPECT_FALSE(WaitForProcess(*services.loop, *child, 150));
    EXPECT_GE(services.loop->MonotonicMilliseconds() - start, 150);
    EXPECT_GE(ticks, 3);
    EXPECT_TRUE(child->IsRunning());
    child->EndTree();
    EXPECT_FALSE(child->IsRunning());
    EXPECT_NE(child->ExitCode(), 0);
    child->EndTree();
    EXPECT_LT(services.loop->MonotonicMilliseconds() - start, 10'000);
}

TEST_F(ProcessesContract, EndsWhatTheProgramStarted) {
    for (const std::string command : {"start-beat", "start-detached-beat"}) {
        // While it runs, and after it has gone and left the others behind.
        for (const std::string milliseconds : {"30000", "0"}) {
            const std::string file = folder.PathOf(command + milliseconds);
            RunningChild child(services, {command, file, milliseconds});
            ASSERT_TRUE(child);
            ASSERT_TRUE(AwaitGrowth(file)) << command;
            if (milliseconds == "0") {
                EXPECT_TRUE(WaitForProcess(*services.loop, *child, 10'000));
            }
            EXPECT_TRUE(Grows(file));
            child->EndTree();
            EXPECT_FALSE(Grows(file)) << command << milliseconds;
        }
    }
}

TEST_F(ProcessesContract, KnowsWhichProcessesAreOfItsTree) {
    RunningChild child(services, {"sleep", "30000"});
    RunningChild neighbour(services, {"sleep", "30000"});
    ASSERT_TRUE(child && neighbour);
    EXPECT_TRUE(child->HasInTree(child->Id()));
    EXPECT_FALSE(child->HasInTree(neighbour->Id()));
    EXPECT_FALSE(child->HasInTree(1));
}

TEST_F(ProcessesContract, EndsEverythingWhenDestroyed) {
    const std::string file = folder.PathOf("beats");
    RunningChild child(services, {"start-detached-beat", file, "30000"});
    RunningChild neighbour(services, {"beat", folder.PathOf("neighbour")});
    ASSERT_TRUE(child && neighbour);
    ASSERT_TRUE(AwaitGrowth(file) && AwaitGrowth(folder.PathOf("neighbour")));
    child.Destroy();
    EXPECT_FALSE(Grows(file));
    EXPECT_TRUE(Grows(folder.PathOf("neighbour")));
}

TEST_F(ProcessesContract, LimitsMemory) {
    std::string prefix;
    if (services.machine->ReadEnvironment("WINEPREFIX", prefix)) GTEST_SKIP() << "Wine limits no memory";
    ProcessRequest request = RequestFor({"allocate", "400"});
    EXPECT_EQ(Run(request), 0);
    request.memoryLimit = 200 * 1024 * 1024;
    EXPECT_NE(Run(request), 0);
}

}  // namespace
}  // namespace quirepress
