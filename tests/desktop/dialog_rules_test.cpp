#include "backends/dialog_rules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "backends/dialog_watch.h"
#include "base/path.h"
#include "desktop/desktop_stage.h"
#include "logs/debug_log.h"
#include "platform/files.h"
#include "settings/general_options.h"
#include "settings/print_to_file_options.h"

namespace quirepress {
namespace {

// The dialogs of real programs, answered from the pump while a document is waited for.
class DialogRulesOnDesktopTest : public testing::TestWithParam<std::string> {
protected:
    DialogRulesOnDesktopTest() { m_settings.printPdf.m_path = m_folder.PathOf("out"); }
    std::string OutcomeOf(const std::string& kind, const std::string& title) {
        WindowProgram program(m_stage, GetParam(), {kind, title});
        const DialogWatch watch(m_rules, "/in/r\xC3\xA9port 1.doc", program.Process());
        return program.Outcome();
    }

    DesktopStage m_stage;
    TemporaryFolder m_folder;
    DebugLog m_debugLog;
    GeneralOptions m_options;
    PrintToFileSettings m_settings;
    DialogRules m_rules{{m_stage.Windows(), *m_stage.System().files, *m_stage.System().loop, m_debugLog,
                         m_options, m_settings}};
};

TEST_P(DialogRulesOnDesktopTest, AnswersWhatIsKnown) {
    EXPECT_EQ(OutcomeOf("print", "Imprimir"), "printed");
    EXPECT_EQ(OutcomeOf("save", "Save PDF File As"),
              "saved " + JoinPath(m_folder.PathOf("out"), "r\xC3\xA9port 1.pdf"));
    EXPECT_EQ(OutcomeOf("message", "Fatal Error"), "ok");
}

TEST_P(DialogRulesOnDesktopTest, NamesTheWindowThatItDoesNotKnow) {
    WindowProgram program(m_stage, GetParam(), {"message", "Strange"});
    const DialogWatch watch(m_rules, "/in/report.doc", program.Process(), 1'000);
    ASSERT_TRUE(program.Find("Strange"));
    EventLoop& loop = *m_stage.System().loop;
    const long long start = loop.MonotonicMilliseconds();
    while (watch.Flaw().empty() && loop.MonotonicMilliseconds() < start + 20'000) loop.Wait(50);
    EXPECT_EQ(watch.Flaw(), "it waits for an answer in its window \"Strange\": \"The font is bad.\"");
    EXPECT_TRUE(program.Process().IsRunning());
}

INSTANTIATE_TEST_SUITE_P(Toolkits, DialogRulesOnDesktopTest, testing::ValuesIn(DesktopStage::Programs()),
                         [](const auto& test) { return test.param; });

}  // namespace
}  // namespace quirepress
