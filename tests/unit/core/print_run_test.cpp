#include "core/print_run.h"

#include <algorithm>
#include <filesystem>

#include "base/text.h"
#include "core/print_run_ways.h"
#include "fakes/forgiving_spooler.h"
#include "print_run_fixture.h"

namespace quirepress {
namespace {

constexpr std::size_t kChunk = 65535;
const std::string kDidNotSpool(kStatusDidNotSpool);

TEST_F(PrintRunTest, AnEmptyListEndsTheRunWithoutABox) {
    debugLog.Open(files, folder.PathOf("qpr.log"));
    EXPECT_EQ(run.OnButtonPrint().end, RunSummary::End::kNothingToPrint);
    EXPECT_EQ(DebugLines(), "KillTimer(2) 5\r\nNo Items in the list\r\n");
    EXPECT_TRUE(prompts.boxes.empty());
    EXPECT_FALSE(run.IsRunning());
}

TEST_F(PrintRunTest, NothingTickedIsSaidInABox) {
    debugLog.Open(files, folder.PathOf("qpr.log"));
    AddFile("a.ps");
    list.SetText(0, kColumnSelected, "No");
    list.SetText(0, kColumnStatus, "kept");
    EXPECT_EQ(run.OnButtonPrint().end, RunSummary::End::kNothingToPrint);
    EXPECT_EQ(DebugLines(), "KillTimer(2) 5\r\nNo Files to Print\r\n");
    EXPECT_EQ(prompts.boxes, (std::vector<FakePrompts::Box>{{"Print Error!", "No Files to Print"}}));
    EXPECT_EQ(Statuses(), TextList{"kept"});
    EXPECT_TRUE(notices.told.empty());
}

// Missing files come in unticked.
TEST_F(PrintRunTest, ANightOfMissingFilesLeavesItsTraces) {
    options.m_errorLog = options.m_generateReports = true;
    list.InsertFileIntoList(folder.PathOf("gone.ps"), 1, "", {});
    list.InsertFileIntoList(folder.PathOf("gone.BAT"), 1, "", {});
    const RunSummary summary = run.OnButtonPrint();
    EXPECT_EQ(summary.end, RunSummary::End::kNothingToPrint);
    EXPECT_EQ(summary.failed, 2);
    EXPECT_EQ(prompts.boxes.back().text, "No Files to Print");
    for (const char* name : {"gone.ps", "gone.BAT"}) EXPECT_TRUE(Contains(ErrorRecords(), name)) << name;
    ASSERT_EQ(notices.told.size(), 3U);
    EXPECT_TRUE(StartsWith(notices.told[0], "2:") && EndsWith(notices.told[0], "gone.ps"));
    EXPECT_TRUE(Contains(ReportText(".txt"), "Failed                1 ")) << "a script is no document";
    EXPECT_TRUE(EndsWith(notices.told[2], ".txt")) << notices.told[2];
}

TEST_F(PrintRunTest, AnUnknownPrinterEndsTheRunBeforeTheFirstRow) {
    options.m_errorLog = options.m_generateReports = true;
    AddFile("a.ps");
    run.UsePrinter("Nowhere");
    debugLog.Open(files, folder.PathOf("qpr.log"));
    EXPECT_EQ(run.OnButtonPrint().end, RunSummary::End::kNoPrinter);
    EXPECT_EQ(DebugLines(),
              "KillTimer(2) 5\r\nItems set to ready, OK? 1\r\n"
              "Creating temporary prs file\r\nCreate Snapshot restore?, 0\r\n"
              "checkPrinterIsValid - Printer not available: Nowhere\r\n");
    EXPECT_EQ(prompts.statusTexts, (TextList{"Starting", "Printer not available:Nowhere"}));
    EXPECT_EQ(Statuses(), TextList{"Ready"});
    EXPECT_TRUE(spooler.Sent().empty());
    EXPECT_TRUE(Contains(ErrorRecords(), "Printer not available:Nowhere"));
    EXPECT_TRUE(Contains(ReportText(".txt"), "a.ps\r\n    Printer not available:Nowhere\r\n"));
    ASSERT_EQ(notices.told.size(), 1U);
    EXPECT_TRUE(StartsWith(notices.told[0], "2:") && Contains(notices.told[0], "not available:Nowhere"));

    run.UsePrinter("Laser");
    spooler.FailListing();
    EXPECT_EQ(run.OnButtonPrint().end, RunSummary::End::kNoPrinter);
    spooler.StopFailing();
    EXPECT_EQ(run.OnButtonPrint().end, RunSummary::End::kFinished);
}

TEST_F(PrintRunTest, WritesItsStartToTheDebugLog) {
    const std::string path = AddFile("a.ps");
    debugLog.Open(files, folder.PathOf("qpr.log"));
    run.SetCopies(1);
    run.OnButtonPrint();
    EXPECT_EQ(DebugLines(),
              "KillTimer(2) 5\r\nItems set to ready, OK? 1\r\n"
              "Creating temporary prs file\r\nCreate Snapshot restore?, 0\r\n"
              "checkPrinterIsValid OK - Printer available: Laser\r\nwaitSpoolQueueClearBeforePrint? 0\r\n"
              "Start printing.\r\nOnButtonPrint() copies: 1\r\nOnButtonPrint() printer: Laser\r\n"
              "Check is to print: " +
                  path + "\r\nCheck is to print OK\r\nbadFile check? 0, " + path +
                  "\r\nCheck for internal printing of file: " + path +
                  "\r\nSending file directly to printer: " + path + "\r\nPrintExtPS: " + path +
                  "\r\nPrintExtPS: " + path +
                  ", Done: 0\r\ng_didspool: 1 and g_bError: 0\r\nCheckForFileOnMove fn=" + path +
                  ", fn_to=, fileTitle=a.ps\r\n");
}

// One row of every kind: each gets its status and costs nothing but itself.
TEST_F(PrintRunTest, GivesEveryRowItsStatus) {
    options.m_errorLog = true;
    AddFile("raw.ps", "raw bytes");
    AddFile("text.txt");
    AddFile("letter.doc");
    list.InsertFileIntoList(folder.PathOf("missing.ps"), 1, "", {});
    list.SetText(3, kColumnSelected, "Yes");
    AddFile("empty.ps", "");
    list.SetText(4, kColumnSelected, "Yes");
    list.InsertFileIntoList(std::string(kSeparatorText), 1, "", {});
    list.InsertFileIntoList("http://nowhere.invalid/a.pdf", 1, "", {});
    list.InsertFileIntoList("landscape.paperorientation", 1, "", {});
    AddFile("unticked.ps");
    list.SetText(8, kColumnSelected, "No");
    AddFile("last.prn");
    list.SetText(5, kColumnSelected, "Yes");
    ASSERT_EQ(list.RowCount(), 10);

    const RunSummary summary = run.OnButtonPrint();
    const std::string noItem = "Print Error";
    EXPECT_EQ(Statuses(),
              (TextList{"Done", "Done", "Error - this kind of file can't be printed on this print system yet",
                        "No File.", "Empty File", noItem, "Unable to download web file", "Set Orientation",
                        "Ready", "Done"}));
    EXPECT_EQ(Printed(), (TextList{"raw.ps", "text.txt", "last.prn"}));
    EXPECT_EQ(spooler.CountCalls("PrintDocument"), 1);
    EXPECT_EQ(spooler.Sent().at(0).bytes, "raw bytes");
    EXPECT_EQ(summary.end, RunSummary::End::kFinished);
    EXPECT_EQ(summary.done, 4);
    EXPECT_EQ(summary.failed, 5);
    EXPECT_EQ(summary.skipped, 0);
    EXPECT_EQ(recorder.outcomes.size(), 10U);
    EXPECT_EQ(recorder.outcomes.at(8), RowOutcome::kNotSelected);
    EXPECT_EQ(recorder.startedRows, (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 9}));
    EXPECT_EQ(SplitAt(ErrorRecords(), '\n').size(), 5U + 1);
}

TEST_F(PrintRunTest, RowsThatCameInUntickedForTheirFileCountAsFailed) {
    AddFile("a.ps");
    AddFile("empty.ps", "");
    list.InsertFileIntoList(folder.PathOf("missing.ps"), 1, "", {});
    ASSERT_EQ(Text(1, kColumnSelected), "No");
    ASSERT_EQ(Text(2, kColumnSelected), "No");
    run.SetCopies(2);
    const RunSummary summary = run.OnButtonPrint();
    EXPECT_EQ(Statuses(), (TextList{"Done", "Empty File", "No File."}));
    EXPECT_EQ(summary.done, 1);
    EXPECT_EQ(summary.failed, 2);
}

TEST_F(PrintRunTest, FoldersAreNoDocumentsAndVanishedFilesCostTheirOwnRow) {
    const std::string turned = AddFile("turned.ps");
    AddFile("a.ps");
    const std::string gone = AddFile("gone.ps");
    AddFile("b.ps");
    std::filesystem::remove(turned);
    std::filesystem::create_directory(turned);
    InPump(AtRow(1), [&] { std::filesystem::remove(gone); });
    run.OnButtonPrint();
    EXPECT_EQ(Statuses(), (TextList{"Error - Can't Print - this is a folder", "Done", "No File.", "Done"}));
    EXPECT_EQ(Printed(), (TextList{"a.ps", "b.ps"}));
}

TEST_F(PrintRunTest, FilesThatCannotBeReadAreSkippedAndRecorded) {
    options.m_errorLog = true;
    AddFiles({"secret.ps", "pipe.ps", "a.ps"});
    const RunSummary summary = run.OnButtonPrint();
    EXPECT_EQ(Statuses(),
              (TextList{"Skipped", "Error - Can't Print - this is a device or a pipe, not a file", "Done"}));
    EXPECT_EQ(summary.skipped, 1);
    EXPECT_EQ(summary.failed, 1);
    EXPECT_TRUE(Contains(ErrorRecords(), "Can't Print - the file can't be read"));
}

TEST_F(PrintRunTest, AFileThatBreaksOffIsNotPrintedHalf) {
    options.m_errorLog = true;
    AddFile("a.ps", std::string(3 * kChunk, 'x'));
    AddFile("b.ps");
    files.FailOnce(FaultyFiles::Call::kReadAt, FileResult::kFailed, 2);
    const std::string error = "Can't Print - the file could not be read whole, or changed meanwhile";
    run.OnButtonPrint();
    EXPECT_EQ(Statuses(), (TextList{"Error - " + error, "Done"}));
    EXPECT_EQ(Printed(), TextList{"b.ps"});
    EXPECT_TRUE(Contains(ErrorRecords(), error));

    options.m_onErrorPrintOneMoreTime = true;
    files.FailOnce(FaultyFiles::Call::kReadAt, FileResult::kFailed, 2);
    run.OnButtonPrint();
    EXPECT_EQ(Statuses(), (TextList{"Done", "Done"}));
    EXPECT_EQ(spooler.Sent().back().name, list.Text(1, kColumnFilename));
}

TEST_F(PrintRunTest, AFileThatCannotBeOpenedOnceTheJobIsStartedIsNoSuccess) {
    AddFile("a.ps");
    files.FailAlways(FaultyFiles::Call::kOpenForReading, FileResult::kBusy);
    EXPECT_EQ(run.OnButtonPrint().failed, 1);
    EXPECT_TRUE(StartsWith(Statuses().at(0), "Error - Can't Print - the file could not be read whole"));
    EXPECT_EQ(spooler.Sent().at(0).bytes, "");
}

TEST_F(PrintRunTest, ThePrintDirectColumnSendsAnyFileRaw) {
    for (const char* text : {"Yes", "1", "TRUE", "on", "No", "0", ""}) {
        AddFile("letter.doc");
        list.SetText(list.RowCount() - 1, kColumnPrintDirect, text);
    }
    run.OnButtonPrint();
    const std::string noWay = "Error - this kind of file can't be printed on this print system yet";
    EXPECT_EQ(Statuses(), (TextList{"Done", "Done", "Done", "Done", noWay, noWay, noWay}));
}

TEST_F(PrintRunTest, SendsARawFileAsOftenAsTheRowSays) {
    ItemTexts twice;
    twice.processingParameters = "-r2";
    twice.addonParameters = "-r5";
    ItemTexts thrice;
    thrice.extraOptions = "-r3";
    AddFile("a.ps", "a", twice);
    AddFile("b.ps", "b", thrice);
    const RunSummary summary = run.OnButtonPrint();
    EXPECT_EQ(Printed(), (TextList{"a.ps", "a.ps", "b.ps", "b.ps", "b.ps"}));
    EXPECT_EQ(summary.done, 2);
}

TEST_F(PrintRunTest, APdfWithoutPagesIsPassedOverWhenTheOptionsSaySo) {
    AddFile("a.pdf", "%PDF");
    AddFile("b.PDF", "%PDF");
    const auto noteZeroPages = [&] {
        list.SetText(0, kColumnPages, "00000");
        list.SetText(1, kColumnPages, "Unknown");
    };
    InPump(AtRow(0), noteZeroPages);
    options.m_dontPrintPdfZero = true;
    const RunSummary summary = run.OnButtonPrint();
    EXPECT_EQ(Statuses(), (TextList{"Skipped", "Done"}));
    EXPECT_EQ(summary.skipped, 1);

    options.m_noPdfPages = true;  // nothing was counted
    InPump(AtRow(0), noteZeroPages);
    run.OnButtonPrint();
    EXPECT_EQ(Statuses(), (TextList{"Done", "Done"}));
}

TEST_F(PrintRunTest, WhatTheSpoolerRefusesDidNotSpool) {
    options.m_errorLog = true;
    AddFiles({"a.ps", "b.txt"});
    const auto expectNothingSpooled = [&](const char* what) {
        spooler.FailPrintDocument(3);
        const RunSummary summary = run.OnButtonPrint();
        EXPECT_EQ(Statuses(), (TextList{kDidNotSpool, kDidNotSpool})) << what;
        EXPECT_EQ(summary.failed, 2) << what;
        EXPECT_TRUE(Printed().empty()) << what;
        spooler.StopFailing();
    };
    spooler.FailOpening(1801);
    expectNothingSpooled("opening");
    spooler.FailStart(5);
    expectNothingSpooled("starting");
    spooler.FailFinish(28);
    expectNothingSpooled("finishing");
    EXPECT_TRUE(
        Contains(ErrorRecords(), "did not spool: the printer can't be opened: error 1801 (error 1801)"));
    EXPECT_TRUE(Contains(ErrorRecords(), "did not spool: the document can't be started: error 5 (error 5)"));
    EXPECT_TRUE(Contains(ErrorRecords(),
                         "did not spool: the spooler did not keep the document: error 28 (error 28)"));
    EXPECT_TRUE(
        Contains(ErrorRecords(), "did not spool: the spooler did not take the document: error 3 (error 3)"));
    EXPECT_EQ(SplitAt(ErrorRecords(), '\n').size(), 6U + 1);
}

TEST(PrintRunOnForgivingSpooler, ARefusedChunkLeavesTheRowPrintedButIsRecorded) {
    RunStage<ForgivingSpooler> stage(1);
    stage.options.m_errorLog = true;
    stage.options.m_onErrorPrintOneMoreTime = true;
    const std::string path = stage.AddFile("a.ps", std::string(70'000, 'x'));
    const RunSummary summary = stage.run.OnButtonPrint();
    EXPECT_EQ(stage.Statuses(), TextList{"Done"});
    EXPECT_EQ(summary.done, 1);
    EXPECT_EQ(stage.Printed().size(), 1U);  // no second attempt
    EXPECT_TRUE(Contains(stage.ErrorRecords(), path));
    EXPECT_TRUE(Contains(stage.ErrorRecords(), "1 parts of the file did not reach the spooler (error 28)"));
}

TEST_F(PrintRunTest, AnErrorLogThatCannotBeWrittenIsReportedOnce) {
    options.m_errorLog = true;
    std::filesystem::create_directory(folder.PathOf("error.log"));
    AddFiles({"a.doc", "b.doc", "c.ps"});
    run.OnButtonPrint();
    EXPECT_EQ(Printed(), TextList{"c.ps"});
    EXPECT_EQ(prompts.boxes,
              (std::vector<FakePrompts::Box>{{"Log File Error", "Can't open error.log for writing"}}));
}

TEST_F(PrintRunTest, AFailedRowIsTriedOnceMore) {
    options.m_onErrorPrintOneMoreTime = true;
    AddFiles({"a.ps", "b.doc"});
    TextList shown;
    spooler.FailFinish(9);
    recorder.onProgress = [&](const RunProgress& progress) {
        if (progress.row != 0) return;
        shown.push_back(Text(0, kColumnStatus));
        if (shown.back() == "Retrying...") spooler.StopFailing();
    };
    const RunSummary summary = run.OnButtonPrint();
    EXPECT_EQ(summary.done, 1);
    EXPECT_EQ(Printed(), TextList{"a.ps"});
    EXPECT_EQ(TextList(shown.begin(), shown.begin() + 2), (TextList{"Printing file:", "Spooling"}));
    EXPECT_EQ(std::count(shown.begin(), shown.end(), "Retrying..."), 1);

    spooler.FailFinish(9);
    recorder.onProgress = nullptr;
    const int before = spooler.CountCalls("StartDocument");
    EXPECT_EQ(run.OnButtonPrint().failed, 2);
    EXPECT_EQ(spooler.CountCalls("StartDocument") - before, 2);
}

TEST_F(PrintRunTest, PdfsAreNotTriedAgainWhenTheOptionsSaySo) {
    options.m_onErrorPrintOneMoreTime = true;
    AddFiles({"a.pdf"});
    spooler.FailPrintDocument(9);
    run.OnButtonPrint();
    EXPECT_EQ(spooler.CountCalls("PrintDocument"), 2);
    options.m_dontRetryPdf = true;
    run.OnButtonPrint();
    EXPECT_EQ(spooler.CountCalls("PrintDocument"), 3);
}

TEST_F(PrintRunTest, CopiesWalkTheWholeListAgain) {
    AddFiles({"a.ps", "b.ps"});
    options.m_printCopies = 2;
    options.m_printCopiesRepeat = 2;
    EXPECT_EQ(run.OnButtonPrint().done, 2);
    EXPECT_EQ(Printed(), (TextList{"a.ps", "b.ps", "a.ps", "b.ps", "a.ps", "b.ps", "a.ps", "b.ps"}));
    EXPECT_EQ(recorder.started, (std::vector<std::pair<int, int>>{{2, 4}}));
    EXPECT_EQ(prompts.statusTexts.back(), "File: 2 of 2, Copy: 4/4");
    run.SetCopies(1);
    options.m_printCopiesRepeat = 0;
    run.OnButtonPrint();
    EXPECT_EQ(Printed().size(), 10U);
}

TEST_F(PrintRunTest, AFailureInOneCopyStaysWithItsRow) {
    AddFiles({"a.ps", "b.ps"});
    run.SetCopies(3);
    spooler.FailFinish(9);
    recorder.onFinished = [&](const RunProgress&) { spooler.StopFailing(); };
    const RunSummary summary = run.OnButtonPrint();
    EXPECT_EQ(Statuses(), (TextList{kDidNotSpool, "Done"}));
    EXPECT_EQ(summary.done, 1);
    EXPECT_EQ(summary.failed, 1);
    EXPECT_EQ(Printed().size(), 5U);
}

TEST_F(PrintRunTest, PausesInVirtualTime) {
    AddFiles({"a.ps", "b.ps", "c.ps"});
    list.SetText(2, kColumnSelected, "No");
    options.m_pauseBefore = 2;
    options.m_pauseAfter = 3;
    TextList rowTexts;
    recorder.onProgress = [&](const RunProgress&) { rowTexts.push_back(Text(0, kColumnStatus)); };
    const long long start = loop.MonotonicMilliseconds();
    const RunSummary summary = run.OnButtonPrint();
    EXPECT_EQ(loop.MonotonicMilliseconds() - start, 2000 + 3000 + 2000);  // none after the last
    EXPECT_DOUBLE_EQ(summary.seconds, 7.0);
    EXPECT_EQ(TextList(prompts.statusTexts.begin() + 1, prompts.statusTexts.begin() + 7),
              (TextList{"File: 1 of 3, Copy: 1/1", "Pausing: 2", "Pausing: 1", "Pausing: 3", "Pausing: 2",
                        "Pausing: 1"}));
    EXPECT_EQ(TextList(rowTexts.begin(), rowTexts.begin() + 3),
              (TextList{"Pausing: 2", "Pausing: 1", "Printing file:"}));
    EXPECT_EQ(Statuses(), (TextList{"Done", "Done", "Ready"}));
}

TEST_F(PrintRunTest, TellsPaceAndTimeLeft) {
    AddFiles({"a.ps", "b.ps", "c.ps", "d.ps"});
    std::vector<std::int64_t> secondsLeft;
    loop.AddPumpTask([&] {
        if (run.IsRunning()) loop.Advance(10'000);
        return false;
    });
    recorder.onFinished = [&](const RunProgress& progress) {
        secondsLeft.push_back(progress.secondsLeft);
        EXPECT_NEAR(progress.documentsPerMinute, 6.0, 0.01);
    };
    run.OnButtonPrint();
    EXPECT_EQ(secondsLeft, (std::vector<std::int64_t>{30, 20, 10, 0}));
}

TEST_F(PrintRunTest, StopLeavesTheRowsThatWereNotReached) {
    AddFiles({"a.ps", "b.ps", "c.ps"});
    run.SetCopies(2);
    InPump(AtRow(1), [&] { run.Stop(); });
    const RunSummary summary = run.OnButtonPrint();
    EXPECT_EQ(summary.end, RunSummary::End::kStopped);
    EXPECT_EQ(Statuses(), (TextList{"Done, 1 of 2 copies", "Ready", "Ready"}));
    EXPECT_EQ(summary.done, 1);
    EXPECT_EQ(prompts.statusTexts.back(), "Printing stopped && Monitor stopped");
    EXPECT_EQ(list.CurrentRow(), -1);
    EXPECT_EQ(run.OnButtonPrint().end, RunSummary::End::kFinished);  // the next run starts afresh
}

TEST_F(PrintRunTest, StopInThePauseBeforeARowLeavesItReady) {
    AddFiles({"a.ps", "b.ps"});
    options.m_pauseBefore = 100;
    loop.StartTimer(77, 101'500, [&] { run.Stop(); });
    const long long start = loop.MonotonicMilliseconds();
    EXPECT_EQ(run.OnButtonPrint().end, RunSummary::End::kStopped);
    EXPECT_EQ(Statuses(), (TextList{"Done", "Ready"}));
    EXPECT_LE(loop.MonotonicMilliseconds() - start, 102'000);
}

TEST_F(PrintRunTest, StopInThePauseAfterARowLeavesItDone) {
    AddFiles({"a.ps", "b.ps"});
    options.m_pauseAfter = 100;
    loop.StartTimer(77, 1'500, [&] { run.Stop(); });
    EXPECT_EQ(run.OnButtonPrint().end, RunSummary::End::kStopped);
    EXPECT_EQ(Statuses(), (TextList{"Done", "Ready"}));
}

TEST_F(PrintRunTest, StopInTheMiddleOfARawFileDropsItsJob) {
    AddFile("a.ps", std::string(5 * kChunk, 'x'));
    AddFile("b.ps");
    recorder.onProgress = [&](const RunProgress& progress) {
        if (progress.bytesDone == std::int64_t{2 * kChunk}) run.Stop();
    };
    const RunSummary summary = run.OnButtonPrint();
    EXPECT_EQ(summary.end, RunSummary::End::kStopped);
    EXPECT_EQ(summary.failed, 1);
    EXPECT_EQ(Statuses(), (TextList{"Error - Stopped, nothing was printed", "Ready"}));
    EXPECT_TRUE(Printed().empty());
    EXPECT_EQ(spooler.CountCalls("WriteChunk"), 2);
    EXPECT_EQ(recorder.last.bytesTotal, std::int64_t{5 * kChunk});
}

TEST_F(PrintRunTest, StopBetweenRepeatsSaysHowManyCameOut) {
    options.m_errorLog = true;
    ItemTexts often;
    often.extraOptions = "-r1000";
    AddFile("a.ps", "a", often);
    InPump([&] { return spooler.Sent().size() == 3; }, [&] { run.Stop(); });
    EXPECT_EQ(run.OnButtonPrint().end, RunSummary::End::kStopped);
    EXPECT_EQ(Statuses(), TextList{"Error - Stopped, printed 3 of 1000 times"});
    EXPECT_EQ(Printed().size(), 3U);
    EXPECT_TRUE(Contains(folder.Read(kPrintLogName), "a.ps"));
    EXPECT_TRUE(Contains(ErrorRecords(), "printed 3 of 1000 times"));
}

TEST_F(PrintRunTest, StopOutsideARunStopsNothing) {
    AddFile("a.ps");
    run.Stop();
    EXPECT_EQ(run.OnButtonPrint().end, RunSummary::End::kFinished);
}

TEST_F(PrintRunTest, ARunInsideARunIsRefused) {
    AddFiles({"a.ps", "b.ps"});
    RunSummary inner;
    InPump(AtRow(1), [&] { inner = run.OnButtonPrint(); });
    EXPECT_EQ(run.OnButtonPrint().end, RunSummary::End::kFinished);
    EXPECT_EQ(inner.end, RunSummary::End::kRefused);
    EXPECT_EQ(Printed(), (TextList{"a.ps", "b.ps"}));
}

TEST_F(PrintRunTest, RowsThatLeaveDuringAPumpConfuseNothing) {
    AddFiles({"a.ps", "b.ps", "c.ps", "c.ps", "d.ps"});
    InPump(AtRow(2), [&] {  // the first c, two rows above it and itself
        list.RemoveRow(2);
        list.RemoveRow(0);
        list.RemoveRow(0);
    });
    const RunSummary summary = run.OnButtonPrint();
    EXPECT_EQ(Printed(), (TextList{"a.ps", "b.ps", "c.ps", "d.ps"}));
    EXPECT_EQ(Statuses(), (TextList{"Done", "Done"}));
    EXPECT_EQ(summary.done, 4);
}

TEST_F(PrintRunTest, RowsThatLeaveWhileAFileIsSentGetNoStatusOfAnother) {
    AddFile("a.ps", std::string(40 * kChunk, 'x'));
    AddFiles({"b.doc", "c.ps"});
    InPump([&] { return recorder.last.bytesDone > 0; }, [&] { list.RemoveRow(0); });
    const RunSummary summary = run.OnButtonPrint();
    EXPECT_EQ(Printed(), (TextList{"a.ps", "c.ps"}));
    EXPECT_EQ(Statuses().at(1), "Done");
    EXPECT_TRUE(StartsWith(Statuses().at(0), "Error - this kind of file"));
    EXPECT_EQ(summary.done, 2);
    EXPECT_EQ(summary.failed, 1);
}

TEST_F(PrintRunTest, AListClearedInTheMiddleEndsTheRun) {
    AddFiles({"a.ps", "b.ps"});
    options.m_pauseBefore = 1;
    InPump(AtRow(1), [&] { list.Clear(); });
    EXPECT_EQ(run.OnButtonPrint().end, RunSummary::End::kFinished);
    EXPECT_EQ(Printed(), TextList{"a.ps"});
}

TEST_F(PrintRunTest, RowsThatComeInDuringARunGetTheirTurnOnce) {
    AddFiles({"a.ps", "b.ps"});
    InPump(AtRow(1), [&] {
        list.SetPendingPosition(0);
        AddFile("above.ps");
        AddFile("below.ps");
    });
    run.OnButtonPrint();
    EXPECT_EQ(Printed(), (TextList{"a.ps", "b.ps", "below.ps", "above.ps"}));
}

TEST_F(PrintRunTest, DoneRowsLeaveTheListAfterTheLastCopy) {
    options.m_removeItem = true;
    AddFiles({"a.ps", "b.doc", "c.ps", "unticked.ps"});
    list.SetText(3, kColumnSelected, "No");
    run.SetCopies(2);
    const RunSummary summary = run.OnButtonPrint();
    EXPECT_EQ(Printed(), (TextList{"a.ps", "c.ps", "a.ps", "c.ps"}));
    EXPECT_EQ(summary.done, 2);
    ASSERT_EQ(list.RowCount(), 2);
    EXPECT_TRUE(EndsWith(Text(0, kColumnFilename), "b.doc"));
    EXPECT_TRUE(EndsWith(Text(1, kColumnFilename), "unticked.ps"));
}

TEST_F(PrintRunTest, AStoppedRunRemovesOnlyRowsWithAllTheirCopies) {
    options.m_removeItem = true;
    AddFiles({"a.ps", "b.ps"});
    run.SetCopies(2);
    InPump([&] { return Printed().size() == 3; }, [&] { run.Stop(); });
    run.OnButtonPrint();
    ASSERT_EQ(list.RowCount(), 1);
    EXPECT_TRUE(EndsWith(Text(0, kColumnFilename), "b.ps"));
}

}  // namespace
}  // namespace quirepress
