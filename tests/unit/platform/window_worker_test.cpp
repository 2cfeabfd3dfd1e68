#include "platform/window_worker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "fakes/fake_app_windows.h"
#include "fakes/fake_event_loop.h"
#include "fakes/stand_in_workers.h"
#include "platform/window_messages.h"

namespace quirepress {
namespace {

using ::testing::ElementsAre;
using Fake = FakeAppWindows;

class WindowWorkerTest : public testing::Test {
protected:
    WindowWorkerTest() {
        m_workers.answer = [this](std::string line) {
            ++m_requests;
            MemoryTerminal terminal;
            terminal.input = {std::move(line)};
            RunWindowWorker(m_hasDesktop ? &m_desktop : nullptr, terminal);
            return m_spoil(terminal.output);
        };
        m_desktop
            .PutDialog("Save\tAs\n100% \xC3\xA4",
                       {Fake::Field("name", 1001),
                        Fake::Button("OK", true),
                        Fake::Label("a\tb"),
                        {"1", ControlRole::kPasswordField, 0, "", false}},
                       5)
            .program = "driver";
        m_desktop.PutMainWindow("our own", kOwnProcess);
    }
    static constexpr std::int64_t kOwnProcess = 77;
    FakeEventLoop m_loop;
    FakeAppWindows m_desktop;
    bool m_hasDesktop = true;
    std::function<std::string(std::string)> m_spoil = [](std::string answer) { return answer; };
    int m_requests = 0;
    StandInWorkers m_workers;
    WorkerAppWindows m_windows{m_workers, m_loop, "worker", kOwnProcess};
};

TEST_F(WindowWorkerTest, SeesAndDoesWhatTheWorkerCan) {
    const std::vector<AppWindow> windows = m_windows.ListWindows();
    ASSERT_EQ(windows.size(), 1U) << "none of its own";
    EXPECT_EQ(windows[0].title, "Save\tAs\n100% \xC3\xA4");
    EXPECT_EQ(windows[0].program, "driver");
    EXPECT_EQ(windows[0].processId, 5);
    EXPECT_TRUE(windows[0].isDialog);
    const std::vector<AppControl> controls = m_windows.ListControls(windows[0]);
    ASSERT_EQ(controls.size(), 4U);
    EXPECT_EQ(controls[0].number, 1001);
    EXPECT_TRUE(controls[1].isDefault && !controls[0].isDefault);
    EXPECT_EQ(controls[2].name, "a\tb");
    EXPECT_EQ(controls[2].role, ControlRole::kLabel);
    EXPECT_EQ(controls[3].role, ControlRole::kPasswordField);
    m_desktop.staying = {windows[0].title};
    EXPECT_TRUE(m_windows.SetText(windows[0], controls[0], "/out/a\tb"));
    EXPECT_TRUE(m_windows.Press(windows[0], controls[1]));
    EXPECT_TRUE(m_windows.SendReturn(windows[0]));
    EXPECT_TRUE(m_windows.Close(windows[0]));
    const std::string& title = windows[0].title;
    EXPECT_THAT(m_desktop.actions,
                ElementsAre("text " + title + ": name = /out/a\tb", "press " + title + ": OK",
                            "return " + title, "close " + title));
    m_desktop.Remove(title);
    EXPECT_FALSE(m_windows.Close(windows[0]));
    EXPECT_EQ(m_workers.starts.size(), 1U);
}

TEST_F(WindowWorkerTest, TakesNoMessageThatIsNotWhole) {
    WindowRequest read;
    WindowAnswer back;
    for (const char* bad : {"", "list", "list\ta\tb", "list\ta\tb\tc\td", "jump\ta\tb\tc"})
        EXPECT_FALSE(ParseWindowRequest(bad, read)) << bad;
    for (const char* bad :
         {"", "windows\t", "windows\ta\tb\t0\tp\tt", "windows\ta\t-1\t0\tp\tt", "controls\ta\tnone\t0\tn\t0",
          "controls\ta\tlabel\t99999999999\tn\t0", "controls\ta\tlabel\t0\tn\t2", "done\tx"})
        EXPECT_FALSE(ParseWindowAnswer(bad, back)) << bad;
}

TEST_F(WindowWorkerTest, EndsAWorkerThatIsSilentAndWaitsWithTheNext) {
    m_spoil = [](const std::string&) { return std::string(); };
    const long long start = m_loop.MonotonicMilliseconds();
    EXPECT_TRUE(m_windows.ListWindows().empty());
    EXPECT_LE(m_loop.MonotonicMilliseconds() - start, 2'100);
    EXPECT_EQ(m_workers.alive, 0);
    m_spoil = [](std::string answer) { return answer; };
    m_loop.Wait(9'000);
    EXPECT_TRUE(m_windows.ListWindows().empty());
    EXPECT_EQ(m_workers.starts.size(), 1U);
    m_loop.Wait(1'500);
    EXPECT_EQ(m_windows.ListWindows().size(), 1U);
}

TEST_F(WindowWorkerTest, BelievesNoNonsense) {
    for (const char* nonsense : {"garbage\n", "windows\tx\n", "done\nmore\n", "\n"}) {
        m_spoil = [nonsense](const std::string&) { return std::string(nonsense); };
        EXPECT_TRUE(m_windows.ListWindows().empty()) << nonsense;
        EXPECT_EQ(m_workers.alive, 0) << nonsense;
        m_loop.Wait(10'500);
    }
}

TEST_F(WindowWorkerTest, AsksSeldomWhereThereIsNoDesktop) {
    m_hasDesktop = false;
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(m_windows.ListWindows().empty());
        m_loop.Wait(1'000);
    }
    EXPECT_EQ(m_workers.starts.size(), 2U);
}

TEST_F(WindowWorkerTest, EndsAnIdleWorkerAndStartsAnother) {
    m_windows.ListWindows();
    m_loop.Wait(4'000);
    EXPECT_EQ(m_workers.alive, 1);
    m_loop.Wait(2'000);
    EXPECT_EQ(m_workers.alive, 0);
    EXPECT_EQ(m_windows.ListWindows().size(), 1U);
    EXPECT_EQ(m_workers.starts.size(), 2U);
}

TEST_F(WindowWorkerTest, IsNotAskedFromWithinTheWait) {
    std::size_t inner = 99;
    m_loop.StartTimer(1, 1, [&] { inner = m_windows.ListWindows().size(); });
    EXPECT_EQ(m_windows.ListWindows().size(), 1U);
    EXPECT_EQ(inner, 0U);
    EXPECT_EQ(m_requests, 1);
}

TEST(CaptionTest, LosesItsMnemonic) {
    EXPECT_EQ(WithoutMnemonic("&Save"), "Save");
    EXPECT_EQ(WithoutMnemonic("A && B&"), "A & B");
}

}  // namespace
}  // namespace quirepress
