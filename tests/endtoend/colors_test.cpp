#include <gmock/gmock.h>

#include "base/format.h"
#include "endtoend/qpr_program.h"

namespace quirepress {
namespace {

using testing::HasSubstr;

// One page for each content.
std::string MakePages(const std::vector<std::string>& contents) {
    std::string pdf = "%PDF-1.4\n1 0 obj\n<< /Type /Catalog /Pages 2 0 R >>\nendobj\n";
    std::string kids;
    int number = 3;
    for (const std::string& content : contents) {
        kids += Format("%d 0 R ", number);
        pdf += Format(
            "%d 0 obj\n<< /Type /Page /Parent 2 0 R /MediaBox [0 0 99 99] /Contents %d 0 R >>\nendobj\n",
            number, number + 1);
        pdf += Format("%d 0 obj\n<< /Length %d >>\nstream\n%s\nendstream\nendobj\n", number + 1,
                      content.size(), content);
        number += 2;
    }
    return pdf +
           Format("2 0 obj\n<< /Type /Pages /Count %d /Kids [ %s] >>\nendobj\n", contents.size(), kids) +
           "trailer\n<< /Root 1 0 R >>\nstartxref\n0\n%%EOF\n";
}

TEST(QprColors, ArePrintedPageByPage) {
    QprProgram qpr;
    const std::string file = qpr.m_work.Write(
        "a.pdf", MakePages({"0 g 9 9 50 50 re f", "1 0 0 rg 9 9 50 50 re f", "1 0 0 RG 9 9 50 50 re S", ""}));
    const ProgramResult json = qpr.Run({"--json", "pages", "--colors", file});
    EXPECT_EQ(json.exitCode, 0) << json.errors;
    EXPECT_EQ(json.Json()["files"][0]["colors"], "mccm");
    EXPECT_EQ(json.Json()["files"][0]["pages"], 4);
    const ProgramResult text = qpr.Run({"pages", "--colors", file});
    EXPECT_THAT(text.output, HasSubstr("mono 1, colour 2-3, mono 4"));
    EXPECT_FALSE(qpr.Run({"--json", "pages", file}).Json()["files"][0].contains("colors"));
    const ProgramResult bad =
        qpr.Run({"--json", "pages", "--colors", qpr.m_work.Write("b.pdf", "junk"), file});
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_EQ(bad.Json()["files"][0]["colors"], "");
    EXPECT_EQ(bad.Json()["files"][0]["status"], "the file is no PDF, whatever its name says");
    EXPECT_EQ(bad.Json()["files"][1]["colors"], "mccm");
}

}  // namespace
}  // namespace quirepress
