#include "core/job_wait.h"

#include "core/print_run_ways.h"
#include "unit/core/print_run_fixture.h"

namespace quirepress {
namespace {

class JobWaitTest : public testing::Test, protected RunStage<FakeSpooler> {
protected:
    struct Feedback : public WayFeedback {
        void ShowRowStatus(std::string_view status) override { statuses.emplace_back(status); }
        void ShowBytes(std::int64_t, std::int64_t) override {}
        bool IsStopped() const override { return isStopped; }
        bool KeepGoing() override { return !isStopped; }
        std::vector<std::string> statuses;
        bool isStopped = false;
    };

    std::int64_t PutJob(std::uint32_t statusBits, std::string_view document = "a.doc") {
        JobInfo job;
        job.document = document;
        job.statusBits = statusBits;
        return spooler.PutJob("Laser", job);
    }
    void At(long long milliseconds, std::function<void()> action) {
        const long long due = loop.MonotonicMilliseconds() + milliseconds;
        InPump([this, due] { return loop.MonotonicMilliseconds() >= due; }, std::move(action));
    }
    // How long it took.
    long long AwaitAccepted(std::int64_t id) {
        const long long start = loop.MonotonicMilliseconds();
        wait.ForAcceptedJob("Laser", "/x/a.ps", id, feedback);
        return loop.MonotonicMilliseconds() - start;
    }
    JobWait::End AwaitForeign() {
        begun = loop.MonotonicMilliseconds();
        const JobWait::End end = wait.ForForeignJob("Laser", "/x/a.doc", feedback);
        waited = loop.MonotonicMilliseconds() - begun;
        return end;
    }

    Feedback feedback;
    JobWait wait{watch, loop, debugLog, options};
    long long begun = 0, waited = 0;
};

TEST_F(JobWaitTest, AnAcceptedJobHoldsTheRunOnlyInTroubleAndOnlyWhenAskedTo) {
    const std::int64_t id = PutJob(job_status::kPaperOut);
    EXPECT_EQ(AwaitAccepted(id), 0);

    options.m_waitForPrinter = true;
    At(60'000, [&] { spooler.SetJobStatus(id, job_status::kPrinting); });
    EXPECT_GE(AwaitAccepted(id), 60'000);
    EXPECT_EQ(AwaitAccepted(id), 0);
    EXPECT_EQ(AwaitAccepted(id + 1), 0) << "it has left the queue";

    spooler.SetPrinterStatus("Laser", printer_status::kOffline | printer_status::kTonerLow);
    At(20'000, [&] { spooler.SetPrinterStatus("Laser", printer_status::kTonerLow); });
    EXPECT_GE(AwaitAccepted(id), 20'000) << "the printer itself tells of its trouble";
    spooler.SetPrinterStatus("Laser", printer_status::kOffline);
    EXPECT_EQ(AwaitAccepted(id + 1), 0);
    spooler.SetPrinterStatus("Laser", 0);

    spooler.SetUntried(id, true);
    At(3'000, [&] { spooler.SetUntried(id, false); });
    const long long tried = AwaitAccepted(id);
    EXPECT_TRUE(tried >= 3'000 && tried < 3'500) << tried;
    spooler.SetUntried(id, true);
    EXPECT_LT(AwaitAccepted(id), 100'000) << "not for ever";

    options.m_waitForPrinter = false;
    EXPECT_EQ(AwaitAccepted(id), 0);
    options.m_showPrinterAttention = true;
    const std::int64_t second = PutJob(0);
    spooler.SetJobStatus(id, job_status::kPaperOut);
    At(30'000, [&] { spooler.TakeJobAway(id); });
    EXPECT_GE(AwaitAccepted(second), 30'000) << "the first job of the queue wants attention";

    options.m_waitForPrinter = true;
    spooler.SetJobStatus(second, job_status::kError);
    At(1'000, [&] { feedback.isStopped = true; });
    EXPECT_LT(AwaitAccepted(second), 2'000);
}

TEST_F(JobWaitTest, AQueueThatStopsUnderAJobHoldsTheRunAndOneThatWasPausedBeforeDoesNot) {
    options.m_waitForPrinter = true;
    spooler.SetPrinterStatus("Laser", printer_status::kPaused);
    watch.BeginRun();
    const std::int64_t id = PutJob(0);
    EXPECT_EQ(AwaitAccepted(id), 0);
    spooler.SetPrinterStatus("Laser", 0);
    EXPECT_EQ(AwaitAccepted(id), 0);
    spooler.SetPrinterStatus("Laser", printer_status::kPaused);
    At(60'000, [&] { spooler.SetPrinterStatus("Laser", 0); });
    EXPECT_GE(AwaitAccepted(id), 60'000);

    constexpr std::uint32_t kHeldBack = job_status::kPaused | job_status::kError;
    const std::int64_t next = PutJob(0);
    spooler.SetJobStatus(id, kHeldBack);
    At(10'000, [&] { spooler.SetJobStatus(id, job_status::kPrinting); });
    At(20'000, [&] { spooler.SetJobStatus(id, kHeldBack); });
    At(50'000, [&] { spooler.TakeJobAway(next); });
    EXPECT_GE(AwaitAccepted(next), 50'000) << "another try is no sign of health";
    const std::int64_t last = PutJob(0);
    At(5'000, [&] { spooler.SetJobStatus(last, job_status::kPaused); });
    EXPECT_LT(AwaitAccepted(last), 6'000) << "somebody holds it";
    spooler.TakeJobAway(id);
    EXPECT_EQ(AwaitAccepted(PutJob(0)), 0);
}

TEST_F(JobWaitTest, AForeignJobIsAwaitedForTheAllowance) {
    options.m_timeAllow = 5'000;
    options.m_printerChangeDelay = 20;
    EXPECT_EQ(AwaitForeign(), JobWait::End::kNotSeen);
    EXPECT_GE(waited, 7'000);
    EXPECT_LT(waited, 8'000);

    At(3'000, [&] { PutJob(job_status::kSpooling); });
    std::int64_t moved = 0;
    for (int second = 6; second <= 30; second += 4)
        At(second * 1'000, [&] { spooler.SetJobPages(1, ++moved, 0); });
    At(32'000, [&] { spooler.SetJobStatus(1, job_status::kPrinting); });
    EXPECT_EQ(AwaitForeign(), JobWait::End::kSpooled) << "it moved all the time";
    EXPECT_GE(waited, 32'000);

    wait.BeginForeignJob("Laser");
    EXPECT_EQ(AwaitForeign(), JobWait::End::kNotSeen) << "the job of the item before";
    PutJob(job_status::kPrinted);
    EXPECT_EQ(AwaitForeign(), JobWait::End::kSpooled);

    PutJob(job_status::kSpooling);
    EXPECT_EQ(AwaitForeign(), JobWait::End::kNotSeen) << "it hangs";

    feedback.isStopped = true;
    EXPECT_EQ(AwaitForeign(), JobWait::End::kBegun);
    PutJob(job_status::kOffline);
    EXPECT_EQ(AwaitForeign(), JobWait::End::kSpooled) << "it only waits for its printer";
    wait.BeginForeignJob("Laser");
    EXPECT_EQ(AwaitForeign(), JobWait::End::kStopped);
    options.m_dontCheckSpoolerForPrint = true;
    EXPECT_EQ(AwaitForeign(), JobWait::End::kSpooled);
}

TEST_F(JobWaitTest, AForeignJobThatIsOverBetweenTwoLooksIsSeenAllTheSame) {
    spooler.KeepHistory(true);
    const auto afterwards = [&](std::uint32_t statusBits) {
        wait.BeginForeignJob("Laser");
        At(300, [this, statusBits] {
            spooler.SetJobStatus(PutJob(0), statusBits, statusBits != 0 ? "jammed" : "");
            spooler.TakeJobAway(PutJob(0, "other") - 1);
        });
        return AwaitForeign();
    };
    EXPECT_EQ(afterwards(0), JobWait::End::kSpooled);
    EXPECT_LT(waited, 1'000);
    EXPECT_EQ(afterwards(job_status::kError), JobWait::End::kLost);
    EXPECT_EQ(wait.Loss(), "the print system gave its job up: jammed");
    EXPECT_EQ(afterwards(job_status::kDeleted), JobWait::End::kLost);
    EXPECT_EQ(wait.Loss(), "its job was cancelled: jammed");

    wait.BeginForeignJob("Laser");
    EXPECT_EQ(AwaitForeign(), JobWait::End::kNotSeen) << "those of the items before";
    spooler.FailListing();
    wait.BeginForeignJob("Laser");
    At(100, [&] { spooler.StopFailing(); });
    EXPECT_EQ(AwaitForeign(), JobWait::End::kNotSeen) << "which ones are old could not be told";

    wait.BeginForeignJob("Laser");
    const std::int64_t id = PutJob(job_status::kSpooling);
    At(1'000, [&] { spooler.CancelJob("Laser", id); });
    EXPECT_EQ(AwaitForeign(), JobWait::End::kLost) << "while it was being written";
}

}  // namespace
}  // namespace quirepress
