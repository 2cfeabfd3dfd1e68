#include "documents/pdf_worker.h"

#include <gtest/gtest.h>

#include <functional>

#include "documents/pdf_worker_messages.h"
#include "fakes/stand_in_workers.h"
#include "fakes/surroundings.h"
#include "unit/documents/pdf_samples.h"

namespace quirepress {
namespace {

using namespace std::string_literals;

class PdfWorkerTest : public testing::Test, protected Surroundings {
protected:
    PdfWorkerTest() {
        workers.answer = [this](const std::string& line) {
            EXPECT_TRUE(ParseRequest(line, requests.emplace_back())) << line;
            return answer(requests.back());
        };
    }
    long long Count(std::string_view path = "a.pdf") { return worker.CountPages(path, false, ""); }

    std::function<std::string(const PdfWorkerRequest&)> answer = [](const PdfWorkerRequest&) {
        return "pages 3\n";
    };
    std::vector<PdfWorkerRequest> requests;
    StandInWorkers workers;
    PdfWorker worker{workers, loop, files, "/opt/qpr", {5'000, 1 << 20}};
};

TEST_F(PdfWorkerTest, OneProcessServesManyFiles) {
    EXPECT_TRUE(workers.starts.empty()) << "not before it is needed";
    EXPECT_EQ(Count("/a \n\xFF.pdf"), 3);
    EXPECT_EQ(worker.CountPages("b.pdf", true, "se cret\n"), 3);
    ASSERT_EQ(workers.starts.size(), 1U);
    EXPECT_EQ(workers.starts[0].arguments, (std::vector<std::string>{"/opt/qpr", "pdf-worker"}));
    EXPECT_EQ(workers.starts[0].memoryLimit, 1 << 20);
    EXPECT_TRUE(workers.starts[0].pipes);
    EXPECT_EQ(requests[0].path, "/a \n\xFF.pdf");
    EXPECT_FALSE(requests[0].full);
    EXPECT_EQ(requests[1].password, "se cret\n");
    EXPECT_TRUE(requests[1].full);
}

TEST_F(PdfWorkerTest, BadAnswersCostThatFileAndThatProcess) {
    const auto good = answer;
    for (const std::string& bad :
         {""s, "!"s, "pages 7!"s, "pages seven\n"s, "\n"s, "pages -2\n"s, "pages 1\npages 2\n"s,
          std::string(100'000, 'x'), "pages 99999999999999999999\n"s, "\0\xFF\n"s}) {
        answer = [&](const PdfWorkerRequest&) { return bad; };
        EXPECT_EQ(Count(), -1) << bad.substr(0, 40);
        EXPECT_EQ(workers.alive, 0) << bad.substr(0, 40);
        answer = good;
        EXPECT_EQ(Count(), 3);
        EXPECT_EQ(workers.alive, 1);
        answer = [&](const PdfWorkerRequest&) { return "pages 4\n!"s; };
        EXPECT_EQ(Count(), 4);
        answer = good;
    }
    answer = [](const PdfWorkerRequest&) { return "pages -1\r\n"s; };
    EXPECT_EQ(Count(), -1) << "an honest answer";
    EXPECT_EQ(workers.alive, 1);
}

TEST_F(PdfWorkerTest, ColoursAndNewFilesAreAskedForInTheSameWay) {
    std::vector<PageColor> pages;
    answer = [](const PdfWorkerRequest&) { return "result 0 mcu\n"s; };
    EXPECT_EQ(worker.InspectColors("/a.pdf", "pw", 7, pages), PdfResult::kDone);
    EXPECT_EQ(pages, (std::vector<PageColor>{PageColor::kMono, PageColor::kColor, PageColor::kUndecided}));
    answer = [](const PdfWorkerRequest&) { return "result 4 \n"s; };
    EXPECT_EQ(worker.ExtractPages("/a.pdf", "pw", {{1, 3}, {7, 7}}, "/b c.pdf"), PdfResult::kNotWritten);
    EXPECT_EQ(worker.InspectColors("/a.pdf", "", 0, pages), PdfResult::kNotWritten);
    EXPECT_EQ(pages.size(), 3U) << "as they were";
    EXPECT_EQ(workers.starts.size(), 1U);
    EXPECT_EQ(requests[0].tolerance, 7);
    EXPECT_EQ(requests[1].target, "/b c.pdf");
    ASSERT_EQ(requests[1].ranges.size(), 2U);
    EXPECT_EQ(requests[1].ranges[0].last, 3);
    EXPECT_EQ(requests[1].ranges[1].first, 7);
    for (const std::string& bad : {"result 6 \n"s, "result 0 mx\n"s, "result 0\n"s, "result -1 \n"s,
                                   "pages 3\n"s, "result 0 \n"s, "result 0 m!"s, ""s}) {
        answer = [&](const PdfWorkerRequest&) { return bad; };
        EXPECT_EQ(worker.InspectColors("/a.pdf", "", 0, pages), PdfResult::kGaveUp) << bad;
    }
    const long long start = loop.MonotonicMilliseconds();
    answer = [](const PdfWorkerRequest&) { return ""s; };
    const std::string target = folder.PathOf("b.pdf");
    folder.Write("b.pdf.part", "half");
    EXPECT_EQ(worker.ExtractPages("/a.pdf", "", {kAllPdfPages}, target), PdfResult::kGaveUp);
    EXPECT_FALSE(folder.Has("b.pdf.part")) << "its process is gone";
    EXPECT_LT(loop.MonotonicMilliseconds() - start, 50'100);
    EXPECT_EQ(workers.alive, 0);
}

TEST_F(PdfWorkerTest, FormsAreFilledInTheSameWay) {
    FormFilling filling;
    answer = [](const PdfWorkerRequest&) {
        const FormFilling made{"a b.pdf", "why\n not", {"x,y", "\xFF"}};
        return FormatFilling(PdfResult::kUnreadable, made) + "\n";
    };
    EXPECT_EQ(worker.FillForm("/a.fdf", "pw", "/b c.pdf", filling), PdfResult::kUnreadable);
    EXPECT_EQ(requests[0].target, "/b c.pdf");
    EXPECT_EQ(requests[0].password, "pw");
    EXPECT_EQ(filling.form, "a b.pdf");
    EXPECT_EQ(filling.flaw, "why\n not");
    EXPECT_EQ(filling.unknownFields, (std::vector<std::string>{"x,y", "\xFF"}));
    for (const std::string& bad : {"filled 0\n"s, "filled 9   \n"s, "filled 0  6  \n"s, "filled 0   6g\n"s,
                                   "result 0 \n"s, "filled 0   !"s, ""s}) {
        answer = [&](const PdfWorkerRequest&) { return bad; };
        folder.Write("b.pdf.part", "half");
        EXPECT_EQ(worker.FillForm("/a.fdf", "", folder.PathOf("b.pdf"), filling), PdfResult::kGaveUp) << bad;
        EXPECT_EQ(filling.flaw, "the file takes too long, or too much memory");
        EXPECT_FALSE(folder.Has("b.pdf.part"));
    }
}

TEST_F(PdfWorkerTest, AHungProcessIsGivenUpInTime) {
    answer = [](const PdfWorkerRequest&) { return ""s; };
    const long long start = loop.MonotonicMilliseconds();
    EXPECT_EQ(Count(), -1);
    const long long took = loop.MonotonicMilliseconds() - start;
    EXPECT_GE(took, 5'000);
    EXPECT_LT(took, 5'100);
    EXPECT_GT(loop.PumpCount(), 100) << "the program went on meanwhile";
}

TEST_F(PdfWorkerTest, AStopEndsTheWaitAndTheProcess) {
    bool isStopped = false;
    worker.UseStop([&] { return isStopped; });
    EXPECT_EQ(Count(), 3);
    answer = [](const PdfWorkerRequest&) { return ""s; };
    const std::string target = folder.PathOf("new.pdf");
    folder.Write("new.pdf.part", "half");
    loop.StartTimer(1, 1'000, [&] { isStopped = true; });
    const long long start = loop.MonotonicMilliseconds();
    EXPECT_EQ(worker.ExtractPages("a.pdf", "", {{1, 1}}, target), PdfResult::kGaveUp);
    EXPECT_LE(loop.MonotonicMilliseconds() - start, 1'100);
    EXPECT_EQ(workers.alive, 0);
    EXPECT_FALSE(folder.Has("new.pdf.part"));
    loop.StopTimer(1);
    isStopped = false;
    answer = [](const PdfWorkerRequest&) { return "pages 4\n"s; };
    EXPECT_EQ(Count(), 4);
}

TEST_F(PdfWorkerTest, CallsFromWithinTheWaitHaveTheirOwnProcess) {
    answer = [](const PdfWorkerRequest& request) { return request.path == "slow" ? ""s : "pages 3\n"s; };
    long long inner = 0;
    loop.StartTimer(1, 1'000, [&] {
        loop.StopTimer(1);
        inner = Count("quick");
    });
    EXPECT_EQ(Count("slow"), -1);
    EXPECT_EQ(inner, 3);
    EXPECT_EQ(Count(), 3);
    EXPECT_EQ(workers.starts.size(), 2U);
    workers.startFails = true;
    EXPECT_EQ(PdfWorker(workers, loop, files, "/none", {}).CountPages("a.pdf", false, ""), -1);
}

TEST(PdfWorkerSide, AnswersEveryLineUntilTheEnd) {
    const TemporaryFolder folder;
    const Services services = MakeSystemServices();
    const std::string plain = folder.Write("a b.pdf", MakePdf(12));
    const std::string hidden =
        folder.Write("hidden.pdf", Encrypted(MakePdf(7), Cipher::kAes256, "secret", true));
    MemoryTerminal terminal;
    terminal.input = {
        FormatRequest({plain, false, ""}),
        FormatRequest({hidden, true, "secret"}),
        FormatRequest({hidden, true, ""}),
        FormatRequest({folder.PathOf("missing.pdf"), false, ""}),
        FormatRequest({folder.Write("junk.pdf", "junk"), false, ""}),
        "",
        "quick 6g ",
        "quick 616 ",
        "slow 61 62",
        "quick 61",
        FormatRequest({plain, false, "", PdfWorkerRequest::Task::kColors}),
        FormatRequest({hidden, false, "", PdfWorkerRequest::Task::kColors}),
        FormatRequest({folder.PathOf("missing.pdf"), false, "", PdfWorkerRequest::Task::kColors}),
        FormatRequest({hidden,
                       false,
                       "secret",
                       PdfWorkerRequest::Task::kExtract,
                       0,
                       {{2, 3}},
                       folder.PathOf("two.pdf")}),
        FormatRequest({folder.PathOf("two.pdf"), true, ""}),
        "colors 61 62 101",
        "colors 61 62 01",
        "extract 61 62 63 1-2,",
        "extract 61 62 63 1-99999999999",
        "extract 61 62 63",
        FormatRequest({plain, true, "any"})};
    EXPECT_EQ(RunPdfWorker(*services.files, terminal), 0);
    EXPECT_EQ(terminal.output,
              "pages 12\npages 7\npages -1\npages -1\npages -1\npages -1\npages -1\npages -1\npages "
              "-1\npages -1\nresult 0 mmmmmmmmmmmm\nresult 2 \nresult 1 \nresult 0 \npages 2\npages "
              "-1\npages -1\npages -1\npages -1\npages -1\npages 12\n");
    terminal.input = {"", ""};
    terminal.closed = true;
    EXPECT_EQ(RunPdfWorker(*services.files, terminal), 1);
    EXPECT_EQ(terminal.input.size(), 1U) << "nobody listens any more";
}

}  // namespace
}  // namespace quirepress
