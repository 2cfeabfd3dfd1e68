#include "backends/hang_recovery.h"

#include <gtest/gtest.h>

#include "fakes/surroundings.h"
#include "logs/hang_log.h"
#include "settings/general_options.h"

namespace quirepress {
namespace {

class FakeHangWatch : public HangWatch {
public:
    int CheckForHang() override { return code; }
    int code = kHung;
};

TEST(HangRecoveryTest, TheFirstHangOfADocumentIsWorthOneMoreTry) {
    Surroundings around;
    GeneralOptions options;
    options.m_onErrorHangPrintOneMoreTime = true;
    HangLog log{around.files, around.clock, around.folder.PathOf(kHangLogName)};
    FakeHangWatch watch;
    const auto check = [&](std::string_view path) { return CheckForHang(&watch, log, options, path); };
    EXPECT_TRUE(check("/in/a.doc").tryAgain);
    EXPECT_TRUE(check("/in/a.doc").hung);
    EXPECT_FALSE(check("/in/a.doc").tryAgain);
    EXPECT_TRUE(check("/in/A.DOCX").tryAgain) << "another file";
    EXPECT_EQ(log.CountHangs("/in/a.doc"), 3);
    for (const char* path : {"/in/a.rtf", "/in/a.pdf", "/in/doc", "/in/a.doc/b"})
        EXPECT_FALSE(check(path).hung) << path << " is none of the word processor";
    EXPECT_FALSE(CheckForHang(nullptr, log, options, "/in/b.doc").hung);
    for (const int code : {0, 1, -1, 998}) {
        watch.code = code;
        EXPECT_FALSE(check("/in/b.doc").hung) << code;
    }
    // Without the option, or a record of it, there is no other try.
    watch.code = HangWatch::kHung;
    options.m_onErrorHangPrintOneMoreTime = false;
    EXPECT_FALSE(check("/in/c.doc").tryAgain);
    options.m_onErrorHangPrintOneMoreTime = true;
    around.files.FillDiskAfter(0);
    const HangDecision unrecorded = check("/in/A.DOCX");
    EXPECT_TRUE(unrecorded.hung);
    EXPECT_FALSE(unrecorded.tryAgain) << "it would always be the first hang";
}

}  // namespace
}  // namespace quirepress
