#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <thread>

#include "platform/files.h"
#include "qpr_program.h"

namespace quirepress {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* kTwoPages = "%!PS-Adobe-3.0\n%%Pages: 2\nshowpage showpage\n";

std::string StatusOf(const nlohmann::json& document, int row) {
    return document["rows"][row]["columns"][3];
}

std::string PagesOf(const nlohmann::json& document, int row) {
    return document["rows"][row]["columns"][2];
}

TEST(QprPrint, PrintsAMixedListByteForByteAndTellsEachRowsOutcome) {
    QprProgram qpr;
    const std::string binary("\x1b%-12345X\0\xff\r\n\x1a tail", 20);
    qpr.m_work.Write("letter.ps", kTwoPages);
    qpr.m_work.Write("job.prn", binary);
    qpr.m_work.Write("notes.txt", "plain\n");
    qpr.m_work.Write("empty.pcl", "");
    qpr.m_work.Write("odd.xyz", "no way for this");
    const ProgramResult result = qpr.Run(
        {"--json", "print", "letter.ps", "job.prn", "missing.ps", "notes.txt", "empty.pcl", "odd.xyz"});
    EXPECT_EQ(result.exitCode, 1) << result.errors;
    const nlohmann::json document = result.Json();
    EXPECT_EQ(document["printer"], "Quirepress");
    EXPECT_EQ(document["done"], 3);
    EXPECT_EQ(document["failed"], 3);
    EXPECT_EQ(StatusOf(document, 0), "Done");
    EXPECT_EQ(PagesOf(document, 0), "2");
    EXPECT_EQ(StatusOf(document, 1), "Done");
    EXPECT_EQ(StatusOf(document, 2), "No File.");
    EXPECT_EQ(StatusOf(document, 3), "Done");
    EXPECT_EQ(StatusOf(document, 4), "Empty File");
    EXPECT_THAT(StatusOf(document, 5), StartsWith("No print association setup"));
    const std::vector<std::string> names = qpr.OutputNames();
    ASSERT_THAT(names, ElementsAre("00000001-letter.ps", "00000002-job.prn", "00000003-notes.txt"));
    EXPECT_EQ(qpr.ReadOutput(names[0]), kTwoPages);
    EXPECT_EQ(qpr.ReadOutput(names[1]), binary);
    EXPECT_EQ(qpr.ReadOutput(names[2]), "plain\n");
}

TEST(QprPrint, WalksTheWholeListForEachCopyAndRepeatsARowByItsOptions) {
    QprProgram qpr;
    qpr.m_work.Write("a.ps", kTwoPages);
    qpr.m_work.Write("b.pcl",
                     "\x1b"
                     "Etext\f\x1b"
                     "E");
    const ProgramResult copies = qpr.Run({"print", "--copies", "2", "a.ps", "b.pcl"});
    EXPECT_EQ(copies.exitCode, 0) << copies.errors;
    EXPECT_THAT(qpr.OutputNames(),
                ElementsAre("00000001-a.ps", "00000002-b.pcl", "00000003-a.ps", "00000004-b.pcl"));
    const ProgramResult repeats = qpr.Run({"print", "--extra", "-r3", "a.ps"});
    EXPECT_EQ(repeats.exitCode, 0) << repeats.errors;
    EXPECT_EQ(qpr.OutputNames().size(), 7U);
}

TEST(QprPrint, TakesOddNamesAsTheyAre) {
    QprProgram qpr;
    const std::vector<std::string> names = {"two words.ps", "it's \"so\".ps",         "100%s%n.ps",
                                            "-dash.ps",     "h\xc3\xa4ll\xc3\xb6.ps", "semi;colon.ps",
                                            "dollar$(x).ps"};
    std::vector<std::string> arguments = {"--json", "print", "--"};
    for (const std::string& name : names) {
        if (!qpr.m_work.Has(name)) qpr.m_work.Write(name, "%!PS\n" + name);
        if (qpr.m_work.Has(name)) arguments.push_back(name);
    }
    const ProgramResult result = qpr.Run(arguments);
    EXPECT_EQ(result.exitCode, 0) << result.output << result.errors;
    const std::vector<std::string> outputs = qpr.OutputNames();
    ASSERT_EQ(outputs.size(), arguments.size() - 3);
    for (std::size_t i = 0; i < outputs.size(); ++i)
        EXPECT_EQ(qpr.ReadOutput(outputs[i]), "%!PS\n" + arguments[i + 3]);
}

TEST(QprPrint, PausedPrintersKeepTheirJobsUntilTheyAreResumed) {
    QprProgram qpr;
    qpr.m_work.Write("a.ps", kTwoPages);
    ASSERT_EQ(qpr.Run({"printers", "add", "Label"}).exitCode, 0);
    ASSERT_EQ(qpr.Run({"printers", "pause", "Label"}).exitCode, 0);
    const ProgramResult printed = qpr.Run({"print", "--printer", "Label", "a.ps"});
    EXPECT_EQ(printed.exitCode, 0) << printed.errors;
    EXPECT_THAT(qpr.OutputNames("Label"), IsEmpty());
    const nlohmann::json queue = qpr.Run({"--json", "queue", "Label"}).Json();
    ASSERT_EQ(queue["jobs"].size(), 1U);
    EXPECT_THAT(queue["jobs"][0]["document"].get<std::string>(), HasSubstr("a.ps"));
    EXPECT_EQ(qpr.Run({"printers", "resume", "Label"}).exitCode, 0);
    EXPECT_EQ(qpr.Run({"queue", "deliver"}).exitCode, 0);
    EXPECT_THAT(qpr.OutputNames("Label"), ElementsAre("00000001-a.ps"));
}

TEST(QprPrint, AJobOfUnknownOutcomeIsNamedAndNeverSentAgainByItself) {
    QprProgram qpr;
    qpr.m_work.Write("a.ps", kTwoPages);
    ASSERT_EQ(qpr.Run({"printers", "pause", "Quirepress"}).exitCode, 0);
    ASSERT_EQ(qpr.Run({"print", "a.ps"}).exitCode, 0);
    qpr.m_home.Write("Printers/Quirepress/Jobs/00000001.begun", "");
    ASSERT_EQ(qpr.Run({"printers", "resume", "Quirepress"}).exitCode, 0);
    const ProgramResult result = qpr.Run({"queue", "deliver"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.output, HasSubstr("job 1 (a.ps): Unknown: "));
    EXPECT_THAT(qpr.OutputNames(), IsEmpty());
}

TEST(QprPrint, SaysWhereTheOutputLiesWhenItIsThere) {
    QprProgram qpr;
    qpr.m_work.Write("a.ps", kTwoPages);
    ASSERT_EQ(qpr.Run({"printers", "add", "Archive", "--port", "folder:kept"}).exitCode, 0);
    const std::string output = qpr.Run({"print", "--printer", "Archive", "a.ps"}).output;
    EXPECT_THAT(output, AllOf(HasSubstr("The output lies in "), HasSubstr("kept\n")));
    EXPECT_THAT(output, Not(HasSubstr("The output lies in kept"))) << "it is told as a whole path";
    EXPECT_EQ(qpr.m_home.Read("kept/00000001-a.ps"), kTwoPages);
    ASSERT_EQ(qpr.Run({"printers", "pause", "Archive"}).exitCode, 0);
    EXPECT_THAT(qpr.Run({"print", "--printer", "Archive", "a.ps"}).output, Not(HasSubstr("lies in")));
}

TEST(QprPrint, AJobFileThatIsMissingFails) {
    QprProgram qpr;
    qpr.m_work.Write("a.ps", kTwoPages);
    const ProgramResult result = qpr.Run({"--json", "print", "a.ps", "missing.job"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.Json()["done"], 1);
    EXPECT_EQ(result.Json()["failed"], 1);
    EXPECT_EQ(StatusOf(result.Json(), 1), "Error - Can't read job parameters file: it does not exist");
    EXPECT_THAT(result.errors, HasSubstr("missing.job"));
    for (const std::vector<std::string>& shown :
         {std::vector<std::string>{"list", "missing.job"}, {"print", "--dry-run", "missing.job"}}) {
        const ProgramResult rows = qpr.Run(shown);
        EXPECT_EQ(rows.exitCode, 1);
        EXPECT_THAT(rows.output, HasSubstr("missing.job"));
    }
    EXPECT_FALSE(std::filesystem::exists(qpr.m_home.PathOf("error.log")));
    EXPECT_EQ(qpr.Run({"--unattended", "print", "a.ps", "missing.job"}).exitCode, 1);
    const std::string records = qpr.m_home.Read("error.log");
    EXPECT_EQ(std::count(records.begin(), records.end(), '\n'), 1) << records;
    EXPECT_THAT(qpr.Run({"--json", "log", "show", "error"}).output, HasSubstr("\"missing.job\""));
    const ProgramResult nothing = qpr.Run({"--json", "print", "missing.ps"});
    EXPECT_EQ(nothing.exitCode, 1);
    EXPECT_EQ(nothing.Json()["printer"], "Quirepress");
}

TEST(QprPrint, UnknownPrintersAndSpoolersExitWithThree) {
    QprProgram qpr;
    qpr.m_work.Write("a.ps", kTwoPages);
    for (const char* key : {"GENERATEREPORTS", "ERRORLOG"})
        EXPECT_EQ(qpr.Run({"settings", "set", "general", key, "1"}).exitCode, 0);
    EXPECT_EQ(qpr.Run({"print", "--dry-run", "--printer", "Nowhere", "a.ps"}).exitCode, 3);
    EXPECT_FALSE(std::filesystem::exists(qpr.m_home.PathOf("Reports"))) << "nothing was to be printed";
    const ProgramResult nowhere = qpr.Run({"print", "--printer", "Nowhere", "a.ps"});
    EXPECT_EQ(nowhere.exitCode, 3);
    EXPECT_EQ(nowhere.output, "");
    EXPECT_EQ(nowhere.errors, "qpr: There is no printer \"Nowhere\".\n");
    EXPECT_THAT(qpr.m_home.Read("error.log"), HasSubstr("Printer not available:Nowhere"));
    EXPECT_TRUE(std::filesystem::exists(qpr.m_home.PathOf("Reports")));
    EXPECT_EQ(qpr.Run({"--json", "print", "--printer", "Nowhere", "a.ps"}).Json()["result"], 3);
    EXPECT_EQ(qpr.RunBare({"--home", qpr.m_home.Path(), "--spooler", "nonesuch", "print", "a.ps"}).exitCode,
              3);
    EXPECT_THAT(qpr.m_home.Read("error.log"), HasSubstr("There is no print spooler \"nonesuch\" here"));
    EXPECT_EQ(qpr.Run({"queue", "Nowhere"}).exitCode, 3);
    EXPECT_EQ(qpr.Run({"printers", "add", "a/b"}).exitCode, 2);
    EXPECT_EQ(qpr.Run({"printers", "add", "Label", "--port", "carrier-pigeon:"}).exitCode, 2);
}

TEST(QprPrint, WhatCannotBeWrittenDownOrFiledIsSaidAndExitsWithOne) {
    QprProgram qpr;
    qpr.m_work.Write("a.ps", kTwoPages);
    qpr.m_work.Write("file", "no folder");
    const ProgramResult unfiled = qpr.Run({"print", "--move-to", "file", "a.ps"});
    EXPECT_EQ(unfiled.exitCode, 1);
    EXPECT_THAT(unfiled.output, HasSubstr("\n1 file could not be moved, copied or deleted:\n    "));
    EXPECT_THAT(unfiled.output, HasSubstr("a.ps, not moved: "));
    std::filesystem::remove(qpr.m_home.PathOf("print.log"));
    std::filesystem::remove(qpr.m_home.PathOf("error.log"));
    qpr.m_home.Write("print.log/in", "a folder");
    qpr.m_home.Write("error.log/in", "a folder");
    const ProgramResult unlogged = qpr.Run({"--unattended", "print", "a.ps"});
    EXPECT_EQ(unlogged.exitCode, 1);
    EXPECT_THAT(unlogged.output, HasSubstr("1 done, 0 failed"));
    EXPECT_THAT(unlogged.errors, HasSubstr("Can't open print.log"));
}

TEST(QprPrint, AReadOnlyOrImpossibleWorkingFolderIsSaidAndNotCrashedOn) {
    QprProgram qpr;
    const std::string file = qpr.m_work.Write("file", "x");
    qpr.m_work.Write("a.ps", kTwoPages);
    const ProgramResult result = qpr.RunBare({"--home", file + "/below", "print", "a.ps"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.errors, HasSubstr("working folder"));
}

}  // namespace
}  // namespace quirepress
