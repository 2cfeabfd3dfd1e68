#include "platform/cups/cups_spooler.h"

#include <cups/cups.h>

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "base/text.h"
#include "platform/clock.h"
#include "platform/cups/cups_raw_printer.h"
#include "platform/cups/cups_upload.h"
#include "platform/cups/ipp_media.h"
#include "platform/cups/ipp_ticket.h"
#include "platform/cups/open_cups_spooler.h"
#include "platform/cups/users_default.h"
#include "platform/event_loop.h"
#include "platform/files.h"

namespace quirepress {

namespace {

constexpr long long kFactsStayTrue = 2'000;  // milliseconds
constexpr int kDeepestClass = 4;
constexpr int kMostJobs = 1'000'000;  // a server shows 500 of them when it is not told how many
constexpr int kSomeJobs = 1'000;
constexpr std::size_t kChunk = std::size_t{256} * 1024;

bool IsJobNumber(std::int64_t id) {
    return id > 0 && id <= std::numeric_limits<int>::max();
}

int NumberAfter(std::int64_t id) {
    return static_cast<int>(std::clamp<std::int64_t>(id + 1, 1, std::numeric_limits<int>::max()));
}

struct Destinations {
    explicit Destinations(http_t* http) : count(cupsGetDests2(http, &list)) {}
    ~Destinations() { cupsFreeDests(count, list); }
    Destinations(const Destinations&) = delete;
    Destinations& operator=(const Destinations&) = delete;

    // Null: no instance. One that is not known is added: it may have been known for being the default only.
    void MakeDefault(const std::string& name, const char* instance) {
        count = cupsAddDest(name.c_str(), instance, count, &list);
        cupsSetDefaultDest(name.c_str(), instance, count, list);
    }
    void MakeNoneDefault() {
        for (int i = 0; i < count; ++i) list[i].is_default = 0;
    }

    cups_dest_t* list = nullptr;
    int count;
};

}  // namespace

CupsSpooler::CupsSpooler(Files& files, EventLoop& loop, Clock& clock)
    : m_files(files), m_loop(loop), m_clock(clock), m_server(loop), m_user(cupsUser()) {}

CupsSpooler::~CupsSpooler() = default;

IppMessage CupsSpooler::Ask(const IppRequest& request) {
    CupsFailure failure;
    IppMessage answer = m_server.Ask(request, failure);
    if (!answer) Fail(failure);
    return answer;
}

int CupsSpooler::Fail(const CupsFailure& failure) {
    m_server.Note(failure);
    return -1;
}

std::string CupsSpooler::ErrorText(int systemError) {
    return systemError == LastFailure().number ? LastFailure().text : Spooler::ErrorText(systemError);
}

int CupsSpooler::ListPrinters(std::vector<PrinterInfo>& printers) {
    const IppRequest request = NewServerRequest(IPP_OP_CUPS_GET_PRINTERS, m_user);
    AskFor(request, kPrinterAttributes);
    CupsFailure failure;
    const IppMessage answer = m_server.Ask(request, failure);
    // That is how a server without any printer answers.
    if (!answer) return failure.number == IPP_STATUS_ERROR_NOT_FOUND ? 0 : Fail(failure);
    const std::string standard = DefaultPrinter();
    for (PrinterInfo& printer : ReadPrinters(answer.get())) {
        printer.isDefault = printer.name == standard;
        printers.push_back(std::move(printer));
    }
    return 0;
}

std::string CupsSpooler::DefaultPrinter() {
    CupsFailure failure;
    std::unique_ptr<CupsConnection> connection = m_server.Take(failure);
    if (!connection) {
        Fail(failure);
        return {};
    }
    std::string name;
    if (cups_dest_t* standard = cupsGetNamedDest(connection->Handle(), nullptr, nullptr)) {
        name = standard->name;
        cupsFreeDests(1, standard);
    }
    m_server.GiveBack(std::move(connection));
    return name.empty() ? ServersDefault() : name;
}

// Where the user's choice is a printer that is gone.
std::string CupsSpooler::ServersDefault() {
    const IppRequest request = NewServerRequest(IPP_OP_CUPS_GET_DEFAULT, m_user);
    AskFor(request, {"printer-name"});
    const IppMessage answer = Ask(request);
    return std::string(IppText(ippFindAttribute(answer.get(), "printer-name", IPP_TAG_NAME)));
}

int CupsSpooler::MakeDefaultPrinter(std::string_view printer) {
    CupsPrinterFacts facts;
    if (LookUpFacts(printer, facts) != 0) return -1;
    // These go before the user's own choice, which then stays as it is.
    for (const char* name : {"LPDEST", "PRINTER"}) {
        const char* const named = std::getenv(name);
        if (named != nullptr) return printer == named ? 0 : -1;
    }
    CupsFailure failure;
    std::unique_ptr<CupsConnection> connection = m_server.Take(failure);
    if (!connection) return Fail(failure);
    const std::string name(printer);
    int result = -1;
    {
        Destinations destinations(connection->Handle());
        destinations.MakeDefault(name, nullptr);
        result = cupsSetDests2(connection->Handle(), destinations.count, destinations.list);
    }
    m_server.GiveBack(std::move(connection));
    return result == 0 && DefaultPrinter() == printer ? 0 : -1;
}

std::string CupsSpooler::DefaultChoice() {
    std::string choice = ReadUsersDefault(m_files);
    if (!choice.empty()) return choice;
    // It may also be one for all users of this machine, or of the environment.
    choice = DefaultPrinter();
    return choice == ServersDefault() ? std::string() : choice;
}

int CupsSpooler::RestoreDefaultChoice(std::string_view choice) {
    if (DefaultChoice() == choice) return 0;
    CupsFailure failure;
    std::unique_ptr<CupsConnection> connection = m_server.Take(failure);
    if (!connection) return Fail(failure);
    const std::string name(choice.substr(0, choice.find('/')));
    const std::string instance(choice.substr(std::min(name.size() + 1, choice.size())));
    int result = -1;
    {
        Destinations destinations(connection->Handle());
        destinations.MakeNoneDefault();
        if (!name.empty()) destinations.MakeDefault(name, instance.empty() ? nullptr : instance.c_str());
        result = cupsSetDests2(connection->Handle(), destinations.count, destinations.list);
    }
    m_server.GiveBack(std::move(connection));
    return result == 0 && DefaultChoice() == choice ? 0 : -1;
}

int CupsSpooler::LookUpFacts(std::string_view printer, CupsPrinterFacts& facts) {
    if (!IsCupsPrinterName(printer)) return Fail({CupsFailure::kBadName, "there is no such printer"});
    const auto known = m_known.find(printer);
    if (known != m_known.end() && m_loop.MonotonicMilliseconds() - known->second.askedAt < kFactsStayTrue) {
        facts = known->second.facts;
        return 0;
    }
    const IppRequest request = NewPrinterRequest(IPP_OP_GET_PRINTER_ATTRIBUTES, printer, m_user);
    AskFor(request, kFactAttributes);
    const IppMessage answer = Ask(request);
    if (!answer) {
        m_known.erase(std::string(printer));
        return -1;
    }
    facts = ReadPrinterFacts(answer.get());
    m_known[std::string(printer)] = {facts, m_loop.MonotonicMilliseconds()};
    return 0;
}

std::unique_ptr<RawPrinter> CupsSpooler::OpenRawPrinter(std::string_view printer, int& systemError) {
    CupsPrinterFacts facts;
    int result = LookUpFacts(printer, facts);
    // It would take the whole document before it says so.
    if (result == 0 && !facts.isAccepting)
        result = Fail({IPP_STATUS_ERROR_NOT_ACCEPTING_JOBS, "the printer is not accepting jobs"});
    systemError = result == 0 ? 0 : LastFailure().number;
    if (result != 0) return nullptr;
    return std::make_unique<CupsRawPrinter>(m_server, m_loop, printer, m_user);
}

bool CupsSpooler::TakesDocument(std::string_view printer, std::string_view path) {
    const std::string_view format = DocumentFormat(path);
    return !format.empty() && Renders(printer, format);
}

// A class prints on any of its members.
bool CupsSpooler::Renders(std::string_view printer, std::string_view format, int depth) {
    CupsPrinterFacts facts;
    if (depth > kDeepestClass || LookUpFacts(printer, facts) != 0) return false;
    if (!facts.members.empty())
        return std::all_of(facts.members.begin(), facts.members.end(),
                           [&](const std::string& member) { return Renders(member, format, depth + 1); });
    return facts.renders &&
           std::find(facts.formats.begin(), facts.formats.end(), format) != facts.formats.end();
}

int CupsSpooler::NewDocumentRequest(std::string_view printer, std::string_view path,
                                    const DocumentInfo& document, IppRequest& request) {
    PageRanges ranges;
    if (!ParsePageRanges(document.pageRanges, ranges))
        return Fail({CupsFailure::kBadPages, "the page ranges can't be read"});
    CupsPrinterFacts facts;
    if (LookUpFacts(printer, facts) != 0) return -1;
    const std::string_view format = DocumentFormat(path);
    if (format.empty() || !Renders(printer, format))
        return Fail({IPP_STATUS_ERROR_DOCUMENT_FORMAT_NOT_SUPPORTED,
                     "the printer can't make pages of this kind of file"});
    std::string source;
    if (!ChooseSource(document.ticket, facts.sources, source))
        return Fail({CupsFailure::kNoTray, "the printer has no such tray"});
    request = NewPrintRequest(printer, document.name, format, m_user);
    AddTicket(request.message.get(), document, ranges, source);
    return 0;
}

std::int64_t CupsSpooler::PrintDocument(std::string_view printer, std::string_view path,
                                        const DocumentInfo& document, int& systemError) {
    systemError = 0;
    FileResult opened = FileResult::kDone;
    const std::unique_ptr<InputFile> file = m_files.OpenForReading(path, opened);
    IppRequest request;
    int result = file ? NewDocumentRequest(printer, path, document, request)
                      : Fail({CupsFailure::kUnreadableFile, DescribeFileResult(opened)});
    if (result == 0) {
        CupsUpload upload(m_server, m_loop, std::move(request));
        result = ReadInto(upload, *file);
        if (result == 0) result = upload.Finish();
        if (result == 0) return upload.JobId();
        if (upload.Failure().number != CupsFailure::kNone) Fail(upload.Failure());
    }
    systemError = LastFailure().number;
    return result == 1 ? kDocumentUnknown : kDocumentRefused;
}

int CupsSpooler::ReadInto(CupsUpload& upload, InputFile& file) {
    std::vector<char> buffer(kChunk);
    const std::int64_t size = file.Size();
    for (std::int64_t position = 0;;) {
        const std::int64_t count = file.ReadAt(position, buffer.data(), buffer.size());
        if (count == 0 && position == size) return 0;
        if (count <= 0) return Fail({CupsFailure::kUnreadableFile, "the file can't be read to its end"});
        if (upload.Write(buffer.data(), static_cast<std::size_t>(count)) != 0) return -1;
        position += count;
        m_loop.Pump();
    }
}

IppMessage CupsSpooler::AskForJobs(std::string_view printer, const JobChoice& choice,
                                   const std::vector<const char*>& attributes) {
    if (!IsCupsPrinterName(printer)) {
        Fail({CupsFailure::kBadName, "there is no such printer"});
        return nullptr;
    }
    const IppRequest request = NewPrinterRequest(IPP_OP_GET_JOBS, printer, m_user);
    ipp_t* const message = request.message.get();
    ippAddString(message, IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "which-jobs", nullptr, choice.which);
    ippAddInteger(message, IPP_TAG_OPERATION, IPP_TAG_INTEGER, "limit", choice.limit);
    if (choice.first > 1)
        ippAddInteger(message, IPP_TAG_OPERATION, IPP_TAG_INTEGER, "first-job-id", choice.first);
    AskFor(request, attributes);
    return Ask(request);
}

int CupsSpooler::ListJobs(std::string_view printer, std::vector<JobInfo>& jobs) {
    const IppMessage answer = AskForJobs(printer, {"not-completed", 1, kMostJobs}, kJobAttributes);
    if (!answer) return -1;
    std::vector<JobInfo> read = ReadJobs(answer.get(), m_clock);
    jobs.insert(jobs.end(), std::make_move_iterator(read.begin()), std::make_move_iterator(read.end()));
    return 0;
}

// A server may keep a hundred thousand old jobs. It tells the ones that were over last first; what is newer
// still is then asked for, in whatever order they ended.
std::int64_t CupsSpooler::LastJob(std::string_view printer) {
    const JobChoice latest = {"completed", 1, kSomeJobs};
    IppMessage answer = AskForJobs(printer, latest, {"job-id"});
    if (!answer) return -1;
    const std::int64_t known = HighestJobNumber(answer.get());
    const JobChoice newer = {"all", NumberAfter(known), kMostJobs};
    answer = AskForJobs(printer, newer, {"job-id"});
    return answer ? std::max(known, HighestJobNumber(answer.get())) : -1;
}

int CupsSpooler::ListOverJobs(std::string_view printer, std::int64_t after, std::vector<JobInfo>& jobs) {
    const IppMessage answer = AskForJobs(printer, {"all", NumberAfter(after), kSomeJobs}, kOverJobAttributes);
    if (!answer) return -1;
    for (JobInfo& job : ReadOverJobs(answer.get(), m_clock))
        // A server that knows no "first-job-id" tells older ones, too.
        if (job.id > after) jobs.push_back(std::move(job));
    return 0;
}

bool CupsSpooler::OwnsJob(std::string_view printer, std::int64_t id) {
    if (!IsJobNumber(id)) return false;
    const IppRequest request = NewJobRequest(IPP_OP_GET_JOB_ATTRIBUTES, static_cast<int>(id), m_user);
    AskFor(request, {"job-printer-uri"});
    const IppMessage answer = Ask(request);
    return answer && EqualIgnoringAsciiCase(PrinterOfJob(answer.get()), printer);
}

int CupsSpooler::ChangeJobPriority(std::string_view printer, std::int64_t id, int priority) {
    if (priority < 1 || priority > 99 || !OwnsJob(printer, id)) return -1;
    const IppRequest request = NewJobRequest(IPP_OP_SET_JOB_ATTRIBUTES, static_cast<int>(id), m_user);
    ippAddInteger(request.message.get(), IPP_TAG_JOB, IPP_TAG_INTEGER, "job-priority", priority);
    return Ask(request) ? 0 : -1;
}

int CupsSpooler::CancelJob(std::string_view printer, std::int64_t id) {
    if (!OwnsJob(printer, id)) return -1;
    return Ask(NewJobRequest(IPP_OP_CANCEL_JOB, static_cast<int>(id), m_user)) ? 0 : -1;
}

int CupsSpooler::ListBins(std::string_view printer, std::vector<BinInfo>& bins) {
    CupsPrinterFacts facts;
    if (LookUpFacts(printer, facts) != 0) return -1;
    const std::vector<BinInfo> read = BinsOf({facts.sources.begin(), facts.sources.end()});
    bins.insert(bins.end(), read.begin(), read.end());
    return 0;
}

std::unique_ptr<Spooler> OpenCupsSpooler(Files& files, EventLoop& loop, Clock& clock, CupsNeed need,
                                         std::string& message) {
    auto spooler = std::make_unique<CupsSpooler>(files, loop, clock);
    if (need == CupsNeed::kPrinterAtOnce) spooler->BeImpatient();
    std::vector<PrinterInfo> printers;
    if (spooler->ListPrinters(printers) != 0) {
        message = "CUPS can't be used: " + spooler->LastFailure().text + ".";
        return nullptr;
    }
    if (need == CupsNeed::kPrinterAtOnce && printers.empty()) {
        message = "CUPS has no printer.";
        return nullptr;
    }
    return spooler;
}

}  // namespace quirepress
