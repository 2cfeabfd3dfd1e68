#include "settings/job_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quirepress {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(JobFilesTest, LinesWithADoubledCrAreTheHeader) {
    const JobFile job =
        ParseJobFile("one\r\r\n;skipped\r\r\n\r\r\nDL;three\r\r\nfour\r\r\nYes ;item ;\r\r\n");
    EXPECT_EQ(job.headerCount, 4);
    EXPECT_THAT(job.headerTexts, ElementsAre("one", "", "DL;three", "four"));
    EXPECT_THAT(job.lines, ElementsAre("Yes ;item ;"));
}

TEST(JobFilesTest, PlainLineEndsMakeItemsOnly) {
    const JobFile job = ParseJobFile("one\r\ntwo\n\nthree\r\nfour");
    EXPECT_EQ(job.headerCount, 0);
    EXPECT_THAT(job.lines, ElementsAre("one", "two", "three", "four"));
    EXPECT_THAT(ParseJobFile("").lines, IsEmpty());
}

TEST(JobFilesTest, ItemsSplitAtSemicolonsButNotInDownloads) {
    EXPECT_THAT(SplitItemLine("Yes ;/a b.pdf ; ;Ready. ;"), ElementsAre("Yes", "/a b.pdf", "", "Ready."));
    EXPECT_THAT(SplitItemLine("Yes ;DL;ftp://host/x.pdf ;DL;http://h ;"),
                ElementsAre("Yes", "DL;ftp://host/x.pdf", "DL;http://h"));
    EXPECT_THAT(SplitItemLine("a  ;;;b"), ElementsAre("a ", "b"));
    // Only a mark at the start of a text is one.
    EXPECT_THAT(SplitItemLine("Yes ;see DL;x ;DL:y"), ElementsAre("Yes", "see DL:x", "DL;y"));
    EXPECT_THAT(SplitItemLine("DL:y ;"), ElementsAre("DL:y"));
    EXPECT_THAT(SplitItemLine(";;;"), IsEmpty());
}

}  // namespace
}  // namespace quirepress
