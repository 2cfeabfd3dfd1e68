#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/embedded/printer_delivery.h"
#include "platform/embedded/printer_directory.h"
#include "platform/embedded/spooled_document.h"
#include "platform/spooler.h"

namespace quirepress {

class Clock;
class EventLoop;
class Files;
class Machine;
class Network;

// The print system that needs no server: printers and jobs are files under "Printers" in the working folder,
// shared by every program that works there. Jobs are delivered while the event loop is pumped.
class EmbeddedSpooler : public Spooler, public PrinterAdministration {
public:
    EmbeddedSpooler(Files& files, EventLoop& loop, Network& network, Clock& clock, Machine& machine,
                    std::string_view workingFolder);
    ~EmbeddedSpooler() override;
    EmbeddedSpooler(const EmbeddedSpooler&) = delete;
    EmbeddedSpooler& operator=(const EmbeddedSpooler&) = delete;

    // Before anything else: makes the first printer when there has been none, clears away what programs that
    // died have left, and begins to deliver. 0, or -1 with `message`.
    int Open(std::string& message);

    // A program that would end pumps until this is true: nothing is waiting but what cannot go out now.
    bool IsIdle();
    DeliveryState WaitingJobs();

    std::string SystemName() const override { return "embedded"; }
    int ListPrinters(std::vector<PrinterInfo>& printers) override;
    std::string DefaultPrinter() override;
    int MakeDefaultPrinter(std::string_view printer) override;
    int RestoreDefaultChoice(std::string_view choice) override;
    std::unique_ptr<RawPrinter> OpenRawPrinter(std::string_view printer, int& systemError) override;
    // Copies, those of the ticket times those of the document, are jobs of their own, at most 9,999 at once;
    // the first one's id is the answer. Pumps.
    std::int64_t PrintDocument(std::string_view printer, std::string_view path, const DocumentInfo& document,
                               int& systemError) override;
    int ListJobs(std::string_view printer, std::vector<JobInfo>& jobs) override;
    int ChangeJobPriority(std::string_view printer, std::int64_t id, int priority) override;
    int CancelJob(std::string_view printer, std::int64_t id) override;
    int ListBins(std::string_view printer, std::vector<BinInfo>& bins) override;
    std::string ErrorText(int systemError) override { return SpoolerErrorText(systemError); }

    int CreatePrinterQueue(std::string_view printer, std::string_view port, std::string& message) override;
    // Refused (-1) while there are jobs. What lies in its output folder stays.
    int RemovePrinterQueue(std::string_view printer, std::string& message) override;
    int PausePrinterQueue(std::string_view printer, std::string& message) override;
    int ResumePrinterQueue(std::string_view printer, std::string& message) override;
    int RestartJob(std::string_view printer, std::int64_t id, std::string& message) override;
    void NoteOutcomeTold(std::string_view printer, std::int64_t id) override;
    long long UnmovedMilliseconds() override { return WaitingJobs().unmoved; }
    void EndDelivery() override;

private:
    bool PumpQueues();
    void RefreshDeliveries();
    PrinterDelivery& DeliveryOf(std::string_view printer);
    void WakeDelivery(const std::string& printer);
    PrinterInfo DescribePrinter(const std::string& name);
    JobInfo DescribeJob(const PrinterFolder& printer, const JobFiles& job, const PortTrouble& trouble);
    std::int64_t CopyIntoQueue(std::string_view printer, InputFile& source, const DocumentInfo& document,
                               int& systemError);

    Files& m_files;
    EventLoop& m_loop;
    Network& m_network;
    Clock& m_clock;
    Machine& m_machine;
    PrinterDirectory m_printers;
    std::map<std::string, std::unique_ptr<PrinterDelivery>, std::less<>> m_deliveries;
    std::multiset<std::string, std::less<>> m_held;  // printers whose copies are being taken in
    long long m_nextRefresh = 0;
    int m_pumpTask = 0;
    std::shared_ptr<EmbeddedSpooler*> m_self;  // null in it once this is destroyed
};

}  // namespace quirepress
