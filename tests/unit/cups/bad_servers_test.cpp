#include "cups_fixture.h"

namespace quirepress {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

const std::string kFewBytes = "%!PS\nshowpage\n";
const std::string kManyBytes(20'000'000, 'x');

class BadServersTest : public CupsFixture {
protected:
    // A call to a server that does this with every connection: what it gives, and in which time.
    std::string AskServer(const LoopbackServer::Serve& serve, long long& milliseconds) {
        const LoopbackServer server(serve);
        UseServer(server.Address());
        std::vector<JobInfo> jobs;
        milliseconds = Measure([&] { EXPECT_EQ(spooler.ListJobs("Any", jobs), -1); });
        return spooler.LastFailure().text;
    }
};

TEST_F(BadServersTest, NobodyThere) {
    UseServer("127.0.0.1:1");
    std::vector<PrinterInfo> printers;
    const long long first = Measure([&] { EXPECT_EQ(spooler.ListPrinters(printers), -1); });
    // A restart is waited for, once.
    EXPECT_GT(first, 3'000);
    EXPECT_LT(first, 8'000);
    EXPECT_GT(passes, 10);
    EXPECT_THAT(spooler.LastFailure().text, HasSubstr("the print server can't be reached"));
    const long long further = Measure([&] {
        EXPECT_EQ(spooler.OpenRawPrinter("Any", error), nullptr);
        EXPECT_EQ(spooler.DefaultPrinter(), "");
    });
    EXPECT_LT(further, 1'000);
    EXPECT_EQ(error, CupsFailure::kAway);
}

TEST_F(BadServersTest, OneThatNeverAnswers) {
    const LoopbackServer server(LoopbackServer::Swallow);
    UseServer(server.Address());
    std::vector<PrinterInfo> printers;
    const long long first = Measure([&] { EXPECT_EQ(spooler.ListPrinters(printers), -1); });
    EXPECT_GT(first, 8'000);
    EXPECT_LT(first, 14'000);
    EXPECT_GT(passes, 100);
    EXPECT_EQ(spooler.LastFailure().text, "the print server does not answer");
    EXPECT_LT(Measure([&] { EXPECT_EQ(spooler.OpenRawPrinter("Any", error), nullptr); }), 4'000);
    EXPECT_EQ(error, CupsFailure::kNoAnswer);
}

TEST_F(BadServersTest, OnesThatAnswerNonsense) {
    long long milliseconds = 0;
    for (const std::string& nonsense :
         {std::string("SSH-2.0-OpenSSH_9.2\r\n"), std::string(100'000, '\0'),
          std::string(
              "HTTP/1.1 200 OK\r\nContent-Length: 9\r\nContent-Type: application/ipp\r\n\r\nnonsense!"),
          std::string("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n"),
          std::string("HTTP/1.1 200 OK\r\nContent-Length: 8\r\n\r\n\2\1\0\0\0\0\0\1", 46)}) {
        const auto answer = [&](int socket) {
            LoopbackServer::ReadHead(socket);
            LoopbackServer::Say(socket, nonsense);
        };
        EXPECT_NE(AskServer(answer, milliseconds), "") << nonsense.substr(0, 40);
        EXPECT_LT(milliseconds, 12'000);
    }
}

TEST_F(BadServersTest, OneWhoseEndCutsAnAnswerShortIsWaitedFor) {
    const auto die = [](int socket) {
        LoopbackServer::ReadHead(socket);
        LoopbackServer::Say(socket, "HTTP/1.1 200 OK\r\nContent-Length: 500\r\n\r\n\2\1");
    };
    long long milliseconds = 0;
    EXPECT_EQ(AskServer(die, milliseconds), "the print server ended the connection");
    std::vector<PrinterInfo> printers;
    EXPECT_GT(Measure([&] { EXPECT_EQ(spooler.ListPrinters(printers), -1); }), 3'000);
}

TEST_F(BadServersTest, OnesThatRefuseOrHangUp) {
    const auto answer = [](const std::string& head) {
        return [head](int socket) {
            LoopbackServer::ReadHead(socket);
            LoopbackServer::Say(socket, "HTTP/1.1 " + head + "Content-Length: 0\r\n\r\n");
        };
    };
    const std::string askForPassword =
        "401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"CUPS\"\r\nConnection: close\r\n";
    long long milliseconds = 0;
    EXPECT_EQ(AskServer(answer(askForPassword), milliseconds), "the print server asks for a password");
    EXPECT_LT(milliseconds, 3'000);
    EXPECT_EQ(spooler.LastFailure().number, CupsFailure::kPassword);
    EXPECT_THAT(AskServer(answer("503 Service Unavailable\r\n"), milliseconds),
                HasSubstr("the print server refuses"));
    EXPECT_LT(milliseconds, 3'000);
    EXPECT_EQ(AskServer([](int) {}, milliseconds), "the print server ended the connection");
    EXPECT_LT(milliseconds, 3'000);
}

// With a real server behind it.
class FailingServerTest : public BadServersTest {
protected:
    FailingServerTest() {
        cups.UseHere();
        cups.AddRawQueue("Raw");
        cups.Pause("Raw");
        // A server writes what it knows after a while, and when it is stopped.
        cups.Stop();
        EXPECT_TRUE(cups.Start());
    }

    // A raw document of which the first half has been given to the spooler.
    std::unique_ptr<RawPrinter> SendHalf(const std::string& bytes) {
        auto raw = spooler.OpenRawPrinter("Raw", error);
        EXPECT_NE(raw, nullptr);
        EXPECT_EQ(raw->StartDocument({"half"}), 0);
        EXPECT_EQ(raw->WriteChunk(bytes.data(), bytes.size() / 2), 0);
        return raw;
    }
    static int SendRest(RawPrinter& raw, const std::string& bytes) {
        return raw.WriteChunk(bytes.data() + bytes.size() / 2, bytes.size() - bytes.size() / 2);
    }

    PrivateCups cups{services};
};

TEST_F(FailingServerTest, AKilledServerHasNoHalfJob) {
    const auto raw = SendHalf(kManyBytes);
    cups.Kill();
    EXPECT_EQ(SendRest(*raw, kManyBytes), -1);
    EXPECT_EQ(raw->WriteChunk("x", 1), -1);
    EXPECT_NE(raw->SystemError(), 0);
    EXPECT_EQ(raw->Finish(), -1);
    EXPECT_EQ(raw->JobId(), 0);
    ASSERT_TRUE(cups.Start());
    EXPECT_THAT(Jobs("Raw"), IsEmpty());
}

TEST_F(FailingServerTest, ASmallDocumentOutlivesARestart) {
    const auto raw = SendHalf(kFewBytes);
    cups.Stop();
    EXPECT_EQ(SendRest(*raw, kFewBytes), 0);
    services.loop->StartTimer(1, 700, [this] {
        services.loop->StopTimer(1);
        EXPECT_TRUE(cups.Start());
    });
    EXPECT_EQ(raw->Finish(), 0);
    const std::vector<JobInfo> jobs = Jobs("Raw");
    ASSERT_EQ(jobs.size(), 1U);
    EXPECT_EQ(jobs[0].id, raw->JobId());
    cups.Resume("Raw");
    ASSERT_TRUE(cups.AwaitCaptured(1));
    EXPECT_EQ(cups.Captured()[0].bytes, kFewBytes);
}

TEST_F(FailingServerTest, ALostAnswerLeavesTheOutcomeOpen) {
    for (const std::string& bytes : {kFewBytes, kManyBytes}) {
        std::atomic<bool> loseAnswers = false;
        const LoopbackServer between(
            [&](int socket) { LoopbackServer::PassOn(socket, cups.Address(), loseAnswers); });
        UseServer(between.Address());
        const auto raw = SendHalf(bytes);
        EXPECT_EQ(SendRest(*raw, bytes), 0);
        loseAnswers = true;
        EXPECT_EQ(raw->Finish(), 1);
        EXPECT_NE(raw->SystemError(), 0);
        loseAnswers = false;
        // Here there is a job, and only one: nothing was sent again.
        EXPECT_EQ(Jobs("Raw").size(), bytes.size() == kFewBytes.size() ? 1U : 2U);
        cups.UseHere();
    }
}

TEST_F(FailingServerTest, AFrozenServerIsGivenUp) {
    const std::string document(60'000'000, 'x');  // more than the system takes in between
    const auto raw = SendHalf(document);
    cups.Freeze(true);
    const long long time = Measure([&] {
        EXPECT_EQ(SendRest(*raw, document), -1);
        EXPECT_EQ(raw->Finish(), -1);
    });
    EXPECT_LT(time, 15'000);
    EXPECT_GT(passes, 50);
    EXPECT_EQ(raw->SystemError(), CupsFailure::kNoAnswer);
    cups.Freeze(false);
    EXPECT_THAT(Jobs("Raw"), IsEmpty());
}

// Network printers behind the server that take raw bytes.
class FailingPrinterTest : public CupsFixture {
protected:
    FailingPrinterTest() { cups.UseHere(); }

    void AddPrinter(const LoopbackServer& printer) {
        cups.AddQueue("Printer", "socket://" + printer.Address());
    }
    template <typename Condition>
    bool Await(Condition condition) {
        for (int i = 0; i < 3'000 && !condition(); ++i) services.loop->Wait(5);
        return condition();
    }

    PrivateCups cups{services, {0, 30, "retry-current-job"}};
};

TEST_F(FailingPrinterTest, AJobThatStallsIsShownAndCanBeCancelled) {
    const LoopbackServer printer(LoopbackServer::Stall);
    AddPrinter(printer);
    ASSERT_EQ(PrintRaw("Printer", "stalls", kManyBytes), 0);
    const std::int64_t stalled = jobId;
    ASSERT_EQ(PrintRaw("Printer", "waits", kManyBytes), 0);
    ASSERT_TRUE(Await([&] { return printer.Connections() == 1; }));
    const std::vector<JobInfo> jobs = Jobs("Printer");
    ASSERT_EQ(jobs.size(), 2U);
    EXPECT_EQ(jobs[0].id, stalled);
    EXPECT_EQ(jobs[0].statusBits, job_status::kPrinting);
    EXPECT_EQ(jobs[1].statusBits, 0U);
    EXPECT_NE(Printer("Printer").statusBits & printer_status::kPrinting, 0U);
    EXPECT_EQ(spooler.ChangeJobPriority("Printer", stalled, 99), -1);
    EXPECT_EQ(spooler.CancelJob("Printer", stalled), 0);
    EXPECT_TRUE(Await([&] { return printer.Connections() == 2; }));  // the next one's turn
    EXPECT_EQ(Jobs("Printer").size(), 1U);
}

TEST_F(FailingPrinterTest, AConnectionThatIsResetLeavesTheJobInTheQueue) {
    std::atomic<bool> takes = false;
    std::string received;
    {
        const LoopbackServer printer([&](int socket) {
            if (takes)
                received = LoopbackServer::ReadAll(socket);
            else
                LoopbackServer::Reset(socket);
        });
        AddPrinter(printer);
        ASSERT_EQ(PrintRaw("Printer", "reset", kManyBytes), 0);
        ASSERT_TRUE(Await([&] { return printer.Connections() >= 1; }));
        EXPECT_EQ(Jobs("Printer").size(), 1U);
        takes = true;
        EXPECT_TRUE(Await([&] { return Jobs("Printer").empty(); }));
    }
    EXPECT_TRUE(received == kManyBytes);
}

class LimitedServerTest : public CupsFixture {
protected:
    PrivateCups cups{services, {3}};
};

TEST_F(LimitedServerTest, TooManyJobsAreSentLater) {
    cups.UseHere();
    cups.AddRawQueue("Raw");
    cups.Pause("Raw");
    for (int i = 0; i < 3; ++i) ASSERT_EQ(PrintRaw("Raw", "a", "a"), 0);
    services.loop->StartTimer(1, 500, [&] {
        services.loop->StopTimer(1);
        cups.Resume("Raw");
    });
    EXPECT_EQ(PrintRaw("Raw", "a", "a"), 0);
    EXPECT_TRUE(cups.AwaitCaptured(4));
    EXPECT_EQ(cups.Captured().size(), 4U);
}

}  // namespace
}  // namespace quirepress
