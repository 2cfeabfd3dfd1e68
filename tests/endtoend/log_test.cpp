#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qpr_program.h"

namespace quirepress {
namespace {

using ::testing::HasSubstr;

TEST(QprLogs, AreShownCheckedCleanedAndExported) {
    QprProgram qpr;
    const std::string failed = qpr.m_work.Write("failed.pdf", "x");
    const std::string gone = qpr.m_work.PathOf("gone.pdf");
    const auto padded = [](std::string text, std::size_t width) {
        text.resize(width, ' ');
        return text;
    };
    const auto record = [&](const std::string& name) {
        return padded("2024-01-01 00:00:00", 22) + "\t" + padded("0", 8) + "\t" + padded(name, 160) + "\t" +
               padded("", 22) + "\t" + padded("", 22) + padded("3", 8) + "\t" + padded("Office", 120) +
               "\r\n";
    };
    qpr.m_home.Write("print.log", record(gone) + record(failed));
    qpr.m_home.Write("error.log",
                     padded("2024-01-01", 20) + padded("00:00:00", 20) + padded(failed, 700) + "\r\n");

    nlohmann::json records = qpr.Run({"--json", "log", "show", "print"}).Json()["records"];
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0], (nlohmann::json{"2024-01-01 00:00:00", "0", gone, "", "", "3", "Office"}));
    for (const char* name : {"mail", "ftp", "ftp-error"})
        EXPECT_EQ(qpr.Run({"--json", "log", "show", name}).Json()["records"].size(), 0U) << name;

    ProgramResult check = qpr.Run({"--json", "log", "check", gone});
    EXPECT_EQ(check.exitCode, 1);
    EXPECT_EQ(check.Json(), (nlohmann::json{{"handled", true}, {"log", "print"}}));
    EXPECT_EQ(qpr.Run({"--json", "log", "check", failed}).Json()["log"], "error");
    check = qpr.Run({"--json", "log", "check", qpr.m_work.Write("new.pdf", "x")});
    EXPECT_EQ(check.exitCode, 0);
    EXPECT_EQ(check.Json(), (nlohmann::json{{"handled", false}, {"log", nullptr}}));
    EXPECT_EQ(qpr.Run({"log", "check", gone, "--folder", "1"}).exitCode, 0);
    qpr.m_home.Write("setup.ini", "MONCHECK_LOG;0;0\nMONCHECK_LOG;1;1\n");
    EXPECT_EQ(qpr.Run({"log", "check", gone, "--folder", "1"}).exitCode, 1);
    EXPECT_EQ(qpr.Run({"log", "check", gone, "--folder", "0"}).exitCode, 0);

    EXPECT_EQ(qpr.Run({"log", "export", "print", qpr.m_work.PathOf("out.csv")}).exitCode, 0);
    EXPECT_THAT(qpr.m_work.Read("out.csv"), HasSubstr("," + gone + ",,,3,Office\r\n"));
    EXPECT_THAT(qpr.m_work.Read("out.csv"), HasSubstr(",,,,,6,\r\n"));
    EXPECT_EQ(qpr.Run({"log", "export", "error", qpr.m_work.PathOf("no/out.csv")}).exitCode, 1);

    EXPECT_EQ(qpr.Run({"--json", "log", "clean", "--force"}).Json()["missing"], 0);
    EXPECT_EQ(qpr.Run({"settings", "set", "log", "NOLONGER"}).exitCode, 0);
    EXPECT_EQ(qpr.Run({"settings", "set", "log", "KEEPLOGS"}).exitCode, 0);
    EXPECT_EQ(qpr.Run({"--json", "log", "clean"}).Json()["missing"], 0);
    const ProgramResult clean = qpr.Run({"--json", "log", "clean", "--force"});
    EXPECT_EQ(clean.Json(), (nlohmann::json{{"missing", 1}, {"old", 0}}));
    EXPECT_EQ(qpr.m_home.Read("print.log"), record(failed));
    EXPECT_THAT(qpr.Run({"settings", "set", "logcheck", "NOFILESIZE"}).errors, HasSubstr("drops that time"));
    EXPECT_EQ(qpr.Run({"log", "convert"}).exitCode, 0);
}

}  // namespace
}  // namespace quirepress
