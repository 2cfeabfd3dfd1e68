#include <cups/cups.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fakes/fake_clock.h"
#include "fakes/fake_event_loop.h"
#include "platform/cups/ipp_media.h"
#include "platform/cups/ipp_records.h"
#include "platform/cups/ipp_status.h"
#include "platform/cups/ipp_ticket.h"

namespace quirepress {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
namespace job = job_status;
namespace printer = printer_status;

TEST(IppStatus, StatesAndReasonsOfAJobBecomeBits) {
    EXPECT_EQ(JobStatusOf(IPP_JSTATE_PENDING, {"none"}, {"none"}), 0U);
    EXPECT_EQ(JobStatusOf(IPP_JSTATE_HELD, {"job-incoming"}, {}), job::kSpooling);
    EXPECT_EQ(JobStatusOf(IPP_JSTATE_HELD, {"none", "cups-held-for-authentication"}, {}),
              job::kPaused | job::kUserIntervention);
    for (const char* failed : {"resources-are-not-ready", "none"})
        EXPECT_EQ(JobStatusOf(IPP_JSTATE_HELD, {failed}, {}), job::kPaused | job::kError) << failed;
    EXPECT_EQ(JobStatusOf(IPP_JSTATE_STOPPED, {}, {}), job::kError);
    EXPECT_EQ(JobStatusOf(IPP_JSTATE_COMPLETED, {"processing-to-stop-point"}, {"media-empty-error"}),
              job::kPrinted);
    for (const int unknown : {0, 99}) EXPECT_EQ(JobStatusOf(unknown, {""}, {""}), 0U);
    // One at work shows what holds its printer up.
    const auto working = [](std::string_view reason) {
        return JobStatusOf(IPP_JSTATE_PROCESSING, {}, {"none", reason}) & ~job::kPrinting;
    };
    EXPECT_EQ(working("media-empty-warning"), job::kPaperOut);
    EXPECT_EQ(working("media-empty-report"), 0U);
    EXPECT_EQ(working("cover-open-warning"), job::kUserIntervention);
    EXPECT_EQ(working("toner-low-warning"), 0U);
}

TEST(IppStatus, StatesAndReasonsOfAPrinterBecomeBits) {
    EXPECT_EQ(PrinterStatusOf(IPP_PSTATE_STOPPED, {"paused"}, true), printer::kPaused);
    EXPECT_EQ(PrinterStatusOf(IPP_PSTATE_IDLE, {}, false), printer::kNotAvailable);
    EXPECT_EQ(PrinterStatusOf(IPP_PSTATE_PROCESSING, {"connecting-to-device"}, true),
              printer::kPrinting | printer::kWaiting);
    const auto idle = [](std::string_view reason) {
        return PrinterStatusOf(IPP_PSTATE_IDLE, {reason}, true);
    };
    EXPECT_EQ(idle("media-empty-report"), printer::kPaperOut);
    EXPECT_EQ(idle("toner-low-warning"), printer::kTonerLow);
    EXPECT_EQ(idle("marker-waste-almost-full-warnin"), 0U);
    EXPECT_EQ(idle("media-low-warning"), 0U);
    EXPECT_EQ(idle("cups-missing-filter-warning"), printer::kError);
}

TEST(IppMedia, PaperCodesHaveNames) {
    EXPECT_EQ(MediaName(1), "na_letter_8.5x11in");
    EXPECT_EQ(MediaName(9), "iso_a4_210x297mm");
    EXPECT_EQ(MediaName(13), "jis_b5_182x257mm");
    EXPECT_EQ(MediaName(70), "iso_a6_105x148mm");
    for (const int code : {-1, 0, 48, 256, 70'000}) EXPECT_EQ(MediaName(code), "") << code;
    // Every name is one that libcups knows the size of.
    for (int code = 1; code < 100; ++code) {
        const std::string name(MediaName(code));
        EXPECT_TRUE(name.empty() || pwgMediaForPWG(name.c_str()) != nullptr) << name;
    }
}

TEST(IppMedia, BinsKeepTheirNumbers) {
    const std::vector<BinInfo> bins =
        BinsOf({"auto", "tray-2", "a-very-long-name-of-a-media-source", "main", "tray-0", "by-pass-tray"});
    std::vector<int> numbers;
    for (const BinInfo& bin : bins) numbers.push_back(bin.number);
    EXPECT_THAT(numbers, ElementsAre(7, 258, 1024, 14, 1025, 4));
    EXPECT_EQ(bins[2].name, "a-very-long-name-of-a-me");
}

TEST(IppMedia, ATrayIsFoundOrMissed) {
    const std::vector<std::string> sources = {"auto", "main", "a-very-long-name-of-a-media-source"};
    const auto choose = [&](int number, const std::string& name) {
        JobTicket ticket;
        ticket.tray = number;
        ticket.trayName = name;
        std::string source = "before";
        return ChooseSource(ticket, sources, source) ? source : "missed";
    };
    EXPECT_EQ(choose(0, ""), "");
    EXPECT_EQ(choose(7, ""), "");
    EXPECT_EQ(choose(15, ""), "");
    EXPECT_EQ(choose(14, ""), "main");
    EXPECT_EQ(choose(1, ""), "missed");
    EXPECT_EQ(choose(1, "Main"), "main");
    EXPECT_EQ(choose(0, "a-very-long-name-of-a-me"), sources[2]);
    EXPECT_EQ(choose(14, "photo"), "missed");
}

TEST(IppTicket, PageRangesAreReadOrRefused) {
    PageRanges ranges;
    EXPECT_TRUE(ParsePageRanges("", ranges));
    EXPECT_THAT(ranges, IsEmpty());
    EXPECT_TRUE(ParsePageRanges("7,1-3,2-5,6,20-", ranges));
    EXPECT_THAT(ranges, ElementsAre(Pair(1, 7), Pair(20, 2147483647)));
    EXPECT_TRUE(ParsePageRanges("3,3", ranges));
    EXPECT_THAT(ranges, ElementsAre(Pair(3, 3)));
    for (const char* bad : {"0", "3-1", "-2", "a", "1,,2", "1-2-3", "99999999999", "1,", " 1"})
        EXPECT_FALSE(ParsePageRanges(bad, ranges)) << bad;
}

std::string Describe(const IppMessage& message, const char* name) {
    char text[1024] = "";
    ipp_attribute_t* attribute = ippFindAttribute(message.get(), name, IPP_TAG_ZERO);
    if (attribute != nullptr) ippAttributeString(attribute, text, sizeof text);
    return text;
}

TEST(IppTicket, OnlyWhatIsAskedForIsSent) {
    const IppMessage bare(ippNew());
    AddTicket(bare.get(), {"a"}, {}, "");
    EXPECT_EQ(ippFirstAttribute(bare.get()), nullptr);

    DocumentInfo document{"a", 2, 99};
    JobTicket& ticket = document.ticket;
    ticket.copies = 3;
    ticket.orientation = JobTicket::Orientation::kLandscape;
    ticket.scale = 100;
    ticket.paperSize = 9;
    const IppMessage full(ippNew());
    AddTicket(full.get(), document, {{1, 3}, {7, 7}}, "");
    EXPECT_EQ(Describe(full, "copies"), "6");
    EXPECT_EQ(Describe(full, "job-priority"), "99");
    EXPECT_EQ(Describe(full, "orientation-requested"), "landscape");
    EXPECT_EQ(Describe(full, "print-scaling"), "none");
    EXPECT_EQ(Describe(full, "media"), "iso_a4_210x297mm");
    EXPECT_EQ(Describe(full, "page-ranges"), "1-3,7-7");

    ticket.scale = 80;
    const IppMessage tray(ippNew());
    AddTicket(tray.get(), document, {}, "tray-2");
    EXPECT_EQ(Describe(tray, "print-scaling"), "");
    EXPECT_EQ(Describe(tray, "media"), "");
    EXPECT_EQ(Describe(tray, "media-col"),
              "{media-size={x-dimension=21000 y-dimension=29700} media-source=tray-2}");
}

TEST(IppRecords, AnswersThatMakeNoSenseAreRead) {
    FakeEventLoop loop;
    FakeClock clock(loop);
    const IppMessage answer(ippNew());
    ipp_t* message = answer.get();
    // A job without a number, one whose values are of odd types, and one that is right.
    ippAddString(message, IPP_TAG_JOB, IPP_TAG_NAME, "job-name", nullptr, "no number");
    ippAddSeparator(message);
    ippAddInteger(message, IPP_TAG_JOB, IPP_TAG_INTEGER, "job-id", 7);
    ippAddInteger(message, IPP_TAG_JOB, IPP_TAG_INTEGER, "job-name", 3);
    ippAddString(message, IPP_TAG_JOB, IPP_TAG_KEYWORD, "job-priority", nullptr, "high");
    ippAddOutOfBand(message, IPP_TAG_JOB, IPP_TAG_NOVALUE, "job-state-reasons");
    ippAddSeparator(message);
    ippAddInteger(message, IPP_TAG_JOB, IPP_TAG_INTEGER, "job-id", 8);
    ippAddInteger(message, IPP_TAG_JOB, IPP_TAG_ENUM, "job-state", IPP_JSTATE_PROCESSING);
    ippAddString(message, IPP_TAG_JOB, IPP_TAG_URI, "job-printer-uri", nullptr,
                 "ipp://localhost:631/printers/A%20B");
    ippAddInteger(message, IPP_TAG_JOB, IPP_TAG_INTEGER, "job-priority", 100);
    const std::vector<JobInfo> jobs = ReadJobs(message, clock);
    ASSERT_EQ(jobs.size(), 2U);
    EXPECT_EQ(jobs[0].id, 8);
    EXPECT_EQ(jobs[0].printer, "A B");
    EXPECT_EQ(jobs[0].priority, 99);
    EXPECT_EQ(jobs[1].id, 7);
    EXPECT_EQ(jobs[1].document, "");
    EXPECT_EQ(jobs[1].priority, 1);
    EXPECT_EQ(jobs[1].position, 2);
    EXPECT_THAT(ReadJobs(nullptr, clock), IsEmpty());
    EXPECT_THAT(ReadPrinters(message), IsEmpty());
}

}  // namespace
}  // namespace quirepress
