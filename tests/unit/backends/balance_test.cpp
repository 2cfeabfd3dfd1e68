#include "backends/balance.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include "backends/printer_selection.h"
#include "fakes/fake_spooler.h"
#include "fakes/surroundings.h"
#include "settings/general_options.h"

namespace quirepress {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

// Lists a job only some time after it was put.
class LateSpooler : public FakeSpooler {
public:
    LateSpooler(Files& files, EventLoop& loop) : FakeSpooler(files), m_loop(loop) {}

    std::int64_t PutDocument(const std::string& printer) {
        const std::int64_t id = PutJob(printer, {});
        m_since[id] = m_loop.MonotonicMilliseconds();
        return id;
    }
    std::vector<JobInfo> TrueJobs(const std::string& printer) {
        std::vector<JobInfo> jobs;
        FakeSpooler::ListJobs(printer, jobs);
        return jobs;
    }
    int ListJobs(std::string_view printer, std::vector<JobInfo>& jobs) override {
        const int result = FakeSpooler::ListJobs(printer, jobs);
        std::erase_if(jobs, [&](const JobInfo& job) {
            return m_loop.MonotonicMilliseconds() - m_since[job.id] < m_delay;
        });
        return result;
    }

    long long m_delay = 0;  // milliseconds

private:
    EventLoop& m_loop;
    std::map<std::int64_t, long long> m_since;
};

class PrinterBalanceTest : public testing::Test {
protected:
    void Use(std::size_t number, const std::string& name, int limit, const std::string& prs = "") {
        m_options.m_printers[number - 1] = {name, prs, limit};
        m_spooler.PutPrinter(name);
    }
    std::string PrsOf(const std::string& printer) {
        const std::string path = m_around.folder.PathOf(printer + ".prs");
        GeneralOptions options;
        PrinterSelection selection({m_spooler, m_around.files, m_around.loop, m_around.prompts,
                                    m_around.debugLog, options, m_around.Home()});
        std::string message;
        EXPECT_EQ(selection.UsePrinter(printer, message), 0) << message;
        EXPECT_EQ(selection.SavePrinterSettings(path), 0);
        return path;
    }
    void Queue(const std::string& printer, int jobs) {
        for (int i = 0; i < jobs; ++i) m_spooler.PutJob(printer, {});
    }
    std::string ChosenName() { return m_balance.Choose().printer; }
    // One document to the printer that is chosen; its index.
    int Send() {
        const BalanceChoice choice = m_balance.Choose();
        if (choice.index != 0) m_balance.NoteSent(choice, m_spooler.PutDocument(choice.printer));
        return choice.index;
    }

    Surroundings m_around;
    LateSpooler m_spooler{m_around.files, m_around.loop};
    BalanceOptions m_options;
    PrinterBalance m_balance{m_spooler,        m_around.files,    m_around.loop,
                             m_around.prompts, m_around.debugLog, m_options};
};

TEST_F(PrinterBalanceTest, TakesTheFirstPrinterThatHasRoom) {
    Use(1, "A", 3);
    m_spooler.PutPrinter("B");
    Use(2, "B", 0, PrsOf("B"));
    Queue("A", 2);
    EXPECT_EQ(ChosenName(), "A");
    Queue("A", 1);
    const BalanceChoice second = m_balance.Choose();
    EXPECT_EQ(second.index, 2);
    EXPECT_EQ(second.printer, "B");
    EXPECT_EQ(second.prs, PrsOf("B"));
    Queue("B", 500);
    EXPECT_EQ(ChosenName(), "B");
    EXPECT_EQ(m_spooler.CountCalls("MakeDefaultPrinter"), 0);
    // None where all are full, empty or not allowed.
    m_options.m_printers[1].spool = 2;
    const BalanceChoice none = m_balance.Choose();
    EXPECT_EQ(none.index, 0);
    EXPECT_EQ(none.printer, "");
    m_options.m_printers[0].spool = -5;  // no limit
    EXPECT_EQ(m_balance.Choose().index, 1);
    EXPECT_EQ(m_balance.Choose(BalancedSet("0001000000")).index, 0);
    EXPECT_EQ(m_balance.Choose(BalancedSet()).index, 0);
}

TEST_F(PrinterBalanceTest, APrinterThatIsNotReadyIsTakenOnlyWhereNoOtherHasRoom) {
    m_around.debugLog.Open(m_around.files, m_around.folder.PathOf("qpr.log"));
    Use(1, "A", 3);
    Use(2, "B", 2);
    for (const std::uint32_t status :
         {printer_status::kPaused, printer_status::kOffline, printer_status::kNotAvailable,
          printer_status::kPendingDeletion, printer_status::kPaused | printer_status::kTonerLow}) {
        m_spooler.SetPrinterStatus("A", status);
        EXPECT_EQ(ChosenName(), "B") << status;
    }
    EXPECT_THAT(m_around.folder.Read("qpr.log"),
                HasSubstr("Load balancing, printer passed over, it is not ready: A\r\n"));
    for (const std::uint32_t status : {printer_status::kPrinting, printer_status::kTonerLow, 0U}) {
        m_spooler.SetPrinterStatus("A", status);
        EXPECT_EQ(ChosenName(), "A") << status;
    }
    m_spooler.SetPrinterStatus("A", printer_status::kPaused);
    Queue("B", 2);
    EXPECT_EQ(m_balance.Choose().index, 0) << "that one is at its limit is no reason to feed one that stands";
    EXPECT_EQ(m_balance.ChooseWithoutRoom(BalancedSet("0000000011")).printer, "B");
    EXPECT_EQ(m_balance.ChooseWithoutRoom(BalancedSet().set()).index, 0);
    for (const JobInfo& job : m_spooler.TrueJobs("B")) m_spooler.TakeJobAway(job.id);
    m_spooler.SetPrinterStatus("B", printer_status::kPaused);
    EXPECT_EQ(ChosenName(), "A");
    Queue("A", 3);
    EXPECT_EQ(ChosenName(), "B");
    Queue("B", 2);
    EXPECT_EQ(m_balance.Choose().index, 0);
    EXPECT_EQ(m_balance.ChooseWithoutRoom(BalancedSet("0000000011")).printer, "A") << "better than elsewhere";
    // Nor is one taken of which the queue can't be read.
    m_options.m_printers[0] = {"Gone", "", 0};
    m_options.m_printers[1] = {"A", m_around.folder.PathOf("none.prs"), 0};
    m_spooler.SetPrinterStatus("B", 0);
    Use(3, "B", 3);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(ChosenName(), "B");
    ASSERT_EQ(m_around.prompts.boxes.size(), 2U) << "each is told once";
    EXPECT_EQ(m_around.prompts.boxes[0].text, "Printer 1 is passed over: there is no printer \"Gone\".");
    EXPECT_THAT(m_around.prompts.boxes[1].text, HasSubstr("none.prs can't be used"));
    EXPECT_TRUE(m_balance.Choose(BalancedSet("0000000011")).isNoneThere);
    m_spooler.FailListing();
    const BalanceChoice none = m_balance.Choose();
    EXPECT_TRUE(none.index == 0 && !none.isNoneThere);
}

TEST_F(PrinterBalanceTest, InTurnGoesOnBehindThePrinterUsedLast) {
    m_options.m_roundRobin = true;
    Use(2, "A", 2);
    Use(5, "B", 1);
    Use(10, "C", 0);
    std::vector<int> used(7);
    for (int& index : used) index = Send();
    EXPECT_THAT(used, ElementsAre(2, 5, 10, 2, 10, 10, 10));
    m_balance.NoteFailed({2, "A", ""});
    EXPECT_EQ(m_balance.Choose().index, 10) << "5 is full";
    EXPECT_EQ(m_balance.Choose().index, m_balance.Choose().index);  // choosing alone moves nothing on
}

TEST_F(PrinterBalanceTest, JobsThatAreNotListedYetCountForATime) {
    Use(1, "A", 2);
    Use(2, "B", 1);
    m_spooler.m_delay = 800;
    EXPECT_EQ(Send(), 1);
    EXPECT_EQ(Send(), 1);
    EXPECT_EQ(Send(), 2);
    EXPECT_EQ(Send(), 0);
    m_around.loop.Advance(800);
    EXPECT_EQ(Send(), 0);  // now they are listed, and count once
    for (const char* name : {"A", "B"})
        for (const JobInfo& job : m_spooler.TrueJobs(name)) m_spooler.TakeJobAway(job.id);
    EXPECT_EQ(Send(), 1);
}

TEST_F(PrinterBalanceTest, JobsThatLeaveUnseenGiveTheirRoomBack) {
    Use(1, "A", 2);
    m_spooler.m_delay = 800;
    const BalanceChoice choice = m_balance.Choose();
    m_balance.NoteSent(choice, 77);
    m_balance.NoteSent(choice, 78);
    EXPECT_EQ(m_balance.Choose().index, 0);
    m_balance.NoteSeen(choice, 77);
    EXPECT_EQ(m_balance.Choose().index, 1);
    m_balance.NoteSent(choice, 79);
    EXPECT_EQ(m_balance.Choose().index, 0);
    m_around.loop.Advance(UnseenJobs::kLongestMilliseconds - 1);
    EXPECT_EQ(m_balance.Choose().index, 0);
    m_around.loop.Advance(1);
    EXPECT_EQ(m_balance.Choose().index, 1);
    // One that was handed over later is listed: the earlier one is gone.
    m_balance.NoteSent(choice, 80);
    m_spooler.m_delay = 0;
    m_balance.NoteSent(choice, m_spooler.PutDocument("A"));
    EXPECT_EQ(m_balance.Choose().index, 1);
    m_balance.NoteSent(choice, 0);  // unknown
    EXPECT_EQ(m_balance.Choose().index, 1);
}

// A thousand documents over ten printers, jobs leaving at random, listed late or not.
TEST_F(PrinterBalanceTest, NoPrinterGetsAboveItsLimitAndEachKeepsTheOrder) {
    for (const unsigned seed : {1U, 2U, 3U, 4U}) {
        std::mt19937 random(seed);
        const auto below = [&](int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); };
        m_options.m_roundRobin = seed % 2 == 0;
        m_spooler.m_delay = seed < 3 ? 0 : below(UnseenJobs::kLongestMilliseconds);
        for (std::size_t i = 1; i <= kBalancedPrinters; ++i)
            Use(i, std::to_string(seed) + "/" + std::to_string(i), 1 + below(4));
        std::map<int, std::vector<std::int64_t>> sent;
        int waits = 0;
        for (int documents = 0; documents < 1000;) {
            ASSERT_LT(++waits, 100'000);
            const int index = Send();
            for (std::size_t i = 0; i < kBalancedPrinters; ++i) {
                const BalancedPrinter& printer = m_options.m_printers[i];
                const std::vector<JobInfo> jobs = m_spooler.TrueJobs(printer.name);
                ASSERT_LE(static_cast<int>(jobs.size()), printer.spool) << printer.name;
                if (static_cast<int>(i) + 1 == index) {
                    ASSERT_TRUE(sent[index].empty() || sent[index].back() < jobs.back().id);
                    sent[index].push_back(jobs.back().id);
                }
                if (!jobs.empty() && below(4) == 0) m_spooler.TakeJobAway(jobs.front().id);
            }
            documents += index != 0 ? 1 : 0;
            m_around.loop.Advance(below(300));
        }
        if (m_options.m_roundRobin) {
            EXPECT_EQ(sent.size(), kBalancedPrinters);
        }
    }
}

TEST_F(PrinterBalanceTest, TheChoiceBecomesTheDefaultPrinterOrItsSettingsAreLoaded) {
    GeneralOptions options;
    PrinterSelection selection({m_spooler, m_around.files, m_around.loop, m_around.prompts, m_around.debugLog,
                                options, m_around.Home()});
    Use(1, "A", 0);
    Use(2, "B", 0);
    std::string message;
    ASSERT_EQ(selection.UsePrinter("B", message), 0) << message;
    const std::string prs = m_around.folder.PathOf("b.prs");
    ASSERT_EQ(selection.SavePrinterSettings(prs), 0);
    const auto use = [&](const BalanceChoice& choice) {
        return UseBalancedPrinter(choice, selection, m_around.prompts, message);
    };
    EXPECT_EQ(use({1, "A", ""}), 0);
    EXPECT_EQ(selection.CurrentPrinter(), "A");
    // What items have set holds on the other printer, too.
    EXPECT_TRUE(selection.ApplyItem("3.papercopies").isApplied);
    EXPECT_EQ(use({2, "B", ""}), 0);
    EXPECT_EQ(selection.Ticket().copies, 3);
    EXPECT_EQ(use({1, "A", ""}), 0);
    EXPECT_EQ(use({2, "B", prs}), 0);
    EXPECT_EQ(selection.CurrentPrinter(), "B");
    EXPECT_EQ(m_spooler.DefaultPrinter(), "A");
    // The queue of the printer that the settings file names counts, whatever the options call it.
    m_options.m_printers[2] = {"A", prs, 2};
    const BalancedSet third("0000000100");
    EXPECT_EQ(m_balance.Choose(third).printer, "B");
    Queue("A", 5);
    EXPECT_EQ(m_balance.Choose(third).printer, "B");
    Queue("B", 2);
    EXPECT_EQ(m_balance.Choose(third).index, 0);
    EXPECT_EQ(use({}), 0);
    EXPECT_EQ(selection.CurrentPrinter(), "B");
    EXPECT_EQ(use({3, "Nobody", ""}), -1);
    EXPECT_EQ(message, "There is no printer \"Nobody\".");
    message.clear();
    EXPECT_EQ(use({2, "B", prs + ".missing"}), -1);
    EXPECT_NE(message, "");
}

}  // namespace
}  // namespace quirepress
