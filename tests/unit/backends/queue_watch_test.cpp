#include "backends/queue_watch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "backends/candidate_names.h"
#include "backends/document_windows.h"
#include "base/text.h"
#include "fakes/fake_spooler.h"
#include "fakes/surroundings.h"
#include "settings/general_options.h"

namespace quirepress {
namespace {

using ::testing::ElementsAre;

class FakeWindows : public DocumentWindows {
public:
    bool ViewerShows(std::string_view path) override { return path == shown; }
    WordAnswer AskWordProcessor(std::string_view) override {
        ++questions;
        return answer;
    }

    std::string shown;
    WordAnswer answer = WordAnswer::kNotSpooling;
    int questions = 0;
};

class QueueWatchTest : public testing::Test {
protected:
    QueueWatchTest() { m_spooler.PutPrinter("Laser"); }

    std::int64_t Put(std::string_view document, std::uint32_t statusBits = 0) {
        JobInfo job;
        job.document = document;
        job.statusBits = statusBits;
        job.priority = 50;
        job.totalPages = 3;
        job.pagesPrinted = 1;
        job.submitted = {2024, 3, 5, 7, 8, 9};
        return m_spooler.PutJob("Laser", job);
    }
    QueueScan Scan(std::string path, std::int64_t id = 0) {
        return m_watch.ListJobsForPrinter("Laser", {std::move(path), id});
    }
    int VerdictFor(std::string path) { return Scan(std::move(path)).verdict; }

    Surroundings m_around;
    GeneralOptions m_options;
    FakeSpooler m_spooler{m_around.files};
    FakeWindows m_windows;
    QueueWatch m_watch{m_spooler, m_around.files, m_around.prompts, m_around.debugLog, m_options};
};

TEST_F(QueueWatchTest, JudgesAJobByItsWholeStatus) {
    const std::vector<std::pair<std::uint32_t, int>> cases = {
        {0x4, 9},  {0x80, 2},   {0x10, 3},  {0x0, 3},    {0x12, 3}, {0x14, 3},      {0x8, 1},
        {0x18, 1}, {0x2010, 1}, {0x1, 0},   {0x2, 0},    {0x84, 0}, {0x90, 0},      {0x1a, 0},
        {0xc, 0},  {0x2000, 0}, {0x100, 0}, {0x1000, 0}, {0x11, 0}, {0x80000000, 0}};
    const std::int64_t id = Put("/in/a.pdf");
    m_around.debugLog.Open(m_around.files, m_around.folder.PathOf("qpr.log"));
    for (const auto& [status, verdict] : cases) {
        m_spooler.SetJobStatus(id, status, "words");
        const QueueScan scan = Scan("/in/a.pdf");
        EXPECT_EQ(scan.verdict, verdict) << status;
        EXPECT_TRUE(scan.found && scan.listed);
        EXPECT_EQ(scan.job.id, id);
        EXPECT_EQ(scan.job.totalPages, 3);
        EXPECT_EQ(scan.job.statusText, "words");
    }
    EXPECT_THAT(m_around.folder.Read("qpr.log"),
                testing::HasSubstr("status:[16] printTime:[20240305] submitTime:[070809]\r\n"));
}

TEST_F(QueueWatchTest, TellsNoJobFromNoListing) {
    EXPECT_TRUE(Scan("/in/a.pdf").listed);
    EXPECT_EQ(VerdictFor("/in/a.pdf"), -1);
    Put("other.txt");
    const QueueScan other = Scan("/in/a.pdf");
    EXPECT_EQ(other.verdict, -1);
    EXPECT_FALSE(other.found);
    m_spooler.FailListing();
    const QueueScan failed = Scan("/in/a.pdf");
    EXPECT_EQ(failed.verdict, -1);
    EXPECT_FALSE(failed.listed);
    EXPECT_EQ(m_watch.QueueCount("Laser"), -1);
}

TEST_F(QueueWatchTest, FollowsAKnownJobByItsIdAloneAndElseTheLast) {
    std::vector<std::int64_t> told;
    m_watch.UseJobCallback([&](const JobInfo& job) { told.push_back(job.id); });
    const std::int64_t mine = Put("stdin", 0x8);
    Put("/in/a.pdf", 0x80);
    const QueueScan scan = Scan("/in/a.pdf", mine);
    EXPECT_EQ(scan.verdict, 1);
    EXPECT_EQ(scan.job.id, mine);
    EXPECT_EQ(Scan("/in/a.pdf", mine + 100).verdict, -1);
    // Of several with its name the one that is listed last counts.
    const std::int64_t last = Put("a.pdf", 0x10);
    Put("other", 0x80);
    EXPECT_EQ(Scan("/in/a.pdf").job.id, last);
    EXPECT_THAT(told, ElementsAre(mine, last)) << "add-ons hear of what was found";
}

TEST_F(QueueWatchTest, AttentionOfTheFirstJobHoldsEveryItem) {
    const std::int64_t first = Put("first", 0x40);
    Put("/in/a.pdf", 0x80);
    EXPECT_EQ(VerdictFor("/in/a.pdf"), 2);
    m_options.m_showPrinterAttention = true;
    EXPECT_EQ(VerdictFor("/in/a.pdf"), 1);
    EXPECT_EQ(VerdictFor("/in/absent.pdf"), -1);
    for (const std::uint32_t quiet : {0x0U, 0x1U, 0x4U, 0x20U, 0x100U, 0x200U, 0x400U, 0x2000U}) {
        m_spooler.SetJobStatus(first, quiet);
        EXPECT_EQ(VerdictFor("/in/a.pdf"), 2) << quiet;
    }
    for (const std::uint32_t loud : {0x2U, 0x8U, 0x10U, 0x80U, 0x800U, 0x1000U, 0x41U}) {
        m_spooler.SetJobStatus(first, loud);
        EXPECT_EQ(VerdictFor("/in/a.pdf"), 1) << loud;
    }
}

TEST_F(QueueWatchTest, GivesTheJobThePriorityOfTheRun) {
    const std::int64_t id = Put("a.txt", 0x8);
    Put("b.txt", 0x8);
    Scan("/in/a.txt");
    EXPECT_EQ(m_spooler.CountCalls("ChangeJobPriority"), 0);  // 0: as the system likes
    for (const int none : {-1, 100, 50}) {
        m_options.m_printPriority = none;  // the last one is what the job has
        Scan("/in/a.txt");
    }
    EXPECT_EQ(m_spooler.CountCalls("ChangeJobPriority"), 0);
    m_options.m_printPriority = 99;
    Scan("/in/a.txt");
    EXPECT_EQ(m_spooler.CountCalls("ChangeJobPriority Laser " + std::to_string(id) + " 99"), 1);
    EXPECT_EQ(m_around.prompts.statusTexts.back(), "Setting print priority");
    Scan("/in/a.txt");
    EXPECT_EQ(m_spooler.CountCalls("ChangeJobPriority"), 1);
    m_watch.SetJobPriority("Laser", 4711, 7);  // silent
    EXPECT_TRUE(m_around.prompts.boxes.empty());
}

TEST_F(QueueWatchTest, ThePriorityDecreasesWithEachRunAndStartsAt99Again) {
    m_options.m_printPriority = 2;
    const auto next = [&] {
        m_watch.BeginRun();
        return m_watch.RunPriority();
    };
    EXPECT_EQ(next(), 2);
    EXPECT_EQ(next(), 2);
    m_options.m_decreasePrintPriority = true;
    EXPECT_EQ(m_watch.RunPriority(), 2);
    std::vector<int> priorities(102);
    for (int& priority : priorities) priority = next();
    EXPECT_EQ(std::vector<int>(priorities.begin(), priorities.begin() + 4), (std::vector<int>{2, 1, 99, 98}));
    EXPECT_EQ(std::vector<int>(priorities.end() - 4, priorities.end()), (std::vector<int>{3, 2, 1, 99}));
    m_options.m_decreasePrintPriority = false;
    EXPECT_EQ(next(), 2);
    m_options.m_decreasePrintPriority = true;
    m_options.m_printPriority = 0;
    next();
    EXPECT_EQ(next(), 0);
}

TEST_F(QueueWatchTest, AViewerThatShowsTheFileHoldsIt) {
    m_windows.shown = "/in/a.pdf";
    Put("a.pdf b.txt", 0x80);
    EXPECT_EQ(VerdictFor("/in/a.pdf"), 2);
    m_watch.UseDocumentWindows(&m_windows);
    EXPECT_EQ(VerdictFor("/in/a.pdf"), 1);
    EXPECT_EQ(VerdictFor("/other/a.pdf"), 2);
    m_windows.shown = "/in/b.txt";
    EXPECT_EQ(VerdictFor("/in/b.txt"), 2);
}

TEST_F(QueueWatchTest, AWordProcessorThatStillSpoolsHoldsItsDocument) {
    m_watch.UseDocumentWindows(&m_windows);
    using Answer = DocumentWindows::WordAnswer;
    Put("a", 0x80);
    for (const char* path : {"/in/a.doc", "/in/a.docx", "/in/a.rtf", "/in/a.DOC"}) {
        m_windows.answer = Answer::kSpooling;
        EXPECT_EQ(VerdictFor(path), 1) << path;
        EXPECT_EQ(m_around.prompts.statusTexts.back(), "Still spoooling word doc!");
        for (const Answer silent : {Answer::kNotSpooling, Answer::kNoProgram, Answer::kNoDocument}) {
            m_windows.answer = silent;
            EXPECT_EQ(VerdictFor(path), 2) << path;
        }
    }
    const int asked = m_windows.questions;
    VerdictFor("/in/a.txt");
    EXPECT_EQ(m_windows.questions, asked);
    // It spools before its job is in the queue.
    m_windows.answer = Answer::kSpooling;
    const QueueScan scan = Scan("/in/zzz.doc");
    EXPECT_EQ(scan.verdict, 1);
    EXPECT_FALSE(scan.found);
}

TEST_F(QueueWatchTest, CountsTheJobsThatAreStillToBePrinted) {
    EXPECT_EQ(m_watch.QueueCount("Laser"), 0);
    for (const std::uint32_t waiting : {0x0U, 0x1U, 0x2U, 0x8U, 0x10U, 0x4U}) Put("a", waiting);
    for (const std::uint32_t over : {0x80U, 0x100U, 0x1000U, 0x2080U}) Put("b", over);
    EXPECT_EQ(m_watch.QueueCount("Laser"), 6);
    EXPECT_EQ(m_watch.QueueCount("Nobody"), -1);
}

// The traced texts behind their labels, in the order of the candidates.
std::vector<std::string> NamesOf(std::string_view path, std::string_view shortPath) {
    Surroundings around;
    around.debugLog.Open(around.files, around.folder.PathOf("qpr.log"));
    CandidateNames(path, shortPath).Trace(around.debugLog);
    const std::string log = around.folder.Read("qpr.log");
    std::vector<std::string> names;
    for (std::string_view line : SplitAt(log, '\n'))
        if (!line.empty())
            names.emplace_back(line.substr(line.find(": ") + 2, line.rfind('\r') - line.find(": ") - 2));
    return names;
}

TEST(CandidateNames, AreBuiltFromThePathAndItsShortForm) {
    using Names = std::vector<std::string>;
    EXPECT_EQ(NamesOf("/in/Report (1).pdf", "/in/REPORT~1.PDF"),
              (Names{"/in/Report (1).pdf", "/in/REPORT~1.PDF", "Report (1).pdf.PDF", "Report (1)",
                     "Report (1).pdf", "Report _1_.pdf", "report~1", "report~1.pdf"}));
    EXPECT_EQ(NamesOf("/in/a_title_of_more_than_thirty-one_characters.Pdf", "x")[2],
              "a_title_of_more_than_thirty-one.PDF");
    // What cannot be built must not be part of every name.
    EXPECT_EQ(NamesOf("/in/README", ""),
              (Names{"/in/README", "No way will it match", "No way will it match again",
                     "No way will it match again", "README", "README", "No way will it match again",
                     "No way will it match again"}));
    EXPECT_EQ(NamesOf("/in/.profile", "/in/.profile")[3], "No way will it match again");
    for (const std::string& name : NamesOf("", "")) EXPECT_TRUE(StartsWith(name, "No way will it match"));
}

TEST(CandidateNames, HaveAtMost255BytesOfWholeCharacters) {
    const std::string folder = "/in/" + std::string(249, 'f');
    EXPECT_EQ(NamesOf(folder + "/a\xC3\xA4.txt", "")[0], folder + "/a");
    EXPECT_EQ(NamesOf(folder + "/ab\xC3\xA4.txt", "")[0], folder + "/a");
    EXPECT_EQ(NamesOf(std::string(300, '\xBF'), "")[0].size(), 252U);
}

TEST(CandidateNames, MatchAnywhereInADocumentName) {
    const CandidateNames names("/in/Invoice 12.docx", "/in/INVOIC~1.DOC");
    for (const char* document :
         {"/in/Invoice 12.docx", "Microsoft Word - Invoice 12.docx", "Invoice 12", "Invoice 123.pdf",
          "file:///in/Invoice 12.docx#1", "C:\\in\\INVOIC~1.DOC", "invoic~1", "MAIL - Invoic~1.doc"})
        EXPECT_TRUE(names.Matches(document)) << document;
    for (const char* document : {"Invoice 13.docx", "INVOICE 12.DOCX", "Invoice", "", "12.docx"})
        EXPECT_FALSE(names.Matches(document)) << document;
    for (const char* generic :
         {"print job", "Remote Print Job", "My Document", "ME10 plot", "Full page print"})
        EXPECT_TRUE(names.Matches(generic)) << generic;
    EXPECT_TRUE(CandidateNames("/in/Report (1).pdf", "").Matches("Report _1_.pdf"));
    EXPECT_FALSE(CandidateNames("", "").Matches("anything"));
}

}  // namespace
}  // namespace quirepress
