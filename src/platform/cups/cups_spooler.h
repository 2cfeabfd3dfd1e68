#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/cups/cups_server.h"
#include "platform/cups/ipp_records.h"
#include "platform/spooler.h"

namespace quirepress {

class Clock;
class CupsUpload;
class EventLoop;
class Files;
class InputFile;

// The printers and classes of a CUPS server. Every call asks the server, within its limits of time
// (CupsServer), and pumps meanwhile.
class CupsSpooler : public Spooler {
public:
    CupsSpooler(Files& files, EventLoop& loop, Clock& clock);
    ~CupsSpooler() override;

    // The next calls try only once, for a short time, until the server has answered.
    void BeImpatient() { m_server.BeImpatient(); }
    const CupsFailure& LastFailure() const { return m_server.LastFailure(); }

    std::string SystemName() const override { return "cups"; }
    int ListPrinters(std::vector<PrinterInfo>& printers) override;
    // The user's (LPDEST, PRINTER, lpoptions), else the server's.
    std::string DefaultPrinter() override;
    int MakeDefaultPrinter(std::string_view printer) override;  // the user's
    // "NAME" or "NAME/INSTANCE"; empty: the server's default is his, too.
    std::string DefaultChoice() override;
    int RestoreDefaultChoice(std::string_view choice) override;
    // The job comes to be, and gets its id, by Finish.
    std::unique_ptr<RawPrinter> OpenRawPrinter(std::string_view printer, int& systemError) override;
    bool TakesDocument(std::string_view printer, std::string_view path) override;
    std::int64_t PrintDocument(std::string_view printer, std::string_view path, const DocumentInfo& document,
                               int& systemError) override;
    int ListJobs(std::string_view printer, std::vector<JobInfo>& jobs) override;
    std::int64_t LastJob(std::string_view printer) override;
    int ListOverJobs(std::string_view printer, std::int64_t after, std::vector<JobInfo>& jobs) override;
    int ChangeJobPriority(std::string_view printer, std::int64_t id, int priority) override;
    int CancelJob(std::string_view printer, std::int64_t id) override;
    int ListBins(std::string_view printer, std::vector<BinInfo>& bins) override;
    std::string ErrorText(int systemError) override;

private:
    struct KnownPrinter {
        CupsPrinterFacts facts;
        long long askedAt = 0;
    };

    // What a question for jobs asks for.
    struct JobChoice {
        const char* which;  // keyword of IPP
        int first = 1;      // job number
        int limit = 0;
    };

    IppMessage AskForJobs(std::string_view printer, const JobChoice& choice,
                          const std::vector<const char*>& attributes);
    IppMessage Ask(const IppRequest& request);
    int Fail(const CupsFailure& failure);
    std::string ServersDefault();
    // -1 when there is no such printer, or it cannot be asked. May be some seconds old.
    int LookUpFacts(std::string_view printer, CupsPrinterFacts& facts);
    bool Renders(std::string_view printer, std::string_view format, int depth = 0);
    bool OwnsJob(std::string_view printer, std::int64_t id);
    int NewDocumentRequest(std::string_view printer, std::string_view path, const DocumentInfo& document,
                           IppRequest& request);
    int ReadInto(CupsUpload& upload, InputFile& file);

    Files& m_files;
    EventLoop& m_loop;
    Clock& m_clock;
    CupsServer m_server;
    std::string m_user;
    std::map<std::string, KnownPrinter, std::less<>> m_known;
};

}  // namespace quirepress
