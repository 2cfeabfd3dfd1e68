#include "cups_fixture.h"

namespace quirepress {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

class CupsSpoolerTest : public CupsFixture {
protected:
    CupsSpoolerTest() { cups.UseHere(); }

    // Never less than the spooler believes what it knows.
    void ForgetFacts() { services.loop->Wait(2'100); }

    std::string DocumentOf(std::string_view name) { return folder.Write(name, "%PDF-1.4\n"); }

    PrivateCups cups{services};
    TemporaryFolder folder;
};

TEST_F(CupsSpoolerTest, RawDocumentsArriveByteForByte) {
    cups.AddRawQueue("Raw");
    std::string odd = "a\0b\xff\x1b%-12345X\r\n";
    odd += std::string(70'000, '\x04');
    std::string large(9'000'000, 'x');
    for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<char>(i * 7 + i / 251);
    EXPECT_EQ(PrintRaw("Raw", "odd.prn", odd), 0);
    EXPECT_GT(jobId, 0);
    const auto raw = spooler.OpenRawPrinter("Raw", error);
    ASSERT_EQ(raw->StartDocument({"large.prn", 2}), 0);
    for (std::size_t i = 0; i < large.size(); i += 65'535)
        ASSERT_EQ(raw->WriteChunk(large.data() + i, std::min<std::size_t>(65'535, large.size() - i)), 0);
    EXPECT_EQ(raw->Finish(), 0);
    ASSERT_TRUE(cups.AwaitCaptured(2));
    const std::vector<CapturedJob> captured = cups.Captured();
    EXPECT_EQ(captured[0].title, "odd.prn");
    EXPECT_TRUE(captured[0].bytes == odd);
    EXPECT_EQ(captured[1].id, raw->JobId());
    EXPECT_TRUE(captured[1].bytes == large + large);
}

TEST_F(CupsSpoolerTest, PrintersAndClassesAreDescribed) {
    cups.AddRawQueue("Raw");
    cups.AddDriverQueue("Driver");
    cups.AddClass("Group", {"Driver"});
    cups.Pause("Raw");
    cups.Reject("Driver");
    ASSERT_EQ(PrintRaw("Raw", "a", "x"), 0);
    const PrinterInfo raw = Printer("Raw");
    EXPECT_THAT(raw.port, HasSubstr("capture:/"));
    EXPECT_EQ(raw.driver, "Local Raw Printer");
    EXPECT_EQ(raw.statusBits, printer_status::kPaused);
    EXPECT_EQ(raw.statusText, "Paused by the test");
    EXPECT_EQ(raw.jobs, 1U);
    EXPECT_FALSE(raw.isDefault);
    EXPECT_EQ(Printer("Driver").statusBits, printer_status::kNotAvailable);
    EXPECT_EQ(Printer("Driver").driver, "Test Driver");
    EXPECT_EQ(Printer("Group").statusBits, 0U);
    std::vector<BinInfo> bins;
    EXPECT_EQ(spooler.ListBins("Driver", bins), 0);
    ASSERT_EQ(bins.size(), 2U);
    EXPECT_EQ(bins[1].name, "photo");
    EXPECT_EQ(bins[1].number, 513);
}

TEST_F(CupsSpoolerTest, TheUsersDefaultGoesBeforeTheServers) {
    EXPECT_EQ(spooler.DefaultPrinter(), "");
    cups.AddRawQueue("One");
    cups.AddRawQueue("Two");
    cups.RunTool({"lpadmin", "-d", "One"});
    EXPECT_EQ(spooler.DefaultPrinter(), "One");
    EXPECT_EQ(spooler.MakeDefaultPrinter("Two"), 0);
    EXPECT_EQ(spooler.DefaultPrinter(), "Two");
    EXPECT_TRUE(Printer("Two").isDefault);
    EXPECT_THAT(cups.ReadUserOptions(), HasSubstr("Default Two"));
    EXPECT_EQ(spooler.MakeDefaultPrinter("Nobody"), -1);
    cups.Remove("Two");
    EXPECT_EQ(spooler.DefaultPrinter(), "One");
}

TEST_F(CupsSpoolerTest, TheUsersChoiceComesBackAsItWas) {
    cups.AddRawQueue("One");
    cups.AddRawQueue("Two");
    cups.RunTool({"lpadmin", "-d", "One"});
    const std::vector<std::vector<std::string>> choices = {{},
                                                           {"lpoptions", "-d", "Two"},
                                                           {"lpoptions", "-p", "Two/draft", "-o", "copies=2"},
                                                           {"lpoptions", "-d", "Two/draft"}};
    for (const std::vector<std::string>& choose : choices) {
        if (!choose.empty()) cups.RunTool(choose);
        const std::string kept = spooler.DefaultChoice();
        const std::string options = cups.ReadUserOptions();
        const std::string standard = spooler.DefaultPrinter();
        EXPECT_EQ(spooler.MakeDefaultPrinter(standard == "One" ? "Two" : "One"), 0);
        EXPECT_NE(spooler.DefaultChoice(), kept);
        EXPECT_EQ(spooler.MakeDefaultPrinter(standard), 0);
        EXPECT_EQ(spooler.RestoreDefaultChoice(kept), 0);
        EXPECT_EQ(spooler.DefaultChoice(), kept);
        EXPECT_EQ(spooler.DefaultPrinter(), standard);
        EXPECT_EQ(cups.ReadUserOptions(), options);
    }
}

TEST_F(CupsSpoolerTest, DocumentsGoOnlyWhereTheyBecomePages) {
    cups.AddRawQueue("Raw");
    cups.AddDriverQueue("Driver");
    cups.AddClass("Pages", {"Driver"});
    cups.AddRawQueue("Mixed1");
    cups.AddDriverQueue("Mixed2");
    cups.AddClass("Mixed", {"Mixed1", "Mixed2"});
    const std::string document = DocumentOf("a.pdf");
    EXPECT_TRUE(spooler.TakesDocument("Driver", document));
    EXPECT_TRUE(spooler.TakesDocument("Driver", "b.JPG"));
    EXPECT_TRUE(spooler.TakesDocument("Pages", document));
    EXPECT_FALSE(spooler.TakesDocument("Raw", document));
    EXPECT_FALSE(spooler.TakesDocument("Mixed", document));
    EXPECT_FALSE(spooler.TakesDocument("Nobody", document));
    EXPECT_FALSE(spooler.TakesDocument("Driver", "a.docx"));
    EXPECT_EQ(spooler.PrintDocument("Raw", document, {document}, error), -1);
    EXPECT_EQ(error, 0x40a);
    EXPECT_EQ(spooler.ErrorText(error), "the printer can't make pages of this kind of file");
    EXPECT_THAT(Jobs("Raw"), IsEmpty());
}

TEST_F(CupsSpoolerTest, ARejectingPrinterIsNotSentADocument) {
    cups.AddRawQueue("Raw");
    cups.Reject("Raw");
    EXPECT_EQ(spooler.OpenRawPrinter("Raw", error), nullptr);
    EXPECT_EQ(error, 0x506);
    EXPECT_EQ(spooler.ErrorText(error), "the printer is not accepting jobs");
    EXPECT_EQ(spooler.ErrorText(3), "error 3");
}

TEST_F(CupsSpoolerTest, WhatHasNoPlaceInANameIsReplaced) {
    cups.AddRawQueue("Raw");
    cups.Pause("Raw");
    EXPECT_EQ(PrintRaw("Raw", "/docs/a;b%\n.ps", "x"), 0);
    EXPECT_EQ(PrintRaw("Raw", "caf\xe9.ps", "x"), 0);
    EXPECT_EQ(PrintRaw("Raw", std::string(400, 'd') + "\xC3\xA9" + std::string(254, 'e'), "x"), 0);
    const std::vector<JobInfo> jobs = Jobs("Raw");
    ASSERT_EQ(jobs.size(), 3U);
    EXPECT_EQ(jobs[0].document, "/docs/a;b%_.ps");
    EXPECT_EQ(jobs[1].document, "caf\xC3\xA9.ps");
    EXPECT_EQ(jobs[2].document, std::string(254, 'e'));
}

TEST_F(CupsSpoolerTest, TheQueueIsShownWholeAndInItsOrder) {
    cups.AddRawQueue("Raw");
    cups.Pause("Raw");
    constexpr int kMany = 600;  // more than a server shows without being told
    for (int i = 0; i < kMany; ++i) ASSERT_EQ(PrintRaw("Raw", std::to_string(i), "x"), 0);
    ASSERT_EQ(spooler.ChangeJobPriority("Raw", jobId, 99), 0);
    const std::vector<JobInfo> jobs = Jobs("Raw");
    ASSERT_EQ(jobs.size(), static_cast<std::size_t>(kMany));
    EXPECT_EQ(jobs[0].id, jobId);
    EXPECT_EQ(jobs[0].priority, 99);
    EXPECT_EQ(jobs[1].document, "0");
    EXPECT_EQ(jobs[1].priority, 50);
    EXPECT_EQ(jobs[1].printer, "Raw");
    EXPECT_EQ(jobs[1].dataType, "application/vnd.cups-raw");
    EXPECT_EQ(jobs.back().position, kMany);
    EXPECT_EQ(jobs.back().document, "598");
}

TEST_F(CupsSpoolerTest, JobsThatAreOverAreToldApartFromOlderOnes) {
    EXPECT_EQ(spooler.LastJob("Nobody"), -1);
    cups.AddRawQueue("Raw");
    cups.AddQueue("Other", "file:/dev/null");
    EXPECT_EQ(spooler.LastJob("Raw"), 0);
    const auto over = [&](std::int64_t after) {
        std::vector<JobInfo> jobs;
        EXPECT_EQ(spooler.ListOverJobs("Raw", after, jobs), 0);
        std::string told;
        for (const JobInfo& job : jobs) told += job.document + ":" + std::to_string(job.statusBits) + " ";
        return told;
    };
    ASSERT_EQ(PrintRaw("Raw", "old", "x"), 0);
    ASSERT_TRUE(cups.AwaitCaptured(1));
    EXPECT_EQ(spooler.LastJob("Raw"), jobId);
    cups.Pause("Raw");
    for (const char* name : {"waits", "cancelled"}) ASSERT_EQ(PrintRaw("Raw", name, "x"), 0);
    const std::int64_t last = jobId;
    ASSERT_EQ(PrintRaw("Other", "elsewhere", "x"), 0);
    EXPECT_EQ(spooler.LastJob("Raw"), last);
    EXPECT_EQ(spooler.CancelJob("Raw", last), 0);
    EXPECT_EQ(spooler.LastJob("Raw"), last);
    EXPECT_EQ(over(last - 2), "cancelled:256 ") << "neither older ones nor those in the queue";
    cups.SetBehaviour("code=1");
    cups.Resume("Raw");
    for (int i = 0; i < 2'000 && !Jobs("Raw").empty(); ++i) services.loop->Wait(5);
    EXPECT_EQ(over(last - 2), "waits:2 cancelled:256 ");
    EXPECT_EQ(over(last), "");
    EXPECT_EQ(over(0), "old:128 waits:2 cancelled:256 ");
}

TEST_F(CupsSpoolerTest, ADocumentThatThePrinterCanNotBeAskedForIsNoJob) {
    cups.AddDriverQueue("Driver");
    const std::string document = DocumentOf("a.pdf");
    DocumentInfo info{document};
    info.ticket.trayName = "Lower";
    EXPECT_EQ(spooler.PrintDocument("Driver", document, info, error), -1);
    EXPECT_EQ(spooler.ErrorText(error), "the printer has no such tray");
    info.ticket = {};
    info.pageRanges = "3-1";
    EXPECT_EQ(spooler.PrintDocument("Driver", document, info, error), -1);
    EXPECT_EQ(spooler.ErrorText(error), "the page ranges can't be read");
    EXPECT_EQ(spooler.PrintDocument("Driver", folder.PathOf("none.pdf"), {document}, error), -1);
    EXPECT_THAT(Jobs("Driver"), IsEmpty());
}

TEST_F(CupsSpoolerTest, WhatATicketAsksForReachesThePrinter) {
    cups.AddNetworkPrinter("Net");
    const std::string document = std::string(QUIREPRESS_SAMPLES) + "/prices.pdf";
    DocumentInfo info{document, 2, 60};
    info.ticket.color = JobTicket::Color::kMono;
    info.ticket.duplex = JobTicket::Duplex::kHorizontal;
    info.ticket.quality = JobTicket::Quality::kHigh;
    info.ticket.paperSize = 11;
    info.ticket.trayName = "photo";
    info.pageRanges = "1";
    EXPECT_GT(spooler.PrintDocument("Net", document, info, error), 0) << spooler.LastFailure().text;
    const std::string values = cups.AwaitRecord("Net");
    EXPECT_THAT(values, HasSubstr("IPP_COPIES=2\n"));
    EXPECT_THAT(values, HasSubstr("IPP_SIDES=two-sided-short-edge\n"));
    EXPECT_THAT(values, HasSubstr("IPP_PRINT_COLOR_MODE=monochrome\n"));
    EXPECT_THAT(values, HasSubstr("IPP_PRINT_QUALITY=high\n"));
    EXPECT_THAT(values, HasSubstr("media-source=photo"));
    EXPECT_THAT(values, HasSubstr("x-dimension=14800"));
    DocumentInfo bare{document};
    bare.ticket.tray = 513;
    EXPECT_GT(spooler.PrintDocument("Net", document, bare, error), 0);
    EXPECT_THAT(cups.AwaitRecord("Net", 2), HasSubstr("media-source=photo"));
}

}  // namespace
}  // namespace quirepress
