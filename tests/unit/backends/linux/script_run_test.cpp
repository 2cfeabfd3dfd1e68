#include "backends/script_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "fakes/surroundings.h"
#include "platform/event_loop.h"
#include "platform/shell.h"

namespace quirepress {
namespace {

using ::testing::HasSubstr;
using How = ScriptEnd::How;

// Real scripts in real time.
class ScriptRunTest : public testing::Test, protected Surroundings {
protected:
    ScriptEnd Run(const std::string& name, std::string_view text,
                  const std::vector<std::string>& parameters = {}) {
        request.path = folder.Write(name, text);
        request.parameters = parameters;
        return RunScript({*system.shell, *system.processes, *system.loop, clock, debugLog}, request);
    }
    std::string Out() const { return "\"" + folder.PathOf("out") + "\""; }

    ScriptRequest request;
};

TEST_F(ScriptRunTest, IsToldByItsEnding) {
    for (const char* path : {"a.bat", "a.BAT", "/x/a.vbs", "a.VBS"}) EXPECT_TRUE(IsScript(path)) << path;
    for (const char* path : {"a.Bat", "a.bat.pdf", "a.sh", "bat", ".bat"})
        EXPECT_FALSE(IsScript(path)) << path;
}

TEST_F(ScriptRunTest, RunsByItsFirstLineOrTheShell) {
    debugLog.Open(files, folder.PathOf("qpr.log"));
    EXPECT_EQ(Run("-x.bat", "printf '<%s>' \"$@\" > " + Out() + "\n", {"a b", "$(touch y)", "-z"}).how,
              How::kDone);
    EXPECT_EQ(folder.Read("out"), "<a b><$(touch y)><-z>");
    EXPECT_EQ(Run("$(touch z).vbs", "#!/usr/bin/env  sh\r\necho \"$0\" > " + Out() + "\n").how, How::kDone);
    EXPECT_EQ(folder.Read("out"), folder.PathOf("$(touch z).vbs") + "\n");
    EXPECT_THAT(folder.Read("qpr.log"),
                HasSubstr(" - Running script: '" + folder.PathOf("-x.bat") + "' started\r\n"));
    EXPECT_THAT(folder.Read("qpr.log"),
                HasSubstr(" - Running script '" + folder.PathOf("-x.bat") + "' finished\r\n"));
}

TEST_F(ScriptRunTest, TellsWhatWentWrong) {
    EXPECT_EQ(Run("a.bat", "echo no paper >&2\nexit 4\n").flaw, "a.bat ended with code 4: no paper");
    EXPECT_THAT(Run("b.bat", "#!/no/such/interpreter\n").flaw, HasSubstr("b.bat can't be started"));
    request.path = folder.PathOf("missing.bat");
    EXPECT_EQ(RunScript({*system.shell, *system.processes, *system.loop, clock, debugLog}, request).flaw,
              "the script can't be read");
    debugLog.Open(files, folder.PathOf("qpr.log"));
    request.path.clear();
    EXPECT_EQ(RunScript({*system.shell, *system.processes, *system.loop, clock, debugLog}, request).how,
              How::kDone);
    EXPECT_EQ(folder.Read("qpr.log"), "Scripting activated but No script to run\r\n");
}

TEST_F(ScriptRunTest, EndsWithAllThatItHasStarted) {
    request.limitSeconds = 1;
    const std::string hang = "(while :; do echo x >> " + Out() + "; sleep 0.05; done) &\nsleep 60\n";
    EXPECT_THAT(Run("a.bat", hang).flaw, HasSubstr("did not end in its time of 1 seconds"));
    request.limitSeconds = 0;
    bool isStopped = false;
    request.isStopped = [&] { return isStopped; };
    system.loop->StartTimer(1, 300, [&] { isStopped = true; });
    EXPECT_EQ(Run("b.bat", hang).how, How::kStopped);
    const std::size_t size = folder.Read("out").size();
    EXPECT_GT(size, 0U);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(folder.Read("out").size(), size);
}

}  // namespace
}  // namespace quirepress
