#include "core/print_run_shell.h"

#include <gmock/gmock.h>

#include "backends/dialog_rules.h"
#include "backends/shell_print.h"
#include "core/print_run_scripts.h"
#include "core/print_run_source.h"
#include "fakes/fake_processes.h"
#include "fakes/fake_shell.h"
#include "settings/print_to_file_options.h"
#include "unit/core/print_run_fixture.h"

namespace quirepress {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using End = WayResult::End;

// Programs that do what a test says, for a way that has everything of a run around it.
class ShellWayTest : public testing::Test, protected RunStage<FakeSpooler> {
protected:
    struct Feedback : public WayFeedback {
        void ShowRowStatus(std::string_view status) override { statuses.emplace_back(status); }
        void ShowBytes(std::int64_t, std::int64_t) override {}
        bool IsStopped() const override { return isStopped; }
        bool KeepGoing() override { return !isStopped; }
        std::vector<std::string> statuses;
        bool isStopped = false;
    };

    ShellWayTest() {
        shell.programs = {"office", "lp"};
        folder.Write("print_commands.ini",
                     "SCRIPTLIMIT;5\n"
                     "COMMAND;Office\nTYPES;.doc .rtf .eml\nPDF;office %d %*\nLIMIT;60\nBATCH;3\n"
                     "COMMAND;Plots\nTYPES;.plt .pdf\nPRINT;lp %1\n"
                     "COMMAND;Gone\nTYPES;.gone\nPDF;gone %1 %o\n");
    }

    WayResult Process(RunWay& used, const std::string& path) {
        RunItem item;
        item.path = path;
        item.kind = KindOfItem(path);
        item.printer = "Laser";
        item.ticket.copies = 2;
        EXPECT_TRUE(used.Takes(item));
        return used.Process(item, feedback);
    }
    // The next start makes a PDF of each of its files.
    void ConvertNext() {
        FakeProcesses::Script script;
        script.whenStarted = [this] {
            const auto& words = processes.records.back().request.arguments;
            for (std::size_t i = 2; i < words.size(); ++i) WritePdf(words[1], words[i]);
        };
        processes.AddScript(script);
    }
    void WritePdf(const std::string& target, const std::string& source) {
        FileResult result = FileResult::kDone;
        const std::string pdf = JoinPath(target, std::string(TitleWithoutExtension(source)) + ".pdf");
        const std::string bytes = "%PDF of " + std::string(FileTitle(source)) + " %%EOF";
        files.OpenForWriting(pdf, OpenMode::kReplace, FileAccess::kShared, result)
            ->Write(bytes.data(), bytes.size());
    }

    FakeShell shell;
    FakeProcesses processes;
    Feedback feedback;
    PrintCommandFile commands{SettingsPlace{files, prompts, WithTrailingSeparator(folder.Path())}};
    ShellPrinter shellPrinter{{shell, processes, files, spooler, selection, commands, debugLog, options}};
    std::unique_ptr<RunWay> way =
        MakeShellWay({shellPrinter, list, spooler, watch, processes, files, loop, debugLog, preparation,
                      options, WithTrailingSeparator(folder.Path())});
    std::unique_ptr<RunWay> scripts =
        MakeScriptWay({shell, processes, loop, clock, debugLog}, files, commands);
};

TEST_F(ShellWayTest, APdfIsMadeAndPrintedWithTheTicket) {
    debugLog.Open(files, folder.PathOf("qpr.log"));
    const std::string path = AddFile("a.doc", "{\\rtf1}");
    ConvertNext();
    const WayResult result = Process(*way, path);
    EXPECT_EQ(result.end, End::kPrinted) << result.status;
    EXPECT_EQ(result.status, "Done");
    ASSERT_EQ(spooler.Sent().size(), 1U);
    const SentDocument& sent = spooler.Sent()[0];
    EXPECT_EQ(sent.bytes, "%PDF of a.doc %%EOF");
    EXPECT_EQ(sent.name, path);
    EXPECT_EQ(sent.ticket.copies, 2);
    EXPECT_EQ(result.jobId, sent.jobId);
    EXPECT_THAT(feedback.statuses, ElementsAre("Running", "Spooling"));
    ConvertNext();
    RunItem some;
    some.path = path;
    some.printer = "Laser";
    some.range = ReadPageRange("-s2|-e4");
    EXPECT_EQ(way->Process(some, feedback).pages, 3);
    EXPECT_EQ(spooler.Sent().at(1).bytes, "2-4") << "of what was made of it";
    pdfs.onCall = [this] { feedback.isStopped = true; };
    pdfs.extracted = PdfResult::kGaveUp;
    ConvertNext();
    EXPECT_EQ(way->Process(some, feedback).end, End::kStopped);
    EXPECT_EQ(spooler.Sent().size(), 2U);
    EXPECT_THAT(DebugLines(), HasSubstr("Getting ready to print file: " + path +
                                        ", printParameters: , retry: 0, action: print, gs.m_waitBat: 0\r\n"));
}

TEST_F(ShellWayTest, TickedRowsBelowAreConvertedAhead) {
    const std::string a = AddFile("a.doc", "{\\rtf1}");
    AddFile("other.plt");
    const std::string b = AddFile("b.rtf", "{\\rtf1}");
    list.InsertFileIntoList(folder.Write("unticked.doc", "{\\rtf1}"), 0, "", {});
    AddFile("garbage.doc", std::string("\0\1", 2));
    AddFile("simplex.paperduplex");
    const std::string c = AddFile("c.doc", "{\\rtf1}");
    const std::string d = AddFile("d.doc", "{\\rtf1}");
    list.SetCurrentRow(0);
    ConvertNext();
    EXPECT_EQ(Process(*way, a).end, End::kPrinted);
    ASSERT_EQ(processes.records.size(), 1U);
    const auto& words = processes.records[0].request.arguments;
    EXPECT_THAT(std::vector<std::string>(words.begin() + 2, words.end()), ElementsAre(a, b, c));
    EXPECT_EQ(Process(*way, b).end, End::kPrinted);
    EXPECT_EQ(Process(*way, c).end, End::kPrinted);
    EXPECT_EQ(processes.records.size(), 1U);
    EXPECT_EQ(spooler.Sent()[2].bytes, "%PDF of c.doc %%EOF");
}

TEST_F(ShellWayTest, SavedMailIsPrintedFromACopy) {
    AddFile("a.doc", "{\\rtf1}");
    const std::string path = AddFile("b.eml", "Subject: b");
    list.SetCurrentRow(1);
    ConvertNext();
    EXPECT_EQ(Process(*way, path).end, End::kPrinted);
    const auto& words = processes.records.at(0).request.arguments;
    EXPECT_EQ(FileTitle(words.at(2)), "b.eml");
    EXPECT_EQ(words.at(2).find(files.ResolvePath(folder.PathOf("Temp/MSG"))), 0U) << words.at(2);
    EXPECT_EQ(spooler.Sent().at(0).bytes, "%PDF of b.eml %%EOF");
    EXPECT_EQ(files.Inspect(words.at(2)).kind, FileKind::kMissing);
    EXPECT_EQ(folder.Read("b.eml"), "Subject: b");
    const std::string longest = AddFile(std::string(250, 'n') + ".eml", "Subject: c");
    ConvertNext();
    EXPECT_EQ(Process(*way, longest).end, End::kPrinted) << "with room for what programs add to a name";
}

TEST_F(ShellWayTest, SaysWhatIsWrongWithTheAssociation) {
    EXPECT_EQ(Process(*way, AddFile("a.none")).status,
              "No print association setup for that file type, see: docs/print-commands.md");
    const WayResult gone = Process(*way, AddFile("a.gone"));
    EXPECT_EQ(gone.status, "Problem with print association setup, see: docs/print-commands.md");
    EXPECT_THAT(gone.remark, HasSubstr("there is no program \"gone\""));
    EXPECT_FALSE(gone.canRetry);
    EXPECT_EQ(gone.end, End::kFailed);
}

TEST_F(ShellWayTest, FailuresAreErrorsOfTheirRow) {
    const std::string garbage("\0\1", 2);
    EXPECT_EQ(Process(*way, AddFile("a.doc", garbage)).status,
              "Error - Can't Print - the file is not what its name says");
    EXPECT_EQ(Process(*way, AddFile("a.pdf", garbage)).status, "Error - Can't Print - Bad PDF File");
    EXPECT_TRUE(processes.records.empty());

    const std::string path = AddFile("b.doc", "{\\rtf1}");
    WayResult result = Process(*way, path);
    EXPECT_THAT(result.status, HasSubstr("Error - Can't Print - no PDF was made: office ended with code 0"));
    EXPECT_TRUE(result.canRetry);

    FakeProcesses::Script hang;
    hang.runsFor = std::nullopt;
    processes.AddScript(hang);
    result = Process(*way, path);
    EXPECT_THAT(result.status, HasSubstr("did not end in its time of 60 seconds"));
    EXPECT_TRUE(processes.records.back().treeEnded);

    ConvertNext();
    spooler.FailPrintDocument(5);
    EXPECT_EQ(Process(*way, path).status, kStatusDidNotSpool);
    spooler.StopFailing();
    ConvertNext();
    spooler.LoseAnswers();
    EXPECT_EQ(Process(*way, path).status, kStatusUnknown);
}

TEST_F(ShellWayTest, AProgramThatPrintsIsProvedByItsJob) {
    const std::string path = AddFile("a.plt");
    FakeProcesses::Script script;
    script.runsFor = std::nullopt;
    script.output = "words";
    script.whenStarted = [&] {
        JobInfo job;
        job.document = path;
        job.statusBits = job_status::kPrinting;
        spooler.PutJob("Laser", job);
    };
    processes.AddScript(script);
    const long long start = loop.MonotonicMilliseconds();
    const WayResult result = Process(*way, path);
    EXPECT_EQ(result.end, End::kPrinted) << result.status;
    EXPECT_TRUE(processes.records[0].inputClosed);
    EXPECT_TRUE(processes.records[0].destroyed) << "a program that stays is ended";
    EXPECT_NEAR(static_cast<double>(loop.MonotonicMilliseconds() - start), 5000, 1000);

    FakeProcesses::Script hang;
    hang.runsFor = std::nullopt;
    RunItem some;
    some.path = path;
    some.range.kind = PageRange::Kind::kSome;
    EXPECT_THAT(way->Process(some, feedback).status, HasSubstr("pages can be chosen only of PDF files"));

    // The same job is no proof for the next one.
    const WayResult second = Process(*way, path);
    EXPECT_EQ(second.status, kStatusDidNotSpool);
    EXPECT_THAT(second.remark, HasSubstr("lp ended with code 0"));
    EXPECT_FALSE(second.canRetry) << "it may have printed where nobody looked";
    processes.AddScript(hang);
    EXPECT_TRUE(Process(*way, path).canRetry);

    spooler.KeepHistory(true);
    FakeProcesses::Script cancelled;
    cancelled.whenStarted = [&] {
        JobInfo job;
        job.document = path;
        spooler.CancelJob("Laser", spooler.PutJob("Laser", job));
    };
    processes.AddScript(cancelled);
    const WayResult lost = Process(*way, path);
    EXPECT_EQ(lost.status, "Error - Can't Print - its job was cancelled");
    EXPECT_FALSE(lost.canRetry) << "part of it may have come out";

    // One that fails behind its job has not printed all of it.
    FakeProcesses::Script half;
    half.runsFor = 3;
    half.exitCode = 3;
    half.errors = "page 2 lost\n";
    half.whenStarted = script.whenStarted;
    processes.AddScript(half);
    const WayResult halved = Process(*way, path);
    EXPECT_EQ(halved.status, "Error - Can't Print - lp ended with code 3: page 2 lost");
    EXPECT_FALSE(halved.canRetry);

    FakeProcesses::Script failure;
    failure.exitCode = 1;
    failure.errors = "no such printer\n";
    processes.AddScript(failure);
    const WayResult third = Process(*way, AddFile("b.plt"));
    EXPECT_EQ(third.status, "Error - Can't Print - lp ended with code 1: no such printer");
}

TEST_F(ShellWayTest, AProgramThatWaitsInADialogOfItsOwnEndsWithItsName) {
    const PrintToFileSettings settings;
    DialogRules rules({windows, files, loop, debugLog, options, settings});
    shellPrinter.UseDialogs(&rules);
    options.m_timeAllow = 600'000;
    FakeProcesses::Script hang;
    hang.runsFor = std::nullopt;
    hang.whenStarted = [this] {
        const auto id = 1000 + static_cast<std::int64_t>(processes.records.size());
        windows.PutDialog("Please register", {FakeAppWindows::Button("Later")}, id);
    };
    processes.AddScript(hang);
    const long long start = loop.MonotonicMilliseconds();
    const WayResult result = Process(*way, AddFile("a.plt"));
    EXPECT_EQ(result.end, End::kFailed);
    EXPECT_THAT(result.status, HasSubstr("Please register"));
    EXPECT_LT(loop.MonotonicMilliseconds() - start, 30'000);
    EXPECT_TRUE(processes.records.back().destroyed);
    shellPrinter.UseDialogs(nullptr);
}

TEST_F(ShellWayTest, StopEndsProgramsOfEveryKind) {
    list.InsertFileIntoList("x", 1, "", {});
    const std::vector<std::string> paths = {folder.Write("a.doc", "{\\rtf1}"), folder.Write("a.plt", "x")};
    const std::string script = folder.Write("a.bat", "x");
    for (const std::string& path : {paths[0], paths[1], script}) {
        FakeProcesses::Script hang;
        hang.runsFor = std::nullopt;
        hang.whenStarted = [this] { loop.StartTimer(7, 1000, [this] { feedback.isStopped = true; }); };
        processes.AddScript(hang);
        feedback.isStopped = false;
        const long long start = loop.MonotonicMilliseconds();
        const WayResult result = Process(path == script ? *scripts : *way, path);
        // Only of what was to become a PDF nothing can have come out.
        EXPECT_EQ(result.isUntouched, path == paths[0]) << path;
        EXPECT_EQ(result.status == kStatusUnknown, path == paths[1]) << path;
        EXPECT_EQ(result.end == End::kStopped, path != paths[1]) << path;
        EXPECT_LE(loop.MonotonicMilliseconds() - start, 1500) << path;
        EXPECT_TRUE(processes.records.back().destroyed);
        loop.StopTimer(7);
    }

    // One that has ended well may have printed.
    FakeProcesses::Script quick;
    quick.runsFor = 0;
    quick.whenStarted = [this] { loop.StartTimer(7, 1000, [this] { feedback.isStopped = true; }); };
    processes.AddScript(quick);
    feedback.isStopped = false;
    EXPECT_EQ(Process(*way, paths[1]).status, kStatusUnknown);
    loop.StopTimer(7);
}

TEST_F(ShellWayTest, TheDefaultPrinterOfAProgramIsSetBackByTheRun) {
    options.m_dontCheckSpoolerForPrint = true;
    FakeProcesses::Script quick;
    std::string during;
    quick.whenStarted = [&] { during = spooler.DefaultPrinter(); };
    processes.AddScript(quick);
    selection.SaveForRun();
    RunItem item;
    item.path = AddFile("a.plt");
    item.printer = "Plotter";
    EXPECT_EQ(way->Process(item, feedback).end, End::kPrinted);
    EXPECT_EQ(during, "Plotter");
    std::string message;
    EXPECT_EQ(selection.RestoreAfterRun(message), 0);
    EXPECT_EQ(spooler.DefaultPrinter(), "Laser");
}

TEST_F(ShellWayTest, ScriptsAreRunWithTheirParameters) {
    RunItem item;
    item.path = folder.Write("a b.BAT", "x");
    item.kind = KindInRun(item.path);
    EXPECT_EQ(item.kind, ItemKind::kCommand) << "it counts as no document";
    item.addonParameters = "not these";
    item.processingParameters = "\"one word\" $(two)";
    ASSERT_TRUE(scripts->Takes(item));
    WayResult result = scripts->Process(item, feedback);
    EXPECT_EQ(result.end, End::kPrinted);
    EXPECT_EQ(result.status, "Done");
    EXPECT_THAT(feedback.statuses, ElementsAre("Running script: " + item.path));
    EXPECT_THAT(processes.records[0].request.arguments,
                ElementsAre("run-script", item.path, "one word", "$(two)"));

    item.processingParameters.clear();
    scripts->Process(item, feedback);
    EXPECT_THAT(processes.records[1].request.arguments, ElementsAre("run-script", item.path, "not", "these"));

    FakeProcesses::Script failure;
    failure.exitCode = 7;
    processes.AddScript(failure);
    EXPECT_EQ(scripts->Process(item, feedback).status, "Error - a b.BAT ended with code 7");
    FakeProcesses::Script hang;
    hang.runsFor = std::nullopt;
    processes.AddScript(hang);
    EXPECT_EQ(scripts->Process(item, feedback).status,
              "Error - a b.BAT did not end in its time of 5 seconds");
    item.addonParameters = "\"open";
    EXPECT_THAT(scripts->Process(item, feedback).status, HasSubstr("Error - a quotation mark"));
    item.path = folder.PathOf("missing.bat");
    EXPECT_EQ(scripts->Process(item, feedback).status, "No File.");
    item.path = "/x/a.bat.doc";
    EXPECT_FALSE(scripts->Takes(item));
}

}  // namespace
}  // namespace quirepress
