#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/files.h"
#include "qpr_program.h"

namespace quirepress {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

TEST(QprCommands, WrongUsageExitsWithTwoAndHelpTellsWithExamples) {
    QprProgram qpr;
    for (const std::vector<std::string>& wrong :
         std::vector<std::vector<std::string>>{{},
                                               {"nonsense"},
                                               {"print"},
                                               {"list", "--select", "7", "a"},
                                               {"--home"},
                                               {"log", "show", "nonsense"}}) {
        const ProgramResult result = qpr.RunBare(wrong);
        EXPECT_EQ(result.exitCode, 2) << result.errors;
        EXPECT_FALSE(result.errors.empty());
        EXPECT_TRUE(result.output.empty()) << result.output;
    }
    EXPECT_THAT(qpr.RunBare({"nonsense"}).errors, HasSubstr("\"nonsense\""));
    EXPECT_THAT(qpr.RunBare({"settings", "nonsense"}).errors, HasSubstr("\"nonsense\""));
    EXPECT_EQ(qpr.RunBare({"--version"}).output, "Quirepress 6.04\n");
    for (const char* command : {"print", "list", "pages", "settings", "printers", "queue", "log"}) {
        const ProgramResult help = qpr.RunBare({command, "--help"});
        EXPECT_EQ(help.exitCode, 0);
        EXPECT_THAT(help.output, HasSubstr("Examples:")) << command;
        EXPECT_THAT(help.output, HasSubstr("Options of every command (--home")) << command;
        EXPECT_THAT(help.output, HasSubstr(std::string("qpr ") + command)) << command;
    }
}

TEST(QprCommands, TheReferenceNamesEveryCommandInEveryForm) {
    QprProgram qpr;
    for (const char* form : {"man", "bash", "zsh", "fish"}) {
        const ProgramResult result = qpr.RunBare({"reference", form});
        EXPECT_EQ(result.exitCode, 0);
        for (const char* word : {"print", "printers", "settings", "copies", "unattended", "restart"})
            EXPECT_THAT(result.output, HasSubstr(word)) << form;
        EXPECT_THAT(result.output, Not(HasSubstr("pdf-worker"))) << form;
        EXPECT_THAT(result.output, Not(HasSubstr("Options of every command"))) << form;
    }
}

TEST(QprCommands, ListsRowsWithTheirKindsAndNothingElseOnStandardOutput) {
    QprProgram qpr;
    qpr.m_work.Write("docs/b10.ps", "%!PS\n");
    qpr.m_work.Write("docs/b9.ps", "%!PS\n");
    const ProgramResult result = qpr.Run({"--json", "list", "docs", "-------Separator-------", "x.tra",
                                          "DL;https://example.invalid/a.pdf", "--title", "T"});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    const nlohmann::json rows = result.Json()["rows"];
    ASSERT_EQ(rows.size(), 5U);
    EXPECT_EQ(rows[0]["columns"].size(), 19U);
    EXPECT_EQ(rows[0]["kind"], "document");
    EXPECT_EQ(rows[0]["columns"][3], "Ready.");
    EXPECT_EQ(rows[0]["columns"][16], "T");
    EXPECT_EQ(rows[2]["kind"], "separator");
    EXPECT_EQ(rows[2]["columns"][3], "Separator");
    EXPECT_EQ(rows[3]["kind"], "command");
    EXPECT_EQ(rows[3]["columns"][0], "Yes");
    EXPECT_EQ(rows[4]["kind"], "download");
    EXPECT_EQ(rows[4]["columns"][0], "Yes");
}

TEST(QprCommands, CountsPagesAndSaysNoForWhatCannotBeRead) {
    QprProgram qpr;
    qpr.m_work.Write("a.ps", "%!PS-Adobe-3.0\n%%Pages: 12\n");
    qpr.m_work.Write("bad.pdf", "%PDF-1.4 but nothing more");
    const ProgramResult result = qpr.Run({"--json", "pages", "a.ps", "bad.pdf", "missing.pcl"});
    EXPECT_EQ(result.exitCode, 1);
    const nlohmann::json files = result.Json()["files"];
    EXPECT_EQ(files[0]["pages"], 12);
    EXPECT_EQ(files[1]["pages"], -1);
    EXPECT_EQ(files[2]["pages"], -1);
    EXPECT_EQ(files[2]["status"], "No");
    EXPECT_EQ(files[2]["reason"], "there is no such file");
    EXPECT_THAT(qpr.Run({"pages", "bad.pdf"}).output, testing::HasSubstr("No: the file is cut off"));
}

TEST(QprCommands, SettingsAreShownSetUnsetAndRefused) {
    QprProgram qpr;
    nlohmann::json shown = qpr.Run({"--json", "settings", "show", "general"}).Json();
    EXPECT_EQ(shown["result"], -2);
    EXPECT_EQ(shown["values"]["TIMEALLOW"], 14000);
    EXPECT_EQ(shown["values"]["DONTUSEINTERNALPRN"], false);
    EXPECT_EQ(qpr.Run({"settings", "set", "general", "TEMPFOLDER", "Scratch"}).exitCode, 0);
    EXPECT_EQ(qpr.Run({"settings", "set", "general", "DONTUSEINTERNALPRN"}).exitCode, 0);
    EXPECT_EQ(qpr.Run({"settings", "set", "general", "TEMPFOLDER", "a;b"}).exitCode, 1);
    EXPECT_EQ(qpr.Run({"settings", "set", "general", "PAUSE1AFTER", "soon"}).exitCode, 1);
    EXPECT_EQ(qpr.Run({"settings", "set", "nonsense", "X"}).exitCode, 2);
    shown = qpr.Run({"--json", "settings", "show", "general"}).Json();
    EXPECT_EQ(shown["result"], 0);
    EXPECT_EQ(shown["values"]["TEMPFOLDER"], "Scratch");
    EXPECT_EQ(shown["values"]["DONTUSEINTERNALPRN"], true);
    EXPECT_EQ(qpr.Run({"settings", "unset", "general", "DONTUSEINTERNALPRN"}).exitCode, 0);
    shown = qpr.Run({"--json", "settings", "show", "general"}).Json();
    EXPECT_EQ(shown["values"]["DONTUSEINTERNALPRN"], false);
    EXPECT_THAT(qpr.m_home.Read("general_setup.ini"), HasSubstr("TEMPFOLDER;Scratch"));
}

TEST(QprCommands, WhatWentWrongStandsInTheErrorLog) {
    QprProgram qpr;
    EXPECT_EQ(qpr.Run({"--json", "log", "show", "error"}).Json(),
              nlohmann::json::parse(R"({"records": []})"));
    qpr.m_work.Write("odd.xyz", "no way for this");
    EXPECT_EQ(qpr.Run({"--unattended", "print", "missing.ps", "odd.xyz"}).exitCode, 1);
    const ProgramResult shown = qpr.Run({"--json", "log", "show", "error"});
    EXPECT_EQ(shown.exitCode, 0) << shown.errors;
    const nlohmann::json records = shown.Json()["records"];
    ASSERT_EQ(records.size(), 2U) << shown.output;
    EXPECT_EQ(records[0].size(), 6U);
    EXPECT_EQ(records[0][2], "missing.ps");
    EXPECT_EQ(records[0][4], "No File.");
    EXPECT_EQ(records[0][5], "Quirepress");
    EXPECT_THAT(qpr.Run({"log", "show", "error"}).output, HasSubstr("missing.ps"));
}

TEST(QprCommands, PrintersAreMadeListedAndRemoved) {
    QprProgram qpr;
    EXPECT_EQ(qpr.Run({"printers", "add", "Label", "--port", "null:"}).exitCode, 0);
    EXPECT_EQ(qpr.Run({"printers", "add", "Label", "--port", "null:"}).exitCode, 1);
    EXPECT_EQ(qpr.Run({"printers", "default", "Label"}).exitCode, 0);
    const nlohmann::json printers = qpr.Run({"--json", "printers"}).Json()["printers"];
    ASSERT_EQ(printers.size(), 2U);
    for (const nlohmann::json& printer : printers) {
        EXPECT_EQ(printer["default"], printer["name"] == "Label");
        EXPECT_EQ(printer["jobs"], 0);
    }
    EXPECT_EQ(qpr.Run({"printers", "default"}).output, "Label\n");
    EXPECT_EQ(qpr.Run({"printers", "remove", "Label"}).exitCode, 0);
    EXPECT_EQ(qpr.Run({"printers", "remove", "Label"}).exitCode, 3);
}

}  // namespace
}  // namespace quirepress
