#include <gmock/gmock.h>

#include <filesystem>

#include "fakes/small_pdf.h"

#include "unit/core/print_run_fixture.h"

namespace quirepress {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class PrintRunPrintersTest : public PrintRunTest {
protected:
    // "a.ps>Laser" for each document that the spooler keeps, in order.
    std::vector<std::string> Sent() const {
        std::vector<std::string> sent;
        const std::vector<std::string> titles = Printed();
        std::size_t i = 0;
        for (const SentDocument& document : spooler.Sent())
            if (document.finished) sent.push_back(titles[i++] + ">" + document.printer);
        return sent;
    }
    void AddItem(std::string_view path) { list.InsertFileIntoList(path, 1, "", {}); }
};

TEST_F(PrintRunPrintersTest, CommandItemsChangeThePrinterForTheRowsBelowAndTheRunPutsItBack) {
    AddFile("a.ps");
    AddItem("Plotter.printer");
    AddFile("b.ps");
    AddItem("12.papercopies");
    AddItem("Nowhere.printer");
    AddItem("x.papersize");
    AddFile("c.ps");
    const RunSummary summary = run.OnButtonPrint();
    EXPECT_THAT(Statuses(),
                ElementsAre("Done", "Printer set to: Plotter", "Done", "Set Copies",
                            "Error - Printer not set", "Error Size Not Set",
                            "Done, sent 1 of 12 times: copies are not set for printer-ready files, -r12 is"));
    EXPECT_THAT(Sent(), ElementsAre("a.ps>Laser", "b.ps>Plotter", "c.ps>Plotter"));
    EXPECT_EQ(summary.failed, 2);
    EXPECT_EQ(spooler.DefaultPrinter(), "Laser");
    run.OnButtonPrint();
    EXPECT_EQ(Sent().at(3), "a.ps>Laser");
}

TEST_F(PrintRunPrintersTest, RowsThatNameBalancedPrintersGoToThoseWithRoom) {
    spooler.KeepJobs(true);
    balanceOptions.m_printers[0] = {"Laser", "", 2};
    balanceOptions.m_printers[1] = {"Plotter", "", 0};
    AddFiles({"a.ps", "b.ps", "c.ps", "d.ps"});
    ItemTexts onlyFirst;
    onlyFirst.balancedPrinters = "1";
    AddFile("e.ps", "bytes", onlyFirst);
    ItemTexts nowhere;
    nowhere.balancedPrinters = "7,Cellar";
    AddFile("f.ps", "bytes", nowhere);
    run.UseBalancing(true);
    run.OnButtonPrint();
    EXPECT_EQ(Text(5, kColumnStatus), "Error - Can't Print - no such balanced printer");
    EXPECT_THAT(Sent(), ElementsAre("a.ps>Laser", "b.ps>Laser", "c.ps>Plotter", "d.ps>Plotter", "e.ps>Laser"))
        << "where none has room, one that the row names";
    EXPECT_EQ(Text(2, kColumnBalancedPrinterUsed), "Plotter");
    EXPECT_EQ(spooler.DefaultPrinter(), "Laser") << "put back";
}

TEST_F(PrintRunPrintersTest, ARowsPriorityGoesBeforeThatOfTheOptions) {
    options.m_printPriority = 40;
    for (const char* priority : {"7", "", "100", "x", "99"}) {
        ItemTexts texts;
        texts.priority = priority;
        AddFile(std::string("a") + priority + ".ps", "bytes", texts);
    }
    run.OnButtonPrint();
    std::vector<int> priorities;
    for (const SentDocument& sent : spooler.Sent()) priorities.push_back(sent.priority);
    EXPECT_THAT(priorities, ElementsAre(7, 40, 40, 40, 99));
}

TEST_F(PrintRunPrintersTest, ABalancedPrinterIsThatOfItsRowOnly) {
    ASSERT_TRUE(selection.ApplyItem("2.papercopies").isApplied);
    ASSERT_EQ(selection.SavePrinterSettings(folder.PathOf("two.prs")), 0);
    balanceOptions.m_printers[0] = {"Laser", folder.PathOf("two.prs"), 1};
    balanceOptions.m_printers[1] = {"Plotter", "", 0};
    spooler.KeepJobs(true);
    AddFiles({"a.pdf", "b.pdf"});
    run.UseBalancing(true);
    run.OnButtonPrint();
    EXPECT_THAT(Sent(), ElementsAre("a.pdf>Laser", "b.pdf>Plotter"));
    EXPECT_EQ(spooler.Sent().at(0).ticket.copies, 2);
    EXPECT_EQ(spooler.Sent().at(1).ticket.copies, JobTicket().copies)
        << "not those of the other's settings file";

    // A row that names one does not take those below along.
    list.Clear();
    ItemTexts second;
    second.balancedPrinters = "2";
    AddFile("c.ps", "bytes", second);
    AddFile("d.ps");
    // What goes by the system's default printer finds the list's own.
    AddFile("e.ps", "bytes", second);
    AddItem("2.papercopies");
    std::vector<std::string> defaults;
    recorder.onFinished = [&](const RunProgress&) { defaults.push_back(spooler.DefaultPrinter()); };
    run.UseBalancing(false);
    run.OnButtonPrint();
    EXPECT_EQ(Sent().at(2), "c.ps>Plotter");
    EXPECT_EQ(Sent().at(3), "d.ps>Laser");
    EXPECT_THAT(defaults, ElementsAre("Plotter", "Laser", "Plotter", "Laser"));
}

TEST_F(PrintRunPrintersTest, EveryJobOfARowCountsForTheNextOne) {
    spooler.KeepJobs(true);
    spooler.HideJobs(true);
    balanceOptions.m_printers[0] = {"Laser", "", 3};
    balanceOptions.m_printers[1] = {"Plotter", "", 0};
    ItemTexts thrice;
    thrice.extraOptions = "-r3";
    AddFile("a.ps", "bytes", thrice);
    AddFile("b.ps");
    run.UseBalancing(true);
    run.OnButtonPrint();
    EXPECT_THAT(Sent(), ElementsAre("a.ps>Laser", "a.ps>Laser", "a.ps>Laser", "b.ps>Plotter"));
}

TEST_F(PrintRunPrintersTest, WaitsForAnEmptyQueue) {
    options.m_waitSpoolClearBeforePrint = true;
    JobInfo earlier;
    earlier.document = "earlier";
    const std::int64_t id = spooler.PutJob("Laser", earlier);
    earlier.isOfUnknownOutcome = true;
    spooler.PutJob("Laser", earlier);
    AddFile("a.ps");
    InPump([&] { return loop.MonotonicMilliseconds() > 60'000; },
           [&] {
               EXPECT_TRUE(spooler.Sent().empty());
               EXPECT_EQ(prompts.statusTexts.back(), "Waiting for 1 job(s) on printer:Laser to clear");
               spooler.TakeJobAway(id);
           });
    EXPECT_EQ(run.OnButtonPrint().done, 1);
    EXPECT_THAT(recorder.waits, ElementsAre("Waiting for 1 job(s) on printer:Laser to clear")) << "once";
}

TEST_F(PrintRunPrintersTest, PdfPagesGoToTheColourPrinterAndTheOtherInTheirOrder) {
    colorOptions.m_split = true;
    colorOptions.m_monoPrinter = "Plotter";
    pdfs.colors = "mccm";
    AddFile("a.pdf", "%PDF");
    ItemTexts range;
    range.processingParameters = "-s2|-e3";
    AddFile("b.pdf", "%PDF", range);
    const RunSummary summary = run.OnButtonPrint();
    EXPECT_EQ(summary.done, 2);
    EXPECT_THAT(summary.printers, ElementsAre("Laser", "Plotter"));
    EXPECT_THAT(folder.Read(kPrintLogName), HasSubstr("\tLaser, Plotter "));
    EXPECT_THAT(Sent(), ElementsAre("a.pdf>Plotter", "a.pdf>Laser", "a.pdf>Plotter", "b.pdf>Plotter",
                                    "b.pdf>Laser", "b.pdf>Plotter"));
    EXPECT_EQ(spooler.Sent().at(1).bytes, "2-3");
    EXPECT_FALSE(std::filesystem::exists(folder.PathOf("Temp/Pages1")));

    colorOptions.m_split = false;
    run.OnButtonPrint();
    EXPECT_EQ(spooler.Sent().at(6).bytes, "%PDF");
    EXPECT_EQ(spooler.Sent().at(7).bytes, "2-3");

    // The copies of one printer's settings are not those of the document.
    colorOptions.m_split = true;
    ASSERT_TRUE(selection.ApplyItem("2.papercopies").isApplied);
    colorOptions.m_colorPrs = folder.PathOf("two.prs");
    ASSERT_EQ(selection.SavePrinterSettings(colorOptions.m_colorPrs), 0);
    list.Clear();
    AddItem("2.papercopies");
    AddFile("a.pdf", "%PDF", range);
    run.OnButtonPrint();
    for (std::size_t at = 8; at < spooler.Sent().size(); ++at)
        EXPECT_EQ(spooler.Sent()[at].ticket.copies, JobTicket().copies) << at;
    EXPECT_EQ(Sent().size(), 8U + 2 * 3) << "sets";
    spooler.ForgetSent();
    colorOptions.m_colorPrs.clear();
    list.RemoveRow(0);

    options.m_onErrorPrintOneMoreTime = true;
    pdfs.colors = "cm";
    colorOptions.m_monoPrinter = "Nowhere";
    run.OnButtonPrint();
    EXPECT_EQ(Text(0, kColumnStatus), "Error - Printed to page 1 only");
    EXPECT_EQ(Sent().size(), 1U) << "what came out is not printed again";
    pdfs.colors.clear();
    run.OnButtonPrint();
    EXPECT_THAT(Text(0, kColumnStatus), HasSubstr("Error - Can't Print - "));
}

// What a row asks for comes out, or nothing and the row says why.
TEST_F(PrintRunPrintersTest, PagesAreChosenOrTheRowIsRefused) {
    options.m_generateReports = true;
    const std::string impossible = "Error - Can't Print - no document has such pages: ";
    const std::string unclear = "Error - Can't Print - which pages are meant is unclear: ";
    const struct {
        const char* name;
        const char* parameters;
        const char* extra;
        std::string status;
        const char* sent;  // the pages; "": nothing
        const char* counted;
    } kRows[] = {
        {"open.pdf", "-s2", "", "Done", "2-0", ""},
        {"begin.pdf", "-e3", "", "Done", "1-3", "3"},
        {"extra.pdf", "-c1", "-r1 -s2|-e5", "Done", "2-5", "4"},
        {"own.pdf", "-s4|-e4", "-s1|-e2", "Done", "4-4", "1"},
        {"string.pdf", "-c1|-S2|-E3|-D0|-sText|-p1", "", "Done", "2-3", "2"},
        {"all.pdf", "-c1|-S0|-E0|-D0|-s", "-silent", "Done", "%PDF", ""},
        {"turned.pdf", "-s5|-e2", "", impossible + "\"-s5|-e2\"", "", ""},
        {"zero.pdf", "-s0|-e2", "", impossible + "\"-s0|-e2\"", "", ""},
        {"apart.pdf", "-s 3|-e 3", "", "Done", "3-3", "1"},
        {"words.pdf", "", "-s2-5", unclear + "\"-s2-5\"", "", ""},
        {"none.pdf", "-s", "", unclear + "\"-s\"", "", ""},
        {"raw.ps", "-s1|-e1", "",
         "Error - Can't Print - pages can't be chosen of a file that goes to the printer as it is", "", ""}};
    for (const auto& row : kRows) {
        ItemTexts texts;
        texts.processingParameters = row.parameters;
        texts.extraOptions = row.extra;
        AddFile(row.name, "%PDF", texts);
    }
    list.SetText(1, kColumnPrintDirect, "Yes");
    list.InsertFileIntoList(folder.Write("first.pro", "-s1|-e1"), 1, "", {});
    AddFile("below.pdf", "%PDF");
    options.m_noPdfPages = true;
    run.OnButtonPrint();
    std::size_t sent = 0;
    for (int i = 0; i < static_cast<int>(std::size(kRows)); ++i) {
        EXPECT_EQ(Text(i, kColumnStatus), kRows[i].status) << kRows[i].name;
        if (*kRows[i].sent == '\0') continue;
        EXPECT_EQ(spooler.Sent().at(sent).bytes, kRows[i].sent) << kRows[i].name;
        EXPECT_THAT(spooler.Sent().at(sent++).name, testing::EndsWith(kRows[i].name));
        EXPECT_THAT(ReportText(".csv"),
                    HasSubstr(std::string(kRows[i].name) + ",0.0," + kRows[i].counted + ",Laser"));
    }
    EXPECT_EQ(spooler.Sent().at(sent).bytes, "1-1") << "what an item above has set";
    EXPECT_EQ(spooler.Sent().size(), sent + 1);

    list.Clear();
    pdfs.extracted = PdfResult::kNoSuchPages;
    ItemTexts beyond;
    beyond.processingParameters = "-s7|-e9";
    AddFile("beyond.pdf", "%PDF", beyond);
    run.OnButtonPrint();
    EXPECT_EQ(Text(0, kColumnStatus), "Error - Can't Print - the file doesn't have these pages: \"-s7|-e9\"");
    EXPECT_EQ(spooler.Sent().size(), sent + 1);
}

TEST_F(PrintRunPrintersTest, ProtectedFilesAreOpenedOrRefused) {
    const std::string encrypted =
        "%PDF-1.4\n1 0 obj\n<< /Type /Catalog /Pages 2 0 R >>\nendobj\nxref\n0 1\n0000000000 65535 f \n"
        "trailer\n<< /Root 1 0 R /Size 1 /Encrypt 3 0 R >>\nstartxref\n58\n%%EOF\n";
    AddFile("a.pdf", encrypted);
    run.OnButtonPrint();
    EXPECT_EQ(spooler.Sent().at(0).bytes, encrypted) << "only its owner needs a password";
    pdfs.opens = false;
    run.OnButtonPrint();
    EXPECT_EQ(spooler.Sent().at(1).bytes, "1-0") << "written anew, without a password";
    for (const PdfResult result : {PdfResult::kWrongPassword, PdfResult::kUnreadable, PdfResult::kGaveUp}) {
        pdfs.extracted = result;
        run.OnButtonPrint();
        EXPECT_EQ(Text(0, kColumnStatus), std::string("Error - Can't Print - ") + DescribePdfResult(result));
    }
    list.Clear();
    options.m_errorLog = true;
    AddFile("damaged.pdf", "%PDF-1.4 x");
    pdfs.extracted = PdfResult::kUnreadable;
    run.OnButtonPrint();
    EXPECT_EQ(spooler.Sent().at(2).bytes, "%PDF-1.4 x") << "others may know better";
    const std::string cutOff = "the file is cut off: the end of the PDF is missing";
    EXPECT_EQ(Text(0, kColumnStatus), "Done");
    EXPECT_THAT(folder.Read("error.log"), HasSubstr("Printed, but may not be whole: " + cutOff));
    list.SetText(0, kColumnProcessingParameters, "-s1");
    run.OnButtonPrint();
    EXPECT_EQ(Text(0, kColumnStatus), "Error - Can't Print - " + cutOff);
    list.Clear();
    AddFile("text.pdf", "Dear reader");
    run.OnButtonPrint();
    EXPECT_EQ(Text(0, kColumnStatus), "Error - Can't Print - the file is no PDF, whatever its name says");
    EXPECT_EQ(spooler.Sent().size(), 3U);
    list.SetText(0, kColumnPrintDirect, "Yes");
    run.OnButtonPrint();
    EXPECT_EQ(Text(0, kColumnStatus), "Done") << "as it is";
}

TEST_F(PrintRunPrintersTest, FormsDataArePrintedAsTheFilledForm) {
    debugLog.Open(files, folder.PathOf("qpr.log"));
    const std::string data = AddFile("order.xfdf", "<xfdf/>");
    pdfs.filled.unknownFields = {"total"};
    EXPECT_EQ(run.OnButtonPrint().done, 1);
    EXPECT_EQ(spooler.Sent().at(0).bytes, "filled by order.xfdf");
    EXPECT_EQ(spooler.Sent().at(0).name, data);
    EXPECT_THAT(DebugLines(), HasSubstr("found FDF / XDP\r\nForms - Pre processing file: " + data +
                                        "\r\nForms - the form has no field: total\r\n"));
    pdfs.filled.flaw = "the form is missing: \"order.pdf\"";
    EXPECT_EQ(run.OnButtonPrint().failed, 1);
    EXPECT_EQ(Text(0, kColumnStatus), "Error - Can't Print - the form is missing: \"order.pdf\"");
    EXPECT_EQ(spooler.Sent().size(), 1U);
    EXPECT_FALSE(std::filesystem::exists(folder.PathOf("Temp/Pages1")));
}

// It comes while the PDF library is at work, which then gives up.
TEST_F(PrintRunPrintersTest, AStopTakesADocumentBackThatIsBeingPrepared) {
    const auto isTakenBack = [this](const char* name, const char* parameters) {
        list.Clear();
        ItemTexts texts;
        texts.processingParameters = parameters;
        AddFile(name, "%PDF", texts);
        EXPECT_EQ(run.OnButtonPrint().end, RunSummary::End::kStopped) << name;
        EXPECT_EQ(Text(0, kColumnStatus), "Error - Stopped, nothing was printed") << name;
        EXPECT_TRUE(spooler.Sent().empty()) << name;
    };
    options.m_onErrorPrintOneMoreTime = true;
    pdfs.onCall = [this] { run.Stop(); };
    pdfs.extracted = PdfResult::kGaveUp;
    pdfs.filled.flaw = "it takes too long";
    isTakenBack("pages.pdf", "-s2");
    isTakenBack("form.xfdf", "");
    pdfs.opens = false;
    isTakenBack("damaged.pdf", "");
    pdfs.opens = true;
    colorOptions.m_split = true;
    isTakenBack("unclear.pdf", "");
    pdfs.colors = "cm";
    isTakenBack("colors.pdf", "");
}

TEST_F(PrintRunPrintersTest, WhatWasStoppedInTheMiddleIsNotBegunAnew) {
    colorOptions.m_split = true;
    pdfs.colors = "cm";
    AddFile("colors.pdf", "%PDF");
    LeaveCutOff({"Laser", 1});
    CutOffRun cutOff = LoadCutOff();
    spooler.KeepJobs(true);
    InPump([this] { return !Printed().empty(); }, [this] { run.Stop(); });
    EXPECT_EQ(run.FinishCutOffRun(cutOff).end, RunSummary::End::kStopped);
    EXPECT_EQ(Text(0, kColumnStatus), "Error - Printed to page 1 only");
    cutOff = LoadCutOff();
    EXPECT_EQ(run.FinishCutOffRun(cutOff).failed, 1);
    EXPECT_EQ(Printed().size(), 1U);
}

TEST_F(PrintRunPrintersTest, AnAnswerThatWasLostIsNeverTriedAgain) {
    options.m_onErrorPrintOneMoreTime = true;
    AddFiles({"a.ps", "b.pdf"});
    spooler.LoseAnswers();
    const RunSummary summary = run.OnButtonPrint();
    const std::string unknown = "Error - Unknown whether it was printed, please check the printer";
    EXPECT_THAT(Statuses(), ElementsAre(unknown, unknown));
    EXPECT_EQ(summary.failed, 2);
    EXPECT_EQ(spooler.CountCalls("StartDocument"), 1);
    EXPECT_EQ(spooler.CountCalls("PrintDocument"), 1);
}

TEST_F(PrintRunPrintersTest, ACutOffRunIsTakenUpWhereItWas) {
    options.m_snapshotRestore = options.m_errorLog = true;
    AddItem("Plotter.printer");
    AddFiles({"a.ps", "b.ps", "c.ps"});
    run.SetCopies(2);
    CutOffRun cutOff;
    const auto copySnapshot = [&] {
        for (const char* name : {"SnapshotRestore.List", "SnapshotRestore.Checkpoint"})
            folder.Write(std::string("kept/") + name, folder.Read(name));
    };
    recorder.onFinished = [&](const RunProgress& progress) {
        // In the second walk, "a.ps" is done and "b.ps" has not begun.
        if (progress.copy == 2 && progress.row == 1) copySnapshot();
    };
    run.OnButtonPrint();
    recorder.onFinished = {};
    EXPECT_EQ(RunSnapshot(files, folder.PathOf("")).Load(cutOff), SnapshotResult::kNone) << "it has ended";
    ASSERT_EQ(RunSnapshot(files, WithTrailingSeparator(folder.PathOf("kept"))).Load(cutOff),
              SnapshotResult::kLoaded);
    ASSERT_EQ(cutOff.rowAtWork, -1);
    cutOff.rowAtWork = 2;
    list.Clear();
    const std::size_t before = Sent().size();
    const RunSummary summary = run.FinishCutOffRun(cutOff);
    const std::vector<std::string> sent = Sent();
    EXPECT_THAT(std::vector<std::string>(sent.begin() + static_cast<std::ptrdiff_t>(before), sent.end()),
                ElementsAre("c.ps>Plotter"));
    EXPECT_THAT(Statuses(), ElementsAre("Printer set to: Plotter", "Done",
                                        HasSubstr("Error - Unknown whether it was printed"), "Done"));
    EXPECT_EQ(summary.done, 3);
    EXPECT_EQ(summary.failed, 1);
    EXPECT_THAT(ErrorRecords(), HasSubstr("b.ps"));
}

// A settings file that can't be read has made the default printer the current one.
TEST_F(PrintRunPrintersTest, ACutOffRunIsTakenUpOnThePrinterThatAFailedSettingHasLeft) {
    options.m_snapshotRestore = true;
    AddFile("broken.prs");
    AddFiles({"a.ps", "b.ps"});
    run.UsePrinter("Plotter");
    recorder.onFinished = [&](const RunProgress& progress) {
        if (progress.row == 1) run.Stop();
        for (const char* name : {"SnapshotRestore.List", "SnapshotRestore.Checkpoint"})
            if (progress.row == 1) folder.Write(std::string("kept/") + name, folder.Read(name));
    };
    run.OnButtonPrint();
    recorder.onFinished = {};
    run.UsePrinter("");
    CutOffRun cutOff;
    ASSERT_EQ(RunSnapshot(files, WithTrailingSeparator(folder.PathOf("kept"))).Load(cutOff),
              SnapshotResult::kLoaded);
    const RunSummary summary = run.FinishCutOffRun(cutOff);
    EXPECT_EQ(summary.end, RunSummary::End::kFinished);
    EXPECT_EQ(summary.failed, 1);
    EXPECT_THAT(Sent(), ElementsAre("a.ps>Laser", "b.ps>Laser"));
}

TEST_F(PrintRunPrintersTest, ADefaultPrinterThatCannotBeSetBackIsTold) {
    options.m_errorLog = true;
    AddItem("Plotter.printer");
    AddFile("a.ps");
    recorder.onFinished = [&](const RunProgress&) {
        std::string message;
        spooler.RemovePrinterQueue("Laser", message);
    };
    EXPECT_TRUE(run.OnButtonPrint().isDefaultChanged);
    ASSERT_FALSE(prompts.boxes.empty());
    EXPECT_THAT(prompts.boxes.back().text, HasSubstr("can't be set back to \"Laser\""));
    EXPECT_THAT(ErrorRecords(), HasSubstr("can't be set back to \"Laser\""));
    list.Clear();
    AddFile("b.ps");
    EXPECT_FALSE(run.OnButtonPrint().isDefaultChanged);
}

TEST_F(PrintRunPrintersTest, SeparatorsStandAroundTheirDocuments) {
    folder.Write("cover.ps", "[FILENAME1]+[FILENAME2]+[FILENAME3];[PAGES]");
    folder.Write("end.ps", "end");
    separatorOptions.m_generateOnTheFly = separatorOptions.m_printOnDirChangeOnly = true;
    separatorOptions.m_templateFileName = "cover.ps";
    separatorOptions.m_separatorFileName = "made.ps";
    separatorOptions.m_separatorFileNameAfter = folder.PathOf("end.ps");
    separatorOptions.m_printOnDirChangeOnlyAfter = true;
    AddFiles({"x/a.ps", "x/b.ps", "y/c.ps"});
    std::vector<std::string> made;
    recorder.onFinished = [&](const RunProgress&) { made.push_back(folder.Read("made.ps")); };
    EXPECT_EQ(run.OnButtonPrint().done, 3);
    EXPECT_EQ(Printed(), (TextList{"made.ps", "a.ps", "b.ps", "end.ps", "made.ps", "c.ps", "end.ps"}));
    EXPECT_EQ(made.at(0), "a.ps+b.ps+[FILENAME3];0");
    EXPECT_EQ(made.at(2), "c.ps+[FILENAME2]+[FILENAME3];0");

    // A folder has its end even when its last document fails; one of which nothing came out has none.
    list.Clear();
    AddFiles({"x/a.ps", "x/b.odd", "y/c.odd"});
    EXPECT_EQ(run.OnButtonPrint().failed, 2);
    EXPECT_EQ(Printed(7), (TextList{"made.ps", "a.ps", "end.ps", "made.ps"}));

    // What was fetched, and what is still to be, lies in one folder.
    list.Clear();
    AddFile("Temp/Downloads/a.ps");
    AddItem("http://127.0.0.1:1/x.ps");
    AddFile("Temp/Downloads/b.ps");
    EXPECT_EQ(run.OnButtonPrint().done, 2);
    EXPECT_EQ(Printed(11), (TextList{"made.ps", "a.ps", "b.ps", "end.ps"}));

    // A folder that a cut-off run had begun is not begun once more.
    list.Clear();
    AddFiles({"x/a.ps", "x/b.ps"});
    list.MarkOf(0) = {1, 1, RowOutcome::kDone};
    LeaveCutOff({"Laser", 1, false});
    EXPECT_EQ(run.FinishCutOffRun(LoadCutOff()).done, 2);
    EXPECT_EQ(Printed(15), (TextList{"b.ps", "end.ps"}));

    // A merged file stands for the documents in it.
    list.Clear();
    AddFile("x/one.pdf", MakeSmallPdf({"a"}));
    AddFile("x/two.pdf", MakeSmallPdf({"b"}));
    made.clear();
    run.UseAppending(true);
    run.OnButtonPrint();
    run.UseAppending(false);
    EXPECT_EQ(made.at(0), "one.pdf+two.pdf+[FILENAME3];1");

    // Where they are asked for, rows of the list stand for what is below them.
    separatorOptions.m_requestedOnly = true;
    list.Clear();
    AddItem(kSeparatorText);
    AddFiles({"x/a.ps", "y/c.ps"});
    AddItem(kSeparatorText);
    AddFiles({"x/b.ps"});
    made.clear();
    EXPECT_EQ(run.OnButtonPrint().done, 5);
    EXPECT_EQ(made.at(0), "a.ps+c.ps+[FILENAME3];0");
    EXPECT_EQ(made.at(3), "b.ps+[FILENAME2]+[FILENAME3];0");
    EXPECT_THAT(folder.Read(kPrintLogName), testing::Not(HasSubstr("eparator")));
}

// The separator stands for the documents that come out behind it, whichever of the folder is the first.
TEST_F(PrintRunPrintersTest, AFolderWhoseFirstDocumentFailsHasOneSeparator) {
    separatorOptions.m_separatorFileName = folder.Write("cover.ps", "cover");
    separatorOptions.m_printOnDirChangeOnly = true;
    AddFiles({"x/a.odd", "x/b.odd", "x/c.ps", "x/d.ps"});
    EXPECT_EQ(run.OnButtonPrint().done, 2);
    EXPECT_EQ(Printed(), (TextList{"cover.ps", "c.ps", "d.ps"}));

    // What goes on after the separator of another folder stands behind the wrong one.
    list.Clear();
    AddFiles({"x/a.ps", "y/b.odd", "x/c.ps"});
    run.OnButtonPrint();
    EXPECT_EQ(Printed(3), (TextList{"cover.ps", "a.ps", "cover.ps", "cover.ps", "c.ps"}));

    // Nor does a separator on one printer stand before what comes out on another.
    list.Clear();
    balanceOptions.m_printers[0] = {"Laser", "", 0};
    balanceOptions.m_printers[1] = {"Plotter", "", 0};
    ItemTexts first;
    ItemTexts second;
    first.balancedPrinters = "1";
    second.balancedPrinters = "2";
    AddFile("x/a.odd", "bytes", first);
    AddFile("x/b.odd", "bytes", second);
    AddFile("x/c.odd", "bytes", first);
    AddFile("x/d.ps", "bytes", second);
    run.OnButtonPrint();
    EXPECT_EQ(Printed(8), (TextList{"cover.ps", "cover.ps", "d.ps"}));
}

// Nothing overtakes a separator, and a printer that keeps it holds the run up once.
TEST_F(PrintRunPrintersTest, TheDocumentWaitsForItsSeparatorAndNotForEver) {
    separatorOptions.m_separatorFileName = folder.Write("cover.ps", "cover");
    options.m_timeAllow = 5'000;
    AddFiles({"a.ps", "b.ps"});
    spooler.KeepJobs(true);
    std::vector<std::size_t> sentAfter;
    InPump([&] { return spooler.Sent().size() == 1 && loop.MonotonicMilliseconds() >= 4'000; },
           [&] { sentAfter.push_back(spooler.Sent().size()); });
    EXPECT_EQ(run.OnButtonPrint().done, 2);
    EXPECT_EQ(sentAfter, (std::vector<std::size_t>{1})) << "the document was not sent behind its separator";
    EXPECT_GE(loop.MonotonicMilliseconds(), 5'000);
    EXPECT_LT(loop.MonotonicMilliseconds(), 10'000) << "only the first one waits";
    EXPECT_EQ(Printed(), (TextList{"cover.ps", "a.ps", "cover.ps", "b.ps"}));
}

TEST_F(PrintRunPrintersTest, ADocumentIsPrintedWithoutTheSeparatorThatFails) {
    options.m_errorLog = true;
    separatorOptions.m_generateOnTheFly = true;
    separatorOptions.m_templateFileName = "none.ps";
    AddFiles({"a.ps", "b.ps"});
    AddItem(kSeparatorText);
    const RunSummary summary = run.OnButtonPrint();
    EXPECT_EQ(Statuses(), (TextList{"Done", "Done", "Print Error"}));
    EXPECT_EQ(summary.failed, 1);
    ASSERT_EQ(prompts.boxes.size(), 1U);
    EXPECT_THAT(prompts.boxes[0].text, HasSubstr("Error spooling seperator page file:"));
    EXPECT_THAT(prompts.boxes[0].text, HasSubstr("Can't read template file."));
    EXPECT_THAT(folder.Read("error.log"), HasSubstr("Error spooling seperator page file:"));
}

}  // namespace
}  // namespace quirepress
