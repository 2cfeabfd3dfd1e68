#include "contract/spooler_stage.h"
#include "platform/clock.h"
#include "platform/cups/open_cups_spooler.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "rig/private_cups.h"

namespace quirepress {
namespace {

// Printers with a driver, whose pages are thrown away.
class CupsStage : public SpoolerStage {
public:
    CupsStage() {
        m_cups.UseHere();
        MakePrinter("First");
        std::string message;
        m_spooler = OpenCupsSpooler(*m_services.files, *m_services.loop, *m_services.clock,
                                    CupsNeed::kPrinterAtOnce, message);
        EXPECT_NE(m_spooler, nullptr) << message;
        EXPECT_EQ(m_spooler->MakeDefaultPrinter("First"), 0);
    }
    Spooler& System() override { return *m_spooler; }
    void MakePrinter(const std::string& name) override { m_cups.AddDriverQueue(name); }
    void RemovePrinter(const std::string& name) override { m_cups.Remove(name); }
    void PausePrinter(const std::string& name) override { m_cups.Pause(name); }
    void ResumePrinter(const std::string& name) override { m_cups.Resume(name); }
    void Deliver() override {
        for (int i = 0; i < 2'000 && CountMovingJobs() > 0; ++i) m_services.loop->Wait(5);
        EXPECT_EQ(CountMovingJobs(), 0U);
    }

    bool ShowsOpenDocuments() const override { return false; }
    bool KeepsEmptyDocuments() const override { return false; }
    std::int64_t SizeUnit() const override { return 1024; }
    std::string ShownName(const std::string& document) const override {
        std::string shown = document;
        for (char& c : shown)
            if (c == '\n') c = '_';
        return shown;
    }

private:
    std::uint32_t CountMovingJobs() {
        std::vector<PrinterInfo> printers;
        EXPECT_EQ(m_spooler->ListPrinters(printers), 0);
        std::uint32_t jobs = 0;
        for (const PrinterInfo& printer : printers)
            if ((printer.statusBits & printer_status::kPaused) == 0) jobs += printer.jobs;
        return jobs;
    }

    PrivateCups m_cups{m_services};
    std::unique_ptr<Spooler> m_spooler;
};

}  // namespace

std::vector<SpoolerStageMaker> SystemSpoolerStages() {
    return {{"Cups", []() -> std::unique_ptr<SpoolerStage> { return std::make_unique<CupsStage>(); }}};
}

}  // namespace quirepress
