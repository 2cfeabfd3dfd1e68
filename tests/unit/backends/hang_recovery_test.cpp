#include "backends/hang_recovery.h"

#include <gtest/gtest.h>

#include "fakes/surroundings.h"
#include "logs/hang_log.h"
#include "settings/general_options.h"

namespace quirepress {
namespace {

class FakeHangWatch : public HangWatch {
public:
    int CheckForHang() override {
        ++calls;
        return code;
    }
    int code = kHung;
    int calls = 0;
};

class HangRecoveryTest : public testing::Test {
protected:
    HangRecoveryTest() { m_options.m_onErrorHangPrintOneMoreTime = true; }
    HangDecision Check(std::string_view path) {
        return quirepress::CheckForHang(&m_watch, m_log, m_options, path);
    }

    Surroundings m_around;
    GeneralOptions m_options;
    HangLog m_log{m_around.files, m_around.clock, m_around.folder.PathOf(kHangLogName)};
    FakeHangWatch m_watch;
};

TEST_F(HangRecoveryTest, TheFirstHangOfAFileIsWorthOneMoreTry) {
    HangDecision first = Check("/in/a.doc");
    EXPECT_TRUE(first.hung && first.tryAgain);
    HangDecision second = Check("/in/a.doc");
    EXPECT_TRUE(second.hung);
    EXPECT_FALSE(second.tryAgain);
    EXPECT_TRUE(Check("/in/a.docx").tryAgain);  // another file
    EXPECT_EQ(m_log.CountHangs("/in/a.doc"), 2);
}

TEST_F(HangRecoveryTest, OnlyDocumentsOfTheWordProcessorAreAskedFor) {
    for (const char* path : {"/in/a.rtf", "/in/a.pdf", "/in/doc", "/in/a.doc/b"})
        EXPECT_FALSE(Check(path).hung) << path;
    EXPECT_EQ(m_watch.calls, 0);
    EXPECT_TRUE(Check("/in/A.DOCX").hung);
    EXPECT_FALSE(quirepress::CheckForHang(nullptr, m_log, m_options, "/in/a.doc").hung);
    for (const int code : {0, 1, -1, 998}) {
        m_watch.code = code;
        EXPECT_FALSE(Check("/in/b.doc").hung);
    }
    EXPECT_EQ(m_log.CountHangs("/in/b.doc"), 0);
}

TEST_F(HangRecoveryTest, WithoutTheOptionOrARecordThereIsNoOtherTry) {
    m_options.m_onErrorHangPrintOneMoreTime = false;
    EXPECT_FALSE(Check("/in/a.doc").tryAgain);
    m_options.m_onErrorHangPrintOneMoreTime = true;
    EXPECT_TRUE(Check("/in/b.doc").tryAgain);
    m_around.files.FillDiskAfter(0);
    const HangDecision unrecorded = Check("/in/b.doc");
    EXPECT_TRUE(unrecorded.hung);
    EXPECT_FALSE(unrecorded.tryAgain);
}

}  // namespace
}  // namespace quirepress
