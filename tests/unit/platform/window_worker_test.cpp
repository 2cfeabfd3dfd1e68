#include "platform/window_worker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <functional>

#include "fakes/fake_app_windows.h"
#include "fakes/fake_event_loop.h"
#include "platform/processes.h"
#include "platform/terminal.h"
#include "platform/window_messages.h"

namespace quirepress {
namespace {

using ::testing::ElementsAre;
using Fake = FakeAppWindows;

// The lines that a worker reads, and what it writes.
class LineTerminal : public Terminal {
public:
    bool OutputIsTerminal() override { return false; }
    bool ErrorsAreTerminal() override { return false; }
    bool InputIsTerminal() override { return false; }
    int Columns() override { return 80; }
    bool WriteOutput(std::string_view text) override {
        output += text;
        return true;
    }
    bool WriteErrors(std::string_view) override { return true; }
    bool ReadLine(std::string& line) override {
        if (lines.empty()) return false;
        line = lines.front();
        lines.pop_front();
        return true;
    }
    std::deque<std::string> lines;
    std::string output;
};

// Workers that see `desktop` (null: there is none), or do what a test makes of their answer.
class StandInWorkers : public Processes {
public:
    FakeAppWindows* desktop = nullptr;
    std::function<std::string(std::string)> spoil = [](std::string answer) { return answer; };
    int starts = 0;
    int alive = 0;
    int requests = 0;

    std::unique_ptr<ChildProcess> Start(const ProcessRequest&, int&) override {
        ++starts;
        return std::make_unique<StandIn>(*this);
    }

private:
    class StandIn : public ChildProcess {
    public:
        explicit StandIn(StandInWorkers& owner) : m_owner(owner) { ++m_owner.alive; }
        ~StandIn() override { --m_owner.alive; }
        StandIn(const StandIn&) = delete;
        StandIn& operator=(const StandIn&) = delete;
        bool IsRunning() override { return true; }
        int ExitCode() override { return 0; }
        void EndTree() override {}
        std::int64_t Id() const override { return 1; }
        bool WriteInput(std::string_view data) override {
            ++m_owner.requests;
            LineTerminal terminal;
            terminal.lines.emplace_back(data.substr(0, data.size() - 1));
            RunWindowWorker(m_owner.desktop, terminal);
            m_output += m_owner.spoil(terminal.output);
            return true;
        }
        void CloseInput() override {}
        bool ReadOutput(std::string& output) override {  // in pieces, as a pipe may give it
            output += m_output.substr(0, 7);
            m_output.erase(0, 7);
            return true;
        }
        bool ReadErrors(std::string&) override { return true; }

    private:
        StandInWorkers& m_owner;
        std::string m_output;
    };
};

class WindowWorkerTest : public testing::Test {
protected:
    WindowWorkerTest() {
        m_workers.desktop = &m_desktop;
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
    EXPECT_EQ(m_workers.starts, 1);
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
    m_workers.spoil = [](const std::string&) { return std::string(); };
    const long long start = m_loop.MonotonicMilliseconds();
    EXPECT_TRUE(m_windows.ListWindows().empty());
    EXPECT_LE(m_loop.MonotonicMilliseconds() - start, 2'100);
    EXPECT_EQ(m_workers.alive, 0);
    m_workers.spoil = [](std::string answer) { return answer; };
    m_loop.Wait(9'000);
    EXPECT_TRUE(m_windows.ListWindows().empty());
    EXPECT_EQ(m_workers.starts, 1);
    m_loop.Wait(1'500);
    EXPECT_EQ(m_windows.ListWindows().size(), 1U);
}

TEST_F(WindowWorkerTest, BelievesNoNonsense) {
    for (const char* nonsense : {"garbage\n", "windows\tx\n", "done\nmore\n", "\n"}) {
        m_workers.spoil = [nonsense](const std::string&) { return std::string(nonsense); };
        EXPECT_TRUE(m_windows.ListWindows().empty()) << nonsense;
        EXPECT_EQ(m_workers.alive, 0) << nonsense;
        m_loop.Wait(10'500);
    }
}

TEST_F(WindowWorkerTest, AsksSeldomWhereThereIsNoDesktop) {
    m_workers.desktop = nullptr;
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(m_windows.ListWindows().empty());
        m_loop.Wait(1'000);
    }
    EXPECT_EQ(m_workers.starts, 2);
}

TEST_F(WindowWorkerTest, EndsAnIdleWorkerAndStartsAnother) {
    m_windows.ListWindows();
    m_loop.Wait(4'000);
    EXPECT_EQ(m_workers.alive, 1);
    m_loop.Wait(2'000);
    EXPECT_EQ(m_workers.alive, 0);
    EXPECT_EQ(m_windows.ListWindows().size(), 1U);
    EXPECT_EQ(m_workers.starts, 2);
}

TEST_F(WindowWorkerTest, IsNotAskedFromWithinTheWait) {
    std::size_t inner = 99;
    m_loop.StartTimer(1, 1, [&] { inner = m_windows.ListWindows().size(); });
    EXPECT_EQ(m_windows.ListWindows().size(), 1U);
    EXPECT_EQ(inner, 0U);
    EXPECT_EQ(m_workers.requests, 1);
}

TEST(CaptionTest, LosesItsMnemonic) {
    EXPECT_EQ(WithoutMnemonic("&Save"), "Save");
    EXPECT_EQ(WithoutMnemonic("A && B&"), "A & B");
}

}  // namespace
}  // namespace quirepress
