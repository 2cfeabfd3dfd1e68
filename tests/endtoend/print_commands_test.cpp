#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qpr_program.h"

namespace quirepress {
namespace {

using ::testing::HasSubstr;

TEST(QprCommand, ShowsTheWayOfEachFile) {
    QprProgram qpr;
    qpr.m_home.Write("print_commands.ini",
                     "COMMAND;Gone\nTYPES;.doc\nPDF;no-such-program %1 %o\nCOLOUR;red\n"
                     "COMMAND;Here\nTYPES;.odt\nPDF;qpr-test-tool-that-is-not-there %1 %o\n");
    const ProgramResult result = qpr.Run(
        {"--json", "command", "a.doc", "b.PDF", "c.ps", "d.none", "e.bat", "f.prs", "$(touch x).odt"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors, HasSubstr("line 4: there is no key \"COLOUR\""));
    const nlohmann::json shown = result.Json();
    std::string ways;
    for (const nlohmann::json& file : shown["files"]) ways += file["way"].get<std::string>() + " ";
    EXPECT_EQ(ways, "broken document raw none script item broken ");
    EXPECT_EQ(shown["files"][0]["message"], "there is no program \"no-such-program\"");
    EXPECT_EQ(shown["printer"], "Quirepress");
    EXPECT_EQ(qpr.Run({"command", "b.pdf"}).exitCode, 0);
}

TEST(QprCommand, WritesTheDefaultsAtFirst) {
    QprProgram qpr;
    qpr.Run({"command", "a.docx"});
    EXPECT_THAT(qpr.m_home.Read("print_commands.ini"), HasSubstr("COMMAND;Office documents\n"));
    const nlohmann::json values = qpr.Run({"--json", "settings", "show", "printpdf"}).Json()["values"];
    EXPECT_EQ(values["EXTENSION"], ".pdf");
    EXPECT_EQ(values["WINDOWNAME"], "Save PDF File As");
}

}  // namespace
}  // namespace quirepress
