#include <gmock/gmock.h>

#include "endtoend/qpr_program.h"
#include "fakes/small_pdf.h"

namespace quirepress {
namespace {

using testing::HasSubstr;

TEST(QprMerge, MergesInOrderAndNeverByHalf) {
    QprProgram qpr;
    const std::string a = qpr.m_work.Write("a.pdf", MakeSmallPdf({"(first)"}));
    const std::string b = qpr.m_work.Write("b.pdf", MakeSmallPdf({"(second, by the library)"}, true));
    const std::string out = qpr.m_work.PathOf("out.pdf");
    ProgramResult result = qpr.Run({"merge", out, a, b, a});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("3 files, 3 pages"));
    EXPECT_EQ(qpr.Run({"--json", "pages", "--full", out}).Json()["files"][0]["pages"], 3);
    const std::string merged = qpr.m_work.Read("out.pdf");
    EXPECT_LT(merged.find("(first)"), merged.find("(second"));

    const std::string bad = qpr.m_work.Write("bad.pdf", "junk");
    result = qpr.Run({"--json", "merge", out, a, bad});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.Json()["result"], 1);
    EXPECT_EQ(result.Json()["message"],
              bad + ": the file is no PDF, whatever its name says; nothing was written");
    EXPECT_EQ(qpr.m_work.Read("out.pdf"), merged);
    EXPECT_EQ(qpr.Run({"merge", qpr.m_work.PathOf("no/folder.pdf"), a}).exitCode, 1);
    EXPECT_EQ(qpr.Run({"merge", out}).exitCode, 2);

    result = qpr.Run({"--json", "merge", out, out, a});
    EXPECT_EQ(result.exitCode, 0) << "the target may be one of the files";
    EXPECT_EQ(result.Json()["pages"], 4);
    EXPECT_EQ(qpr.Run({"--json", "pages", "--full", out}).Json()["files"][0]["pages"], 4);
}

}  // namespace
}  // namespace quirepress
