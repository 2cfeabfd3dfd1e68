#include "platform/app_windows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "desktop/desktop_stage.h"

namespace quirepress {
namespace {

using ::testing::EndsWith;

class AppWindowsTest : public testing::TestWithParam<std::string> {
protected:
    WindowProgram Start(const std::string& kind, const std::string& title) {
        return {m_stage, GetParam(), {kind, title}};
    }
    std::vector<AppControl> ControlsOf(const AppWindow& window) {
        return m_stage.Windows().ListControls(window);
    }

    DesktopStage m_stage;
};

TEST_P(AppWindowsTest, PressesAButton) {
    WindowProgram program = Start("print", "Drucken");
    const std::optional<AppWindow> window = program.Find("Drucken");
    ASSERT_TRUE(window);
    EXPECT_THAT(window->program, testing::StartsWith(GetParam()));
    EXPECT_TRUE(window->isDialog);
    const std::vector<AppControl> controls = ControlsOf(*window);
    EXPECT_TRUE(FindControl(controls, ControlRole::kLabel, "Ready to print."));
    const std::optional<AppControl> button = FindControl(controls, ControlRole::kButton, "Drucken");
    ASSERT_TRUE(button);
    EXPECT_TRUE(button->isDefault);
    EXPECT_TRUE(m_stage.Windows().Press(*window, *button));
    EXPECT_EQ(program.Outcome(), "printed");
    EXPECT_FALSE(m_stage.Windows().Press(*window, *button)) << "a window that is gone";
    EXPECT_TRUE(ControlsOf(*window).empty());
}

TEST_P(AppWindowsTest, SendsReturn) {
    WindowProgram program = Start("print", "Print");
    const std::optional<AppWindow> window = program.Find("Print");
    ASSERT_TRUE(window);
    EXPECT_TRUE(m_stage.Windows().SendReturn(*window));
    EXPECT_EQ(program.Outcome(), "printed");
}

TEST_P(AppWindowsTest, GivesAFileAName) {
    WindowProgram program = Start("save", "Save PDF File As");
    const std::optional<AppWindow> window = program.Find("Save PDF File As");
    ASSERT_TRUE(window);
    const std::vector<AppControl> controls = ControlsOf(*window);
    const std::optional<AppControl> field = FindControl(controls, ControlRole::kTextField);
    const std::optional<AppControl> button = FindControl(controls, ControlRole::kButton, "Save");
    ASSERT_TRUE(field && button);
    const TemporaryFolder folder;
    const std::string path = folder.PathOf("p\xC3\xA4ge 1.pdf");
    EXPECT_TRUE(m_stage.Windows().SetText(*window, *field, path));
    EXPECT_TRUE(m_stage.Windows().Press(*window, *button));
    EXPECT_EQ(program.Outcome(), "saved " + path);
}

TEST_P(AppWindowsTest, ClosesWindows) {
    WindowProgram box = Start("password", "Password");
    WindowProgram viewer = Start("main", "report.pdf - Adobe Reader");
    const std::optional<AppWindow> boxWindow = box.Find("Password");
    ASSERT_TRUE(boxWindow);
    EXPECT_TRUE(FindControl(ControlsOf(*boxWindow), ControlRole::kPasswordField));
    EXPECT_TRUE(m_stage.Windows().Close(*boxWindow));
    EXPECT_EQ(box.Outcome(), "cancelled");
    const std::optional<AppWindow> viewerWindow = viewer.Find("report.pdf - Adobe Reader");
    ASSERT_TRUE(viewerWindow);
    EXPECT_FALSE(viewerWindow->isDialog);
    EXPECT_TRUE(m_stage.Windows().Close(*viewerWindow));
    EXPECT_EQ(viewer.Outcome(), "closed");
}

TEST_P(AppWindowsTest, GoesOnBesideAProgramThatHangs) {
    WindowProgram hung = Start("message", "Fatal Error");
    const std::optional<AppWindow> hungWindow = hung.Find("Fatal Error");
    ASSERT_TRUE(hungWindow);
    DesktopStage::Freeze(hung.Process());
    WindowProgram other = Start("message", "Status not Available");
    const std::optional<AppWindow> window = other.Find("Status not Available");
    ASSERT_TRUE(window);
    EventLoop& loop = *m_stage.System().loop;
    long long longest = 0;
    for (int i = 0; i < 3; ++i) {
        const long long start = loop.MonotonicMilliseconds();
        EXPECT_FALSE(m_stage.Windows().ListWindows().empty());
        longest = std::max(longest, loop.MonotonicMilliseconds() - start);
    }
    EXPECT_LT(longest, 2'500);
    const std::optional<AppControl> button = FindControl(ControlsOf(*window), ControlRole::kButton, "OK");
    ASSERT_TRUE(button);
    EXPECT_TRUE(m_stage.Windows().Press(*window, *button));
    EXPECT_EQ(other.Outcome(), "ok");
    EXPECT_TRUE(ControlsOf(*hungWindow).empty());
}

INSTANTIATE_TEST_SUITE_P(Toolkits, AppWindowsTest, testing::ValuesIn(DesktopStage::Programs()),
                         [](const auto& test) { return test.param; });

}  // namespace
}  // namespace quirepress
