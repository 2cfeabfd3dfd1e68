#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "platform/event_loop.h"
#include "platform/files.h"
#include "qpr_program.h"

namespace quirepress {
namespace {

using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr const char* kOnePage = "%!PS-Adobe-3.0\n%%Pages: 1\nshowpage\n";

std::string StatusOf(const nlohmann::json& row) {
    return row["columns"][3];
}

// A folder of 4,000 characters and more, made piece by piece as the system's calls allow.
std::string MakeDeepFolder(const std::string& start, int levels = 20) {
    std::string path = start;
    const std::string name(200, 'd');
    const int before = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    EXPECT_EQ(chdir(start.c_str()), 0);
    for (int i = 0; i < levels; ++i) {
        EXPECT_EQ(mkdir(name.c_str(), 0777), 0);
        EXPECT_EQ(chdir(name.c_str()), 0);
        path += "/" + name;
    }
    const int file = open("deep.ps", O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    EXPECT_EQ(write(file, kOnePage, strlen(kOnePage)), static_cast<ssize_t>(strlen(kOnePage)));
    close(file);
    EXPECT_EQ(fchdir(before), 0);
    close(before);
    return path;
}

TEST(QprHostile, OddFilesCostTheirOwnRowsAndNoMore) {
    QprProgram qpr;
    const std::string folder = qpr.m_work.PathOf("odd");
    ASSERT_EQ(mkdir(folder.c_str(), 0777), 0);
    qpr.m_work.Write("odd/a line\nend.ps", kOnePage);
    qpr.m_work.Write("odd/caf\xe9.ps", kOnePage);
    qpr.m_work.Write("odd/good.ps", kOnePage);
    ASSERT_EQ(mkfifo((folder + "/pipe.ps").c_str(), 0666), 0);
    ASSERT_EQ(symlink("/nowhere/at-all.ps", (folder + "/dangling.ps").c_str()), 0);
    ASSERT_EQ(symlink("..", (folder + "/circle").c_str()), 0);
    const ProgramResult result = qpr.Run({"--json", "print", folder});
    EXPECT_EQ(result.exitCode, 1) << result.errors;
    int done = 0;
    const nlohmann::json rows = result.Json()["rows"];
    for (const nlohmann::json& row : rows) {
        const std::string name = row["columns"][1];
        if (name.ends_with("pipe.ps")) {
            EXPECT_THAT(StatusOf(row), StartsWith("Error"));
        } else if (name.ends_with("dangling.ps")) {
            EXPECT_EQ(StatusOf(row), "No File.");
        } else {
            EXPECT_EQ(StatusOf(row), "Done") << name;
            ++done;
        }
    }
    EXPECT_EQ(done, 3);
    EXPECT_EQ(qpr.OutputNames().size(), 3U);
}

TEST(QprHostile, PathsOfFourThousandCharactersPrint) {
    QprProgram qpr;
    const std::string path = MakeDeepFolder(qpr.m_work.Path()) + "/deep.ps";
    ASSERT_GT(path.size(), 4000U);
    const ProgramResult result = qpr.Run({"--json", "print", path});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_THAT(qpr.OutputNames(), ElementsAre("00000001-deep.ps"));
}

TEST(QprHostile, AFolderThatIsTooDeepToBeTakenInIsSaid) {
    QprProgram qpr;
    MakeDeepFolder(qpr.m_work.Path(), 22);
    const ProgramResult result = qpr.Run({"--json", "list", qpr.m_work.Path()});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    const nlohmann::json rows = result.Json()["rows"];
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_THAT(StatusOf(rows[0]), StartsWith("Error - Can't open folder"));
}

TEST(QprHostile, AFullDiskIsSaidCostsTheRowAndLeavesNoHalfJob) {
    QprProgram qpr;
    const std::string disk = qpr.m_work.PathOf("disk");
    ASSERT_EQ(mkdir(disk.c_str(), 0777), 0);
    if (mount("none", disk.c_str(), "tmpfs", 0, "size=1m") != 0) GTEST_SKIP() << "no right to mount";
    qpr.m_work.Write("small.ps", kOnePage);
    qpr.m_work.Write("large.ps", kOnePage + std::string(4 << 20, '\n'));
    const ProgramResult result = qpr.RunBare(
        {"--home", disk, "--spooler", "embedded", "--json", "print", "small.ps", "large.ps", "small.ps"});
    EXPECT_EQ(result.exitCode, 1) << result.errors;
    const nlohmann::json rows = result.Json()["rows"];
    EXPECT_EQ(StatusOf(rows[0]), "Done");
    EXPECT_THAT(StatusOf(rows[1]), StartsWith("Error"));
    EXPECT_EQ(StatusOf(rows[2]), "Done");
    std::vector<FolderEntry> entries;
    qpr.m_services.files->ListFolder(disk + "/Printers/Quirepress/Output", entries);
    EXPECT_EQ(entries.size(), 2U);
    // A settings file that does not fit leaves the old one.
    const std::string filler(2 << 20, 'x');
    FileResult opened = FileResult::kDone;
    const auto fill = qpr.m_services.files->OpenForWriting(disk + "/filler", OpenMode::kReplace,
                                                           FileAccess::kShared, opened);
    fill->Write(filler.data(), filler.size());
    for (const char c : std::string(4096, 'y')) fill->Write(&c, 1);
    const ProgramResult refused =
        qpr.RunBare({"--home", disk, "settings", "set", "general", "TEMPFOLDER", std::string(200, 't')});
    umount2(disk.c_str(), MNT_DETACH);
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.errors, HasSubstr("Can't save to general_setup.ini file."));
}

// Waits until the first job of the default printer has come out.
void WaitForFirstOutput(QprProgram& qpr) {
    for (int i = 0; i < 1000 && qpr.OutputNames().empty(); ++i) qpr.m_services.loop->Wait(10);
}

TEST(QprInterrupts, TheFirstCtrlCStopsInOrder) {
    QprProgram qpr;
    qpr.m_work.Write("a.ps", kOnePage);
    ASSERT_EQ(qpr.Run({"settings", "set", "general", "PAUSE1AFTER", "50"}).exitCode, 0);
    const std::vector<std::string> arguments = {"--home", qpr.m_home.Path(), "--spooler", "embedded",
                                                "--json", "print",           "a.ps",      "a.ps"};
    const auto process = qpr.Start(arguments);
    WaitForFirstOutput(qpr);
    kill(static_cast<pid_t>(process->Id()), SIGINT);
    const ProgramResult result = qpr.Finish(*process);
    EXPECT_EQ(result.exitCode, 130) << result.errors;
    const nlohmann::json rows = result.Json()["rows"];
    EXPECT_EQ(StatusOf(rows[0]), "Done");
    EXPECT_EQ(StatusOf(rows[1]), "Ready");
    EXPECT_THAT(qpr.OutputNames(), ElementsAre("00000001-a.ps"));
}

// The form's text is drawn smaller again and again, which takes the better part of a minute.
TEST(QprInterrupts, CtrlCEndsAWorkerThatIsBusy) {
    QprProgram qpr;
    qpr.m_work.Write(
        "form.pdf",
        "%PDF-1.4\n1 0 obj\n<< /Type /Catalog /Pages 2 0 R /AcroForm << /Fields [ 4 0 R ] /DA "
        "(/Helv 0 Tf 0 g) >> >>\nendobj\n2 0 obj\n<< /Type /Pages /Count 1 /Kids [ 3 0 R ] "
        ">>\nendobj\n3 0 obj\n<< /Type /Page /Parent 2 0 R /MediaBox [0 0 300 300] /Annots [ 4 0 "
        "R ] >>\nendobj\n4 0 obj\n<< /Type /Annot /Subtype /Widget /F 4 /FT /Tx /T (a) /Ff 4096 "
        "/Rect [0 0 290 290] >>\nendobj\ntrailer\n<< /Root 1 0 R /Size 5 >>\n%%EOF\n");
    qpr.m_work.Write("data.xfdf", "<xfdf><f href=\"form.pdf\"/><fields><field name=\"a\"><value>" +
                                      std::string(20 << 20, 'i') + "</value></field></fields></xfdf>");
    const auto process = qpr.Start({"--home", qpr.m_home.Path(), "--spooler", "embedded", "--json", "print",
                                    "--processing-params", "-s1", "data.xfdf"});
    for (int i = 0; i < 1000 && !qpr.m_home.Has("Temp/Pages1"); ++i) qpr.m_services.loop->Wait(10);
    kill(static_cast<pid_t>(process->Id()), SIGINT);
    const ProgramResult result = qpr.Finish(*process);
    EXPECT_EQ(result.exitCode, 130) << result.errors;
    EXPECT_EQ(StatusOf(result.Json()["rows"][0]), "Error - Stopped, nothing was printed");
    EXPECT_FALSE(qpr.m_home.Has("Temp/Pages1"));
}

// Two that arrive before anything can answer the first.
TEST(QprInterrupts, TheSecondEndsAtOnce) {
    QprProgram qpr;
    qpr.m_work.Write("a.ps", kOnePage);
    ASSERT_EQ(qpr.Run({"settings", "set", "general", "PAUSE1AFTER", "50"}).exitCode, 0);
    const auto process =
        qpr.Start({"--home", qpr.m_home.Path(), "--spooler", "embedded", "print", "a.ps", "a.ps"});
    WaitForFirstOutput(qpr);
    for (const int signal : {SIGSTOP, SIGINT, SIGTERM, SIGCONT})
        kill(static_cast<pid_t>(process->Id()), signal);
    const ProgramResult result = qpr.Finish(*process);
    EXPECT_THAT(result.exitCode, AnyOf(128 + SIGINT, 128 + SIGTERM)) << result.errors;
    EXPECT_THAT(result.output, IsEmpty());
}

}  // namespace
}  // namespace quirepress
