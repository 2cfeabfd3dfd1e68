#include "platform/app_windows.h"

#include <gtest/gtest.h>

#include "fakes/surroundings.h"

namespace quirepress {
namespace {

class LinuxAppWindowsTest : public testing::Test, protected Surroundings {
protected:
    // How many workers a look at the windows starts.
    std::size_t CountStarts() {
        const std::unique_ptr<AppWindows> windows = MakeAppWindows(processes, loop, machine);
        EXPECT_TRUE(windows->ListWindows().empty());
        return processes.records.size();
    }
};

TEST_F(LinuxAppWindowsTest, StartsNothingWhereThereIsNoDesktop) {
    EXPECT_EQ(CountStarts(), 0U);
    machine.environment["DISPLAY"] = ":0";
    machine.environment["XDG_RUNTIME_DIR"] = folder.Path();
    EXPECT_EQ(CountStarts(), 0U) << "asking for a session bus would start one";
    folder.Write("bus", "");
    EXPECT_EQ(CountStarts(), 1U);
    EXPECT_TRUE(processes.records[0].request.arguments[0].ends_with("qpr-window-worker"));
}

}  // namespace
}  // namespace quirepress
