#include <gtest/gtest.h>

#include "desktop/desktop_stage.h"

namespace quirepress {
namespace {

// The system's own dialog keeps its field inside of another control, and numbers it its own way.
TEST(SystemChooserTest, TakesTheNameOfAFile) {
    DesktopStage stage;
    WindowProgram program(stage, "window_program", {"chooser", "Save the file as"});
    const std::optional<AppWindow> window = program.Find("Save the file as");
    ASSERT_TRUE(window);
    const std::vector<AppControl> controls = stage.Windows().ListControls(*window);
    const std::optional<AppControl> field = FindControl(controls, ControlRole::kTextField);
    const std::optional<AppControl> button = FindControl(controls, ControlRole::kButton, "Save");
    ASSERT_TRUE(field && button);
    const TemporaryFolder folder;
    EXPECT_TRUE(stage.Windows().SetText(*window, *field, folder.PathOf("out.xps")));
    EXPECT_TRUE(stage.Windows().Press(*window, *button));
    EXPECT_EQ(program.Outcome(), "saved " + folder.PathOf("out.xps"));
}

}  // namespace
}  // namespace quirepress
