#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "contract/spooler_stage.h"
#include "fakes/both_kinds.h"
#include "fakes/fake_spooler.h"
#include "platform/clock.h"
#include "platform/embedded/embedded_spooler.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/machine.h"
#include "platform/network.h"

namespace quirepress {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class FakeStage : public OwnPrintersStage {
public:
    FakeStage() {
        m_spooler.PutPrinter("First");
        m_spooler.KeepJobs(true);
    }
    Spooler& System() override { return m_spooler; }
    PrinterAdministration& Administration() override { return m_spooler; }
    void Deliver() override { m_spooler.DeliverJobs(); }

private:
    FakeSpooler m_spooler{*m_services.files};
};

class EmbeddedStage : public OwnPrintersStage {
public:
    EmbeddedStage() {
        std::string message;
        EXPECT_EQ(m_spooler.Open(message), 0) << message;
        EXPECT_EQ(m_spooler.RemovePrinterQueue("Quirepress", message), 0) << message;
        EXPECT_EQ(m_spooler.CreatePrinterQueue("First", "null:", message), 0) << message;
        EXPECT_EQ(m_spooler.MakeDefaultPrinter("First"), 0);
    }
    Spooler& System() override { return m_spooler; }
    PrinterAdministration& Administration() override { return m_spooler; }
    void Deliver() override {
        while (!m_spooler.IsIdle()) m_services.loop->Wait(1);
    }

private:
    EmbeddedSpooler m_spooler{*m_services.files, *m_services.loop,    *m_services.network,
                              *m_services.clock, *m_services.machine, m_folder.Path()};
};

class SpoolerContract : public testing::TestWithParam<SpoolerStageMaker> {
protected:
    std::int64_t Spool(std::string_view printer, std::string_view name, std::string_view bytes = "bytes") {
        int error = 0;
        const auto raw = System().OpenRawPrinter(printer, error);
        if (!raw || raw->StartDocument({std::string(name), 1}) != 0) return -1;
        if (raw->WriteChunk(bytes.data(), bytes.size()) != 0) return -1;
        return raw->Finish() == 0 ? raw->JobId() : -1;
    }

    std::vector<std::string> Documents(std::string_view printer) {
        std::vector<JobInfo> jobs;
        EXPECT_EQ(System().ListJobs(printer, jobs), 0);
        std::vector<std::string> names;
        names.reserve(jobs.size());
        for (const JobInfo& job : jobs) names.push_back(job.document);
        return names;
    }

    std::vector<std::string> Printers() {
        std::vector<PrinterInfo> printers;
        EXPECT_EQ(System().ListPrinters(printers), 0);
        std::vector<std::string> names;
        names.reserve(printers.size());
        for (const PrinterInfo& printer : printers) names.push_back(printer.name);
        return names;
    }

    PrinterInfo Printer(std::string_view name) {
        std::vector<PrinterInfo> printers;
        EXPECT_EQ(System().ListPrinters(printers), 0);
        for (const PrinterInfo& printer : printers)
            if (printer.name == name) return printer;
        return {};
    }

    Spooler& System() { return m_stage->System(); }
    void MakePaused(const std::string& printer) {
        m_stage->MakePrinter(printer);
        m_stage->PausePrinter(printer);
    }

    std::unique_ptr<SpoolerStage> m_stage = GetParam().make();
};

TEST_P(SpoolerContract, PrintersAreListedAndChosen) {
    EXPECT_THAT(Printers(), ElementsAre("First"));
    EXPECT_EQ(System().DefaultPrinter(), "First");
    m_stage->MakePrinter("Second");
    EXPECT_THAT(Printers(), ElementsAre("First", "Second"));
    EXPECT_EQ(System().MakeDefaultPrinter("Second"), 0);
    EXPECT_EQ(System().MakeDefaultPrinter("Nobody"), -1);
    EXPECT_EQ(System().DefaultPrinter(), "Second");
    EXPECT_TRUE(Printer("Second").isDefault);
    EXPECT_FALSE(Printer("First").isDefault);
    m_stage->RemovePrinter("Second");
    EXPECT_THAT(Printers(), ElementsAre("First"));
    EXPECT_EQ(System().DefaultPrinter(), "");
}

TEST_P(SpoolerContract, WhatAsksForAPrinterThatIsNotThereFails) {
    int error = 0;
    std::vector<JobInfo> jobs;
    std::vector<BinInfo> bins;
    const std::string document = m_stage->WriteDocument("a.ps", "%!PS");
    EXPECT_EQ(System().OpenRawPrinter("Nobody", error), nullptr);
    EXPECT_NE(error, 0);
    EXPECT_EQ(System().OpenRawPrinter("../Nobody", error), nullptr);
    error = 0;
    EXPECT_EQ(System().PrintDocument("Nobody", document, {document, 1}, error), -1);
    EXPECT_NE(error, 0);
    EXPECT_EQ(System().ListJobs("Nobody", jobs), -1);
    EXPECT_EQ(System().ListBins("Nobody", bins), -1);
    EXPECT_EQ(System().ChangeJobPriority("Nobody", 1, 5), -1);
    EXPECT_EQ(System().CancelJob("Nobody", 1), -1);
}

TEST_P(SpoolerContract, ARawDocumentIsAJobFromItsStartToItsDelivery) {
    int error = 7;
    const auto raw = System().OpenRawPrinter("First", error);
    ASSERT_NE(raw, nullptr);
    EXPECT_EQ(error, 0);
    EXPECT_EQ(raw->JobId(), 0);
    ASSERT_EQ(raw->StartDocument({"/docs/a;b%\n.ps", 1}), 0);
    EXPECT_EQ(raw->JobId() > 0, m_stage->ShowsOpenDocuments());
    EXPECT_EQ(raw->StartDocument({"again", 1}), -1);
    EXPECT_EQ(raw->WriteChunk("12345", 5), 0);
    m_stage->Deliver();
    if (m_stage->ShowsOpenDocuments()) {
        std::vector<JobInfo> jobs;
        ASSERT_EQ(System().ListJobs("First", jobs), 0);
        ASSERT_EQ(jobs.size(), 1U);
        EXPECT_EQ(jobs[0].id, raw->JobId());
        EXPECT_EQ(jobs[0].statusBits, job_status::kSpooling);
        EXPECT_EQ(Printer("First").jobs, 1U);
    } else {
        EXPECT_THAT(Documents("First"), IsEmpty());
    }
    EXPECT_EQ(raw->Finish(), 0);
    EXPECT_EQ(raw->Finish(), -1);
    EXPECT_EQ(raw->WriteChunk("6", 1), -1);
    EXPECT_GT(raw->JobId(), 0);
    m_stage->Deliver();
    EXPECT_THAT(Documents("First"), IsEmpty());
}

TEST_P(SpoolerContract, AJobIsDescribed) {
    MakePaused("Paused");
    const std::string name = "/docs/a;b%\n.ps";
    const std::int64_t id = Spool("Paused", name, "12345");
    std::vector<JobInfo> jobs;
    ASSERT_EQ(System().ListJobs("Paused", jobs), 0);
    ASSERT_EQ(jobs.size(), 1U);
    EXPECT_EQ(jobs[0].id, id);
    EXPECT_EQ(jobs[0].document, m_stage->ShownName(name));
    EXPECT_GE(jobs[0].priority, 1);
    EXPECT_LT(jobs[0].priority, 99);
    EXPECT_EQ(jobs[0].position, 1);
    EXPECT_EQ(jobs[0].printer, "Paused");
    EXPECT_NE(jobs[0].submitted, LocalTime());
    EXPECT_FALSE(jobs[0].user.empty());
    EXPECT_GE(jobs[0].size, 5);
    EXPECT_LT(jobs[0].size, 5 + m_stage->SizeUnit());
    EXPECT_EQ(Printer("Paused").jobs, 1U);
}

TEST_P(SpoolerContract, ADocumentThatIsNotFinishedLeavesNoJob) {
    MakePaused("Paused");
    int error = 0;
    auto raw = System().OpenRawPrinter("Paused", error);
    ASSERT_EQ(raw->StartDocument({"half.ps", 1}), 0);
    ASSERT_EQ(raw->WriteChunk("half", 4), 0);
    const std::int64_t dropped = raw->JobId();
    raw.reset();
    EXPECT_THAT(Documents("Paused"), IsEmpty());
    EXPECT_EQ(System().OpenRawPrinter("Paused", error)->Finish(), -1);
    EXPECT_EQ(System().OpenRawPrinter("Paused", error)->WriteChunk("x", 1), -1);
    EXPECT_GT(Spool("Paused", "next.ps"), dropped);
}

TEST_P(SpoolerContract, PausedPrintersKeepTheirJobsInOrder) {
    MakePaused("Paused");
    EXPECT_NE(Printer("Paused").statusBits & printer_status::kPaused, 0U);
    const std::int64_t a = Spool("Paused", "a");
    const std::int64_t b = Spool("Paused", "b");
    const std::int64_t c = Spool("Paused", "c");
    EXPECT_LT(a, b);
    EXPECT_LT(b, c);
    m_stage->Deliver();
    EXPECT_THAT(Documents("Paused"), ElementsAre("a", "b", "c"));
    EXPECT_EQ(System().ChangeJobPriority("Paused", c, 99), 0);
    EXPECT_EQ(System().ChangeJobPriority("Paused", a, 1), 0);
    EXPECT_EQ(System().ChangeJobPriority("Paused", b, 2), 0);
    EXPECT_EQ(System().ChangeJobPriority("Paused", b, 2), 0);
    EXPECT_EQ(System().ChangeJobPriority("Paused", b, 0), -1);
    EXPECT_EQ(System().ChangeJobPriority("Paused", b, 100), -1);
    EXPECT_EQ(System().ChangeJobPriority("Paused", c + 1, 50), -1);
    EXPECT_EQ(System().ChangeJobPriority("First", b, 50), -1);
    EXPECT_THAT(Documents("Paused"), ElementsAre("c", "b", "a"));
    std::vector<JobInfo> jobs;
    System().ListJobs("Paused", jobs);
    EXPECT_EQ(jobs[0].priority, 99);
    EXPECT_EQ(jobs[2].position, 3);
    EXPECT_EQ(System().CancelJob("Paused", b), 0);
    EXPECT_EQ(System().CancelJob("Paused", b), -1);
    EXPECT_THAT(Documents("Paused"), ElementsAre("c", "a"));
    m_stage->ResumePrinter("Paused");
    m_stage->Deliver();
    EXPECT_THAT(Documents("Paused"), IsEmpty());
    EXPECT_GT(Spool("Paused", "d"), c);
}

TEST_P(SpoolerContract, WholeFilesAreHandedOver) {
    MakePaused("Paused");
    const std::string document = m_stage->WriteDocument("a.pdf", std::string(300'000, 'p'));
    const std::string empty = m_stage->WriteDocument("empty.pdf", "");
    int error = 7;
    const std::int64_t id = System().PrintDocument("Paused", document, {document, 1}, error);
    EXPECT_GT(id, 0);
    EXPECT_EQ(error, 0);
    const std::int64_t emptyId = System().PrintDocument("Paused", empty, {empty, 1}, error);
    EXPECT_EQ(emptyId > id, m_stage->KeepsEmptyDocuments());
    EXPECT_EQ(emptyId == kDocumentRefused, !m_stage->KeepsEmptyDocuments());
    EXPECT_EQ(System().PrintDocument("Paused", document + "x", {document, 1}, error), -1);
    EXPECT_NE(error, 0);
    std::vector<JobInfo> jobs;
    System().ListJobs("Paused", jobs);
    ASSERT_EQ(jobs.size(), m_stage->KeepsEmptyDocuments() ? 2U : 1U);
    EXPECT_GE(jobs[0].size, 300'000);
    EXPECT_LT(jobs[0].size, 300'000 + m_stage->SizeUnit());
    EXPECT_EQ(jobs[0].document, document);
    EXPECT_EQ(jobs.back().size == 0, m_stage->KeepsEmptyDocuments());
}

template <class Stage>
std::unique_ptr<SpoolerStage> MakeStage() {
    return std::make_unique<Stage>();
}

std::vector<SpoolerStageMaker> AllStages() {
    std::vector<SpoolerStageMaker> stages = SystemSpoolerStages();
    stages.push_back({"Fake", MakeStage<FakeStage>});
    stages.push_back({"Embedded", MakeStage<EmbeddedStage>});
    return stages;
}

INSTANTIATE_TEST_SUITE_P(Spoolers, SpoolerContract, testing::ValuesIn(AllStages()),
                         [](const auto& test) { return std::string(test.param.name); });

// The operations on printers of our own; true: the fake.
class OwnPrintersContract : public testing::TestWithParam<bool> {
protected:
    OwnPrintersContract() {
        if (GetParam())
            m_stage = std::make_unique<FakeStage>();
        else
            m_stage = std::make_unique<EmbeddedStage>();
    }
    PrinterAdministration& Administration() { return m_stage->Administration(); }

    std::vector<PrinterInfo> Printers() {
        std::vector<PrinterInfo> printers;
        EXPECT_EQ(m_stage->System().ListPrinters(printers), 0);
        return printers;
    }

    std::unique_ptr<OwnPrintersStage> m_stage;
    std::string m_message;
};

TEST_P(OwnPrintersContract, PrintersAreMadeAndRemoved) {
    EXPECT_EQ(Administration().CreatePrinterQueue("Second one", "socket://localhost", m_message), 0);
    EXPECT_EQ(Administration().CreatePrinterQueue("Second one", "null:", m_message), 2);
    EXPECT_FALSE(m_message.empty());
    ASSERT_EQ(Printers().size(), 2U);
    EXPECT_EQ(Printers()[1].port, "socket://localhost");
    EXPECT_EQ(Administration().RemovePrinterQueue("Second one", m_message), 0);
    EXPECT_EQ(Administration().RemovePrinterQueue("Second one", m_message), 2);
    EXPECT_EQ(Administration().PausePrinterQueue("Nobody", m_message), 2);
    EXPECT_EQ(Administration().ResumePrinterQueue("Nobody", m_message), 2);
    EXPECT_EQ(Administration().RestartJob("Nobody", 1, m_message), 2);
}

TEST_P(OwnPrintersContract, NamesAndPortsThatCanNotBeAreRefused) {
    const std::string tooLong(101, 'x');
    for (const std::string& name :
         {std::string(), std::string("."), std::string(".."), std::string("a/b"), std::string("a\\b"),
          std::string("a\nb"), std::string("a\0b", 3), tooLong}) {
        m_message.clear();
        EXPECT_EQ(Administration().CreatePrinterQueue(name, "null:", m_message), 1) << name;
        EXPECT_TRUE(m_message.ends_with(".")) << m_message;
    }
    for (const std::string port :
         {"", "lpt1:", "folder", "socket://", "socket://host:0", "socket://host:65536", "socket://host:x",
          "socket://:9100", "null:x", "folder:/a;b"}) {
        m_message.clear();
        EXPECT_EQ(Administration().CreatePrinterQueue("Good", port, m_message), 1) << port;
        EXPECT_TRUE(m_message.ends_with(".")) << m_message;
    }
    EXPECT_EQ(Administration().CreatePrinterQueue(std::string(100, 'x'), "null:", m_message), 0) << m_message;
}

TEST_P(OwnPrintersContract, AQueueWithJobsStays) {
    m_stage->MakePrinter("Paused");
    m_stage->PausePrinter("Paused");
    int error = 0;
    const auto raw = m_stage->System().OpenRawPrinter("Paused", error);
    ASSERT_EQ(raw->StartDocument({"a", 1}), 0);
    ASSERT_EQ(raw->Finish(), 0);
    EXPECT_EQ(Administration().RestartJob("Paused", raw->JobId() + 1, m_message), -1);
    EXPECT_EQ(Administration().RestartJob("Paused", raw->JobId(), m_message), 0);
    EXPECT_EQ(Administration().RemovePrinterQueue("Paused", m_message), -1);
}

INSTANTIATE_TEST_SUITE_P(Spoolers, OwnPrintersContract, testing::Bool(), NameOfKind);

}  // namespace
}  // namespace quirepress
