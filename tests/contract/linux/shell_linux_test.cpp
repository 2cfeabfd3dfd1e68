#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "fakes/linux/scoped_variable.h"
#include "fakes/temporary_folder.h"
#include "platform/services.h"
#include "platform/shell.h"

namespace quirepress {
namespace {

using ::testing::ElementsAre;

TEST(LinuxShell, KnowsTypesByTheMimeDatabases) {
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

TEST(LinuxShell, FindsProgramsThatCanBeStarted) {
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

TEST(LinuxShell, ReadsWhatRunsAScript) {
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
