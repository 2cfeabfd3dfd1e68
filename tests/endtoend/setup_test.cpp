#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qpr_program.h"

namespace quirepress {
namespace {

using ::testing::HasSubstr;

TEST(QprSetup, SavesAndShowsPrinterSettings) {
    QprProgram qpr;
    ASSERT_EQ(qpr.Run({"printers", "add", "Label", "--port", "null:"}).exitCode, 0);
    EXPECT_EQ(qpr.Run({"prs", "save", "label.prs", "--printer", "Label"}).exitCode, 0);
    EXPECT_EQ(qpr.Run({"prs", "save", "default.prs"}).exitCode, 0);
    EXPECT_EQ(qpr.Run({"prs", "save", "none.prs", "--printer", "Nowhere"}).exitCode, 3);
    EXPECT_EQ(qpr.Run({"prs", "save", "no/folder/label.prs"}).exitCode, 1);
    EXPECT_FALSE(qpr.m_work.Has("none.prs"));

    const nlohmann::json shown = qpr.Run({"--json", "prs", "show", "label.prs"}).Json();
    const std::string bytes = qpr.m_work.Read("label.prs");
    EXPECT_EQ(
        shown["device_mode_bytes"].get<std::size_t>() + shown["device_names_bytes"].get<std::size_t>() + 8,
        bytes.size());
    EXPECT_EQ(shown["device"], "Label");
    EXPECT_EQ(shown["port"], "null:");
    EXPECT_EQ(shown["driver"], "");
    EXPECT_EQ(shown["message"], "");
    EXPECT_EQ(qpr.Run({"--json", "prs", "show", "default.prs"}).Json()["device"], "Quirepress");

    qpr.m_home.Write("Printers/Label/printer.ini", "PORT;null:\nBIN;258;Upper tray\n");
    ASSERT_EQ(qpr.Run({"prs",       "save",     "all.prs",    "--printer",    "Label", "--orientation",
                       "landscape", "--scale",  "71",         "--paper-size", "a4",    "--copies",
                       "3",         "--duplex", "horizontal", "--color",      "bw",    "--quality",
                       "high",      "--tray",   "Upper tray"})
                  .exitCode,
              0);
    const nlohmann::json all = {{"orientation", "landscape"},
                                {"scale", 71},
                                {"paper_size", 9},
                                {"copies", 3},
                                {"color", "bw"},
                                {"duplex", "horizontal"},
                                {"quality", "high"},
                                {"tray", 258},
                                {"tray_name", "Upper tray"}};
    EXPECT_EQ(qpr.Run({"--json", "prs", "show", "all.prs"}).Json()["settings"], all);
    EXPECT_EQ(qpr.Run({"prs", "save", "none.prs", "--printer", "Label", "--tray", "Lower"}).exitCode, 1);
    for (const char* option : {"--paper-size=Foolscap", "--scale=0", "--color=green"})
        EXPECT_EQ(qpr.Run({"prs", "save", "none.prs", option}).exitCode, 2) << option;
    EXPECT_FALSE(qpr.m_work.Has("none.prs"));
}

TEST(QprSetup, ShowsWhatThereIsOfForeignAndDamagedSettings) {
    QprProgram qpr;
    using std::string_literals::operator""s;
    const std::string names = "\x08\0\x0A\0\x0D\0\0\0D\0Of\0P\0"s;
    qpr.m_work.Write("foreign.prs", "\x06\0\0\0Office"s + "\x0F\0\0\0"s + names);
    const ProgramResult foreign = qpr.Run({"--json", "prs", "show", "foreign.prs"});
    EXPECT_EQ(foreign.exitCode, 0);
    EXPECT_EQ(foreign.Json()["device_mode_bytes"], 6);
    EXPECT_EQ(foreign.Json()["driver"], "D");
    EXPECT_EQ(foreign.Json()["device"], "Of");
    EXPECT_EQ(foreign.Json()["port"], "P");
    EXPECT_THAT(foreign.Json()["message"].get<std::string>(), HasSubstr("another print system"));
    EXPECT_THAT(qpr.Run({"prs", "show", "foreign.prs"}).errors, HasSubstr("another print system"));

    ASSERT_EQ(qpr.Run({"prs", "save", "whole.prs"}).exitCode, 0);
    const std::string whole = qpr.m_work.Read("whole.prs");
    qpr.m_work.Write("without_names.prs", whole.substr(0, 176));
    const ProgramResult without = qpr.Run({"--json", "prs", "show", "without_names.prs"});
    EXPECT_EQ(without.exitCode, 0);
    EXPECT_EQ(without.Json()["device_names_bytes"], 0);
    EXPECT_EQ(without.Json()["device"], "");
    qpr.m_work.Write("cut.prs", whole.substr(0, whole.size() - 1));
    EXPECT_EQ(qpr.Run({"prs", "show", "cut.prs"}).exitCode, 1);
    qpr.m_work.Write("lying.prs", "\xFF\xFF\xFF\xFFmode");
    EXPECT_EQ(qpr.Run({"prs", "show", "lying.prs"}).exitCode, 1);
    const ProgramResult missing = qpr.Run({"--json", "prs", "show", "missing.prs"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_EQ(missing.Json()["result"], -1);
}

TEST(QprSetup, ListsFindsAndSavesTrays) {
    QprProgram qpr;
    ASSERT_EQ(qpr.Run({"printers", "add", "Office"}).exitCode, 0);
    qpr.m_home.Write("Printers/Office/printer.ini", "PORT;null:\nBIN;15;Auto\nBIN;258;Upper tray\n");
    const nlohmann::json listed = qpr.Run({"--json", "tray", "list", "Office"}).Json();
    EXPECT_EQ(listed["result"], 0);
    ASSERT_EQ(listed["trays"].size(), 2U);
    EXPECT_EQ(listed["trays"][1]["number"], 258);
    EXPECT_EQ(listed["trays"][1]["name"], "Upper tray");
    EXPECT_EQ(qpr.Run({"tray", "find", "Office", "Upper tray"}).output, "258\n");
    const ProgramResult unknown = qpr.Run({"tray", "find", "Office", "Lower tray"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_THAT(unknown.errors, HasSubstr("Unknown"));
    EXPECT_EQ(qpr.Run({"tray", "list", "Nowhere"}).exitCode, 3);
    EXPECT_EQ(qpr.Run({"tray", "find", "Nowhere", "Upper tray"}).exitCode, 3);

    EXPECT_EQ(qpr.Run({"tray", "save", "upper.tra", "Upper tray"}).output, "Tray file saved.\n");
    EXPECT_EQ(qpr.m_work.Read("upper.tra"), "Upper tray");
    EXPECT_EQ(qpr.Run({"tray", "save", "upper.tra", "1234567890123456789012345"}).exitCode, 1);
    EXPECT_EQ(qpr.m_work.Read("upper.tra"), "Upper tray");
    const ProgramResult refused = qpr.Run({"tray", "save", "no/folder.tra", "Upper tray"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.errors,
                HasSubstr("Tray File Save Error: Can't open tray file for writing: no/folder.tra"));
}

}  // namespace
}  // namespace quirepress
