#include "backends/viewer_windows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fakes/fake_app_windows.h"
#include "fakes/fake_event_loop.h"
#include "settings/general_options.h"

namespace quirepress {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Answer = DocumentWindows::WordAnswer;
using Occasion = ViewerWindows::Occasion;

class ViewerWindowsTest : public testing::Test {
protected:
    FakeEventLoop m_loop;
    FakeAppWindows m_windows;
    GeneralOptions m_options;
    ViewerWindows m_viewers{m_windows, m_loop, m_options};
};

TEST_F(ViewerWindowsTest, KnowsWhichFileTheViewerShows) {
    m_windows.PutMainWindow("other.pdf - Editor");
    m_windows.PutMainWindow("my report.PDF - Adobe Reader");
    m_windows.PutMainWindow("Adobe Acrobat Professional - [sums.pdf]");
    m_windows.PutMainWindow("plan.pdf").program = "AcroRd32.exe";
    EXPECT_TRUE(m_viewers.ViewerShows("/in/My Report.pdf"));
    EXPECT_TRUE(m_viewers.ViewerShows("/in/sums.pdf"));
    EXPECT_TRUE(m_viewers.ViewerShows("/in/plan.pdf"));
    EXPECT_FALSE(m_viewers.ViewerShows("/in/other.pdf"));
    EXPECT_FALSE(m_viewers.ViewerShows("/in/ums.pdf"));
    EXPECT_FALSE(m_viewers.ViewerShows(""));
}

TEST_F(ViewerWindowsTest, SeesTheWordProcessorSpool) {
    m_windows.PutMainWindow("letter.doc - Microsoft Word").program = "WINWORD.EXE";
    m_windows.PutDialog("Print - sums", {}, 2);
    EXPECT_EQ(m_viewers.AskWordProcessor("letter.doc"), Answer::kNotSpooling);
    m_windows.PutDialog("Drucken - letter", {}).program = "WINWORD.EXE";
    EXPECT_EQ(m_viewers.AskWordProcessor("letter.doc"), Answer::kSpooling);
}

TEST_F(ViewerWindowsTest, ClosesTheViewerWhereTheOptionsWantIt) {
    m_windows.PutMainWindow("a.pdf - Adobe Reader");
    m_windows.PutMainWindow("b.pdf - Evince");
    EXPECT_EQ(m_viewers.CloseAcrobat(Occasion::kFileFinished), 0);
    m_options.m_closeAcrobatList = false;
    EXPECT_EQ(m_viewers.CloseAcrobat(Occasion::kListFinished), 0);
    EXPECT_THAT(m_windows.actions, IsEmpty());
    EXPECT_EQ(m_viewers.CloseAcrobat(Occasion::kPrinterSettings), 1);
    EXPECT_THAT(m_windows.actions, ElementsAre("close a.pdf - Adobe Reader"));

    m_windows.PutMainWindow("a.pdf - Adobe Reader");
    m_windows.staying = {"a.pdf - Adobe Reader"};
    const long long start = m_loop.MonotonicMilliseconds();
    EXPECT_EQ(m_viewers.CloseAcrobat(Occasion::kExit), 1);
    EXPECT_LE(m_loop.MonotonicMilliseconds() - start, 5'200) << "one that stays is waited for a while only";
}

}  // namespace
}  // namespace quirepress
