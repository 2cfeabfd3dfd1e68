#include <gmock/gmock.h>

#include "platform/embedded/job_ids.h"
#include "unit/embedded/spooler_bench.h"

namespace quirepress {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using Call = FaultyFiles::Call;

class EmbeddedSpoolerTest : public SpoolerBench {};

TEST_F(EmbeddedSpoolerTest, TheFirstPrinterIsMadeOnce) {
    EXPECT_EQ(m_spooler->DefaultPrinter(), "Quirepress");
    EXPECT_EQ(Printer("Quirepress").port, "folder:");
    ASSERT_EQ(m_spooler->PausePrinterQueue("Quirepress", m_message), 0);
    Restart();
    EXPECT_EQ(Printer("Quirepress").statusBits, printer_status::kPaused);
    ASSERT_EQ(m_spooler->RemovePrinterQueue("Quirepress", m_message), 0);
    Restart();
    EXPECT_EQ(m_spooler->DefaultPrinter(), "");
    std::vector<PrinterInfo> printers;
    EXPECT_EQ(m_spooler->ListPrinters(printers), 0);
    EXPECT_THAT(printers, IsEmpty());
    EXPECT_FALSE(folder.Has("Printers/Quirepress"));
}

TEST_F(EmbeddedSpoolerTest, ANumberThatIsHeldForAMomentIsPassedOver) {
    const JobIds ids(files, folder.PathOf("ids"));
    int held = 2;
    const auto take = [&held](std::int64_t) { return held-- <= 0; };
    std::int64_t id = 0;
    EXPECT_EQ(ids.Give(
                  take, [] { return 0; }, id),
              FileResult::kDone);
    EXPECT_EQ(id, 3);
    held = 1;
    EXPECT_EQ(ids.Give(
                  take, [] { return 3; }, id),
              FileResult::kDone);
    EXPECT_EQ(id, 4);
    held = 1'000'000;
    EXPECT_EQ(ids.Give(
                  take, [] { return 4; }, id),
              FileResult::kFailed);
    EXPECT_GT(held, 999'900) << "it gives up";
}

TEST_F(EmbeddedSpoolerTest, IdsAreNeverGivenAgain) {
    Spool("Quirepress", "a");
    ASSERT_TRUE(Deliver());
    files.Erase(folder.PathOf("Printers/Quirepress/Output/00000001-a"));
    Restart();
    EXPECT_EQ(Spool("Quirepress", "b"), 2);
    ASSERT_TRUE(Deliver());
    // With its documents left behind a printer's numbers go on as well.
    ASSERT_EQ(m_spooler->RemovePrinterQueue("Quirepress", m_message), 0);
    MakePrinter("Quirepress", "folder:");
    EXPECT_EQ(Spool("Quirepress", "c"), 3);
    ASSERT_TRUE(Deliver());
    // And where somebody cleared the folder of everything, nothing is overwritten.
    files.Erase(folder.PathOf("Printers/Quirepress/ids"));
    EXPECT_EQ(Spool("Quirepress", "b"), 1);
    ASSERT_TRUE(Deliver());
    folder.Write("Printers/Quirepress/ids", "garbage");
    EXPECT_EQ(Spool("Quirepress", "b", "other"), 1);
    ASSERT_TRUE(Deliver());
    EXPECT_THAT(Output(), ElementsAre(Pair("00000001-b", "bytes"), Pair("00000001-b (2)", "other"),
                                      Pair("00000002-b", "bytes"), Pair("00000003-c", "bytes")));
}

TEST_F(EmbeddedSpoolerTest, NumbersThatFellBehindAreFoundByTheJobs) {
    ASSERT_EQ(m_spooler->PausePrinterQueue("Quirepress", m_message), 0);
    for (const char* name : {"a", "b", "c"}) Spool("Quirepress", name);
    folder.Write("Printers/Quirepress/ids", "00000001\n");
    EXPECT_EQ(Spool("Quirepress", "d"), 4);
    folder.Write("Printers/Quirepress/ids", "99999998\n");
    EXPECT_EQ(Spool("Quirepress", "the last"), 99'999'999);
    EXPECT_EQ(Spool("Quirepress", "one too many"), -1);
    EXPECT_EQ(Jobs("Quirepress").size(), 5U);
}

TEST_F(EmbeddedSpoolerTest, APrinterDeliversByPriorityAndThenByAge) {
    MakePrinter("Net", "socket://host");
    ASSERT_EQ(m_spooler->PausePrinterQueue("Net", m_message), 0);
    for (const char* name : {"a", "b", "c", "d"}) Spool("Net", name, name);
    m_spooler->ChangeJobPriority("Net", 3, 99);
    m_spooler->ChangeJobPriority("Net", 4, 2);
    ASSERT_TRUE(Deliver());
    EXPECT_THAT(m_network.peers, IsEmpty());
    ASSERT_EQ(m_spooler->ResumePrinterQueue("Net", m_message), 0);
    ASSERT_TRUE(Deliver());
    std::string order;
    for (const auto& peer : m_network.peers) order += peer->received;
    EXPECT_EQ(order, "cdab");
}

TEST_F(EmbeddedSpoolerTest, JobsOfOtherProgramsArePickedUpAndCanBeCancelled) {
    loop.Wait(5'000);
    EmbeddedSpooler other(files, loop, m_network, clock, machine, folder.Path());
    SpoolDocument(other, "Quirepress", "theirs");
    loop.Wait(2'000);
    EXPECT_THAT(Output(), ElementsAre(Pair("00000001-theirs", "bytes")));
    MakePrinter("Paused", "folder:");
    ASSERT_EQ(other.PausePrinterQueue("Paused", m_message), 0);
    SpoolDocument(other, "Paused", "a");
    SpoolDocument(other, "Paused", "b");
    EXPECT_EQ(m_spooler->CancelJob("Paused", 1), 0);
    loop.Wait(2'000);
    EXPECT_THAT(Documents("Paused"), ElementsAre("b"));
}

TEST_F(EmbeddedSpoolerTest, SettingsOfAPrinterAreShownAsTheyStand) {
    MakePrinter("Simulated", "null:");
    folder.Write("Printers/Simulated/printer.ini", "PORT;null:\nSTATUS;16\nBIN;4;Manual\nDRIVER;PCL\n");
    EXPECT_EQ(Printer("Simulated").statusBits, printer_status::kPaperOut);
    EXPECT_EQ(Printer("Simulated").driver, "PCL");
    ASSERT_EQ(m_spooler->PausePrinterQueue("Simulated", m_message), 0);
    EXPECT_EQ(Printer("Simulated").statusBits, printer_status::kPaperOut | printer_status::kPaused);
    std::vector<BinInfo> bins;
    ASSERT_EQ(m_spooler->ListBins("Simulated", bins), 0);
    ASSERT_EQ(bins.size(), 1U);
    EXPECT_EQ(bins[0].number, 4);
    EXPECT_EQ(bins[0].name, "Manual");
}

TEST_F(EmbeddedSpoolerTest, GarbageBlocksNothing) {
    MakePrinter("Bad port", "null:");
    folder.Write("Printers/Bad port/printer.ini", std::string("\0\1PORT\nPORT;usb:3\n", 18));
    folder.Write("Printers/no printer.txt", "x");
    folder.Write("Printers/Empty folder/note", "x");
    folder.Write("Printers/Quirepress/Jobs/00000003-50.job/file", "a folder");
    folder.Write("Printers/Quirepress/Jobs/99999999.txt", "x");
    folder.Write("Printers/Quirepress/Jobs/0000000x-01.job", "x");
    folder.Write("Printers/Quirepress/Jobs/00000001-00.job", "x");
    folder.Write("Printers/Quirepress/Jobs/00000001-01.job", std::string(5000, '\xff'));
    folder.Write("Printers/Quirepress/Jobs/00000001.data", "kept");
    folder.Write("Printers/Quirepress/port.state", "TROUBLE;1");
    Restart();
    EXPECT_EQ(Spool("Quirepress", "good"), 2);
    EXPECT_GT(Spool("Bad port", "held"), 0);
    ASSERT_TRUE(Deliver());
    EXPECT_THAT(Output(), ElementsAre(Pair("00000002-good", "bytes")));
    ASSERT_THAT(Jobs("Quirepress").size(), 1U);
    EXPECT_EQ(FirstJob("Quirepress").statusBits, job_status::kError);
    EXPECT_THAT(FirstJob("Quirepress").statusText, HasSubstr("damaged"));
    EXPECT_EQ(Printer("Bad port").statusBits, printer_status::kError);
    EXPECT_THAT(FirstJob("Bad port").statusText, HasSubstr("usb:3"));
    EXPECT_EQ(m_spooler->CancelJob("Quirepress", 1), 0);
    EXPECT_THAT(Jobs("Quirepress"), IsEmpty());
    folder.Write("Printers/Bad port/printer.ini", "PORT;null:\n");
    loop.Wait(120'000);
    EXPECT_THAT(Jobs("Bad port"), IsEmpty());
    EXPECT_EQ(Printer("Bad port").statusBits, 0U);
}

TEST_F(EmbeddedSpoolerTest, AMissingChunkDropsTheDocument) {
    int error = 0;
    const auto raw = m_spooler->OpenRawPrinter("Quirepress", error);
    ASSERT_EQ(raw->StartDocument({"a", 1}), 0);
    ASSERT_EQ(raw->WriteChunk("1", 1), 0);
    files.FailOnce(Call::kWrite, FileResult::kNoSpace);
    EXPECT_EQ(raw->WriteChunk("2", 1), -1);
    const int number = raw->SystemError();
    EXPECT_NE(number, 0);
    EXPECT_EQ(raw->WriteChunk("3", 1), 0);
    EXPECT_EQ(raw->Finish(), -1);
    EXPECT_EQ(raw->SystemError(), number);
    ASSERT_TRUE(Deliver());
    EXPECT_THAT(Output(), IsEmpty());
    EXPECT_THAT(ReadFolder(files, JobsFolder()), IsEmpty());
}

TEST_F(EmbeddedSpoolerTest, ADiskThatFillsUpLosesOnlyTheDocumentsThatWereRefused) {
    for (int room = 0; room < 3'000; room += 150) {
        files.FillDiskAfter(room);
        const std::string name = "full" + std::to_string(room);
        EXPECT_EQ(Spool("Quirepress", name, std::string(2'000, 'f')) > 0, room >= 2'150) << room;
        files.Heal();
        ASSERT_TRUE(Deliver());
    }
    EXPECT_EQ(Output().size(), 5U);
    for (const Call call : {Call::kFlushToDisk, Call::kClose, Call::kRename}) {
        files.FailOnce(call, FileResult::kNoSpace);
        EXPECT_EQ(Spool("Quirepress", "refused"), -1);
        ASSERT_TRUE(Deliver());
    }
    EXPECT_EQ(Output().size(), 5U);
    EXPECT_THAT(Jobs("Quirepress"), IsEmpty());
}

TEST_F(EmbeddedSpoolerTest, AnUnwritableOutputFolderKeepsTheJobUntilItIsMended) {
    MakePrinter("Blocked", "folder:" + folder.PathOf("file/out"));
    folder.Write("file", "in the way");
    Spool("Blocked", "a.ps");
    Spool("Blocked", "b.ps");
    Spool("Quirepress", "c.ps");
    ASSERT_TRUE(Deliver());
    EXPECT_THAT(Output(), ElementsAre(Pair("00000001-c.ps", "bytes")));
    EXPECT_EQ(Printer("Blocked").statusBits, printer_status::kError);
    EXPECT_THAT(Printer("Blocked").statusText, HasSubstr("next try in 1 s"));
    EXPECT_EQ(FirstJob("Blocked").statusBits, job_status::kError);
    EXPECT_THAT(FirstJob("Blocked").statusText, HasSubstr("can't be made"));
    EXPECT_EQ(Jobs("Blocked")[1].statusBits, 0U);
    const int before = files.CountOf(Call::kMakeFolders);
    loop.Wait(3'600'000);
    EXPECT_THAT(Printer("Blocked").statusText, HasSubstr("next try in 60 s"));
    const int tries = files.CountOf(Call::kMakeFolders) - before;
    EXPECT_GE(tries, 58);
    EXPECT_LE(tries, 70);
    files.Erase(folder.PathOf("file"));
    loop.Wait(61'000);
    EXPECT_THAT(Jobs("Blocked"), IsEmpty());
    EXPECT_EQ(Printer("Blocked").statusBits, 0U);
    EXPECT_TRUE(folder.Has("file/out/00000002-b.ps"));
}

TEST_F(EmbeddedSpoolerTest, AFullOutputVolumeKeepsTheJobUntilThereIsRoom) {
    const std::string large(400'000, 'L');
    Spool("Quirepress", "large", large);
    files.FailOnce(Call::kRename, FileResult::kOtherVolume);
    files.FailOnce(Call::kWrite, FileResult::kNoSpace);
    ASSERT_TRUE(Deliver());
    EXPECT_THAT(FirstJob("Quirepress").statusText, HasSubstr("no space"));
    EXPECT_EQ(Printer("Quirepress").statusBits, printer_status::kError);
    EXPECT_THAT(Output(), IsEmpty());
    loop.Wait(2'000);
    EXPECT_THAT(Output(), ElementsAre(Pair("00000001-large", large)));
    EXPECT_THAT(Jobs("Quirepress"), IsEmpty());
}

TEST_F(EmbeddedSpoolerTest, AProgramThatOnlyJustStartedIsNotToldOldTroubles) {
    MakePrinter("Blocked", "folder:" + folder.PathOf("file/out"));
    folder.Write("file", "in the way");
    Spool("Blocked", "a.ps");
    ASSERT_TRUE(Deliver());
    Restart();
    EXPECT_THAT(FirstJob("Blocked").statusText, HasSubstr("can't be made"));
    EXPECT_FALSE(m_spooler->IsIdle());
    ASSERT_TRUE(Deliver());
    EXPECT_EQ(m_spooler->WaitingJobs().stuck, 1);
}

TEST_F(EmbeddedSpoolerTest, CopiesOfAFileAreJobsOfTheirOwnOrNone) {
    const std::string path = folder.Write("a.pdf", std::string(700'000, 'p'));
    int error = 0;
    EXPECT_EQ(m_spooler->PrintDocument("Quirepress", path, {path, 3}, error), 1);
    ASSERT_TRUE(Deliver());
    EXPECT_EQ(Output().size(), 3U);
    files.FailOnce(Call::kFlushToDisk, FileResult::kNoSpace, 5);
    EXPECT_EQ(m_spooler->PrintDocument("Quirepress", path, {path, 3}, error), -1);
    EXPECT_NE(error, 0);
    ASSERT_TRUE(Deliver());
    EXPECT_EQ(Output().size(), 3U);
}

TEST_F(EmbeddedSpoolerTest, TheProgramStaysAliveWhileALargeFileIsCopied) {
    Spool("Quirepress", "earlier.ps");
    const std::string path = folder.Write("a.pdf", std::string(5'000'000, 'p'));
    int ticks = 0;
    loop.StartTimer(7, 1, [&] { ++ticks; });
    files.BeforeEach(Call::kReadAt, [this](std::string_view) { loop.Advance(10); });
    int error = 0;
    EXPECT_EQ(m_spooler->PrintDocument("Quirepress", path, {path}, error), 2);
    EXPECT_GE(ticks, 15);
    EXPECT_EQ(Output().count("00000001-earlier.ps"), 1U) << "what waits goes out meanwhile";
    ASSERT_TRUE(Deliver());
    EXPECT_EQ(Output().at("00000002-a.pdf").size(), 5'000'000U);
}

TEST_F(EmbeddedSpoolerTest, ADocumentKeepsHowItIsToBePrinted) {
    m_spooler->PausePrinterQueue("Quirepress", m_message);
    const std::string path = folder.Write("a.pdf", "%PDF");
    DocumentInfo document{path, 2};
    document.ticket.paperSize = 9;
    document.ticket.copies = 3;
    document.ticket.trayName = "Upper;\n100%";
    document.pageRanges = "1-3";
    int error = 0;
    ASSERT_GT(m_spooler->PrintDocument("Quirepress", path, document, error), 0);
    Restart();
    const std::vector<JobInfo> jobs = Jobs("Quirepress");
    EXPECT_EQ(jobs.size(), 6U);
    for (const JobInfo& job : jobs) EXPECT_EQ(job.options, "media=A4 pages=1-3 tray=Upper;\n100%");
    Spool("Quirepress", "plain.ps");
    EXPECT_EQ(Jobs("Quirepress").back().options, "");

    // More than can be written while nothing else happens.
    document.copies = 10;
    document.ticket.copies = 1'000;
    EXPECT_EQ(m_spooler->PrintDocument("Quirepress", path, document, error), -1);
    EXPECT_EQ(m_spooler->ErrorText(error), "more than 9999 copies at once");
    document.copies = 2'147'483'647;
    document.ticket.copies = 1'000'000;
    EXPECT_EQ(m_spooler->PrintDocument("Quirepress", path, document, error), -1);
    EXPECT_EQ(Jobs("Quirepress").size(), 7U);
}

}  // namespace
}  // namespace quirepress
