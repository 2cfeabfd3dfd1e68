#include "fakes/fake_spooler.h"

#include <algorithm>
#include <iterator>

#include "base/text.h"
#include "platform/embedded/printer_port.h"
#include "platform/files.h"

namespace quirepress {

namespace {

constexpr int kNoSuchPrinter = 1801;
constexpr int kNoSuchFile = 2;

std::string Join(std::string_view verb, std::string_view first) {
    return std::string(verb) + " " + std::string(first);
}

}  // namespace

class FakeRawPrinter : public RawPrinter {
public:
    FakeRawPrinter(FakeSpooler& spooler, std::string_view printer) : m_spooler(spooler), m_printer(printer) {}

    ~FakeRawPrinter() override {
        if (m_started) m_spooler.TakeJobAway(JobId());
        m_spooler.m_calls.emplace_back("Close");
    }

    int StartDocument(const DocumentInfo& document) override {
        m_spooler.m_calls.push_back(Join("StartDocument", document.name));
        if (m_started) return Fail(kNoSuchFile);
        if (m_spooler.m_failures.start != 0) return Fail(m_spooler.m_failures.start);
        if (m_spooler.StartJob(m_printer, document, m_sent) != 0) return Fail(kNoSuchPrinter);
        m_started = true;
        return 0;
    }

    int WriteChunk(const void* data, std::size_t size) override {
        m_spooler.m_calls.push_back(Join("WriteChunk", std::to_string(size)));
        if (!m_started) return Fail(kNoSuchFile);
        m_spooler.m_sent[m_sent].bytes.append(static_cast<const char*>(data), size);
        return 0;
    }

    int Finish() override {
        const int result = FinishStarted();
        m_spooler.m_calls.push_back(Join("Finish", std::to_string(result)));
        return result;
    }

    std::int64_t JobId() const override { return WasStarted() ? m_spooler.m_sent[m_sent].jobId : 0; }
    int SystemError() const override { return m_error; }

private:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
    bool WasStarted() const { return m_sent != kNone; }

    int Fail(int error) {
        m_error = error;
        return -1;
    }

    int FinishStarted() {
        if (!m_started) return Fail(kNoSuchFile);
        m_started = false;
        const int refusal = m_spooler.m_failures.finish;
        if (refusal == 0) {
            const int finished = m_spooler.FinishJob(m_sent);
            return m_spooler.m_failures.answers ? 1 : finished;
        }
        m_spooler.TakeJobAway(JobId());
        return Fail(refusal);
    }

    FakeSpooler& m_spooler;
    std::string m_printer;
    std::size_t m_sent = kNone;
    int m_error = 0;
    bool m_started = false;
};

void FakeSpooler::PutPrinter(std::string_view name, std::string_view port, std::uint32_t statusBits) {
    Printer& printer = m_printers[std::string(name)];
    printer.info.name = name;
    printer.info.port = port;
    printer.info.statusBits = statusBits;
    if (m_default.empty()) m_default = name;
}

void FakeSpooler::SetPrinterStatus(std::string_view name, std::uint32_t statusBits) {
    if (Printer* printer = FindQueue(name)) printer->info.statusBits = statusBits;
}

void FakeSpooler::SetBins(std::string_view name, std::vector<BinInfo> bins) {
    if (Printer* printer = FindQueue(name)) printer->bins = std::move(bins);
}

std::int64_t FakeSpooler::PutJob(std::string_view printer, JobInfo job) {
    Printer* queue = FindQueue(printer);
    if (queue == nullptr) return -1;
    if (job.id == 0) job.id = m_lastId + 1;
    m_lastId = std::max(m_lastId, job.id);
    job.printer = printer;
    queue->jobs.push_back(job);
    Sort(*queue);
    return job.id;
}

void FakeSpooler::SetJobStatus(std::int64_t id, std::uint32_t statusBits, std::string_view statusText) {
    JobInfo* job = FindJob(id);
    if (job == nullptr) return;
    job->statusBits = statusBits;
    job->statusText = statusText;
}

void FakeSpooler::SetJobPages(std::int64_t id, int totalPages, int pagesPrinted) {
    JobInfo* job = FindJob(id);
    if (job == nullptr) return;
    job->totalPages = totalPages;
    job->pagesPrinted = pagesPrinted;
}

void FakeSpooler::SetUntried(std::int64_t id, bool isUntried) {
    if (JobInfo* job = FindJob(id)) job->isUntried = isUntried;
}

void FakeSpooler::TakeJobAway(std::int64_t id) {
    for (auto& [name, printer] : m_printers) {
        for (JobInfo job : printer.jobs) {
            if (!m_keepHistory || job.id != id) continue;
            constexpr std::uint32_t kLost = job_status::kError | job_status::kDeleted;
            if ((job.statusBits & kLost) == 0) job.statusBits = job_status::kPrinted;
            printer.over.push_back(job);
        }
        std::erase_if(printer.jobs, [id](const JobInfo& job) { return job.id == id; });
        Sort(printer);
    }
}

void FakeSpooler::DeliverJobs() {
    for (auto& [name, printer] : m_printers) {
        if ((printer.info.statusBits & printer_status::kPaused) != 0) continue;
        std::erase_if(printer.jobs, [](const JobInfo& job) { return job.statusBits == 0; });
    }
}

int FakeSpooler::CountCalls(std::string_view start) const {
    return static_cast<int>(std::count_if(m_calls.begin(), m_calls.end(),
                                          [&](const std::string& call) { return StartsWith(call, start); }));
}

int FakeSpooler::ListPrinters(std::vector<PrinterInfo>& printers) {
    m_calls.emplace_back("ListPrinters");
    if (m_failures.listing) return -1;
    for (const auto& [name, printer] : m_printers) {
        printers.push_back(printer.info);
        printers.back().jobs = static_cast<std::uint32_t>(printer.jobs.size());
        printers.back().isDefault = name == m_default;
    }
    return 0;
}

std::string FakeSpooler::DefaultPrinter() {
    return FindQueue(m_default) != nullptr ? m_default : std::string();
}

int FakeSpooler::MakeDefaultPrinter(std::string_view printer) {
    m_calls.push_back(Join("MakeDefaultPrinter", printer));
    const Printer* queue = FindQueue(printer);
    if (queue == nullptr || queue->info.port.empty()) return -1;
    m_default = printer;
    return 0;
}

std::unique_ptr<RawPrinter> FakeSpooler::OpenRawPrinter(std::string_view printer, int& systemError) {
    m_calls.push_back(Join("OpenRawPrinter", printer));
    systemError = m_failures.opening != 0 ? m_failures.opening : kNoSuchPrinter;
    if (m_failures.opening != 0 || FindQueue(printer) == nullptr) return nullptr;
    systemError = 0;
    return std::make_unique<FakeRawPrinter>(*this, printer);
}

std::int64_t FakeSpooler::PrintDocument(std::string_view printer, std::string_view path,
                                        const DocumentInfo& document, int& systemError) {
    m_calls.push_back(Join("PrintDocument", path));
    systemError = m_failures.printDocument;
    if (systemError != 0) return -1;
    systemError = kNoSuchFile;
    FileResult result = FileResult::kDone;
    const std::unique_ptr<InputFile> file = m_files.OpenForReading(path, result);
    if (file == nullptr) return -1;
    std::string bytes(static_cast<std::size_t>(std::max<std::int64_t>(file->Size(), 0)), '\0');
    if (file->ReadAt(0, bytes.data(), bytes.size()) != static_cast<std::int64_t>(bytes.size())) return -1;
    systemError = kNoSuchPrinter;
    std::size_t sent = 0;
    if (StartJob(printer, document, sent) != 0) return -1;
    systemError = 0;
    m_sent[sent].bytes = std::move(bytes);
    FinishJob(sent);
    return m_failures.answers ? kDocumentUnknown : m_sent[sent].jobId;
}

int FakeSpooler::ListJobs(std::string_view printer, std::vector<JobInfo>& jobs) {
    m_calls.push_back(Join("ListJobs", printer));
    const Printer* queue = FindQueue(printer);
    if (queue == nullptr || m_failures.listing) return -1;
    if (!m_hideJobs) jobs.insert(jobs.end(), queue->jobs.begin(), queue->jobs.end());
    return 0;
}

std::int64_t FakeSpooler::LastJob(std::string_view printer) {
    if (m_failures.listing) return -1;
    return m_keepHistory ? m_lastId : Spooler::LastJob(printer);
}

int FakeSpooler::ListOverJobs(std::string_view printer, std::int64_t after, std::vector<JobInfo>& jobs) {
    const Printer* queue = FindQueue(printer);
    if (queue == nullptr || m_failures.listing) return -1;
    std::copy_if(queue->over.begin(), queue->over.end(), std::back_inserter(jobs),
                 [after](const JobInfo& job) { return job.id > after; });
    return 0;
}

int FakeSpooler::ChangeJobPriority(std::string_view printer, std::int64_t id, int priority) {
    m_calls.push_back(Join("ChangeJobPriority", printer) + " " + std::to_string(id) + " " +
                      std::to_string(priority));
    Printer* queue = FindQueue(printer);
    JobInfo* job = FindJob(id);
    if (queue == nullptr || job == nullptr || job->printer != printer || priority < 1 || priority > 99)
        return -1;
    job->priority = priority;
    Sort(*queue);
    return 0;
}

int FakeSpooler::CancelJob(std::string_view printer, std::int64_t id) {
    m_calls.push_back(Join("CancelJob", printer) + " " + std::to_string(id));
    const JobInfo* job = FindJob(id);
    if (job == nullptr || job->printer != printer) return -1;
    SetJobStatus(id, job_status::kDeleted);
    TakeJobAway(id);
    return 0;
}

int FakeSpooler::ListBins(std::string_view printer, std::vector<BinInfo>& bins) {
    m_calls.push_back(Join("ListBins", printer));
    const Printer* queue = FindQueue(printer);
    if (queue == nullptr || m_failures.listing) return -1;
    bins.insert(bins.end(), queue->bins.begin(), queue->bins.end());
    return 0;
}

int FakeSpooler::CreatePrinterQueue(std::string_view printer, std::string_view port, std::string& message) {
    m_calls.push_back(Join("CreatePrinterQueue", printer));
    PrinterPort parsed;
    if (!CheckPrinterName(printer, message) || !ParsePrinterPort(port, parsed, message)) return 1;
    message = "There is a printer of this name.";
    if (FindQueue(printer) != nullptr) return 2;
    message.clear();
    PutPrinter(printer, port);
    return 0;
}

int FakeSpooler::RemovePrinterQueue(std::string_view printer, std::string& message) {
    m_calls.push_back(Join("RemovePrinterQueue", printer));
    const Printer* queue = FindQueue(printer);
    message = "There is no printer of this name.";
    if (queue == nullptr) return 2;
    message = "The printer has jobs.";
    if (!queue->jobs.empty()) return -1;
    message.clear();
    m_printers.erase(m_printers.find(printer));
    return 0;
}

int FakeSpooler::PausePrinterQueue(std::string_view printer, std::string& message) {
    m_calls.push_back(Join("PausePrinterQueue", printer));
    return SetPaused(printer, true, message);
}

int FakeSpooler::ResumePrinterQueue(std::string_view printer, std::string& message) {
    m_calls.push_back(Join("ResumePrinterQueue", printer));
    return SetPaused(printer, false, message);
}

void FakeSpooler::NoteOutcomeTold(std::string_view /*printer*/, std::int64_t id) {
    if (JobInfo* job = FindJob(id)) job->isOutcomeTold = job->isOfUnknownOutcome;
}

int FakeSpooler::RestartJob(std::string_view printer, std::int64_t id, std::string& message) {
    m_calls.push_back(Join("RestartJob", printer) + " " + std::to_string(id));
    message = "There is no printer of this name.";
    if (FindQueue(printer) == nullptr) return 2;
    message = "There is no such job.";
    const JobInfo* job = FindJob(id);
    if (job == nullptr || job->printer != printer) return -1;
    message.clear();
    SetJobStatus(id, 0);
    return 0;
}

FakeSpooler::Printer* FakeSpooler::FindQueue(std::string_view name) {
    const auto found = m_printers.find(name);
    return found == m_printers.end() ? nullptr : &found->second;
}

JobInfo* FakeSpooler::FindJob(std::int64_t id) {
    for (auto& [name, printer] : m_printers)
        for (JobInfo& job : printer.jobs)
            if (job.id == id) return &job;
    return nullptr;
}

int FakeSpooler::SetPaused(std::string_view printer, bool paused, std::string& message) {
    Printer* queue = FindQueue(printer);
    message = "There is no printer of this name.";
    if (queue == nullptr) return 2;
    message.clear();
    if (paused)
        queue->info.statusBits |= printer_status::kPaused;
    else
        queue->info.statusBits &= ~printer_status::kPaused;
    return 0;
}

int FakeSpooler::StartJob(std::string_view printer, const DocumentInfo& document, std::size_t& sent) {
    JobInfo job;
    job.machine = "testhost";
    job.user = "tester";
    job.document = document.name;
    job.dataType = "RAW";
    job.options = OptionsText(document.ticket, document.pageRanges);
    job.statusBits = job_status::kSpooling;
    job.submitted = m_now;
    const std::int64_t id = PutJob(printer, job);
    if (id < 0) return -1;
    sent = m_sent.size();
    m_sent.push_back({std::string(printer), document.name, document.copies, "", id, false, document.ticket,
                      document.pageRanges, document.priority});
    return 0;
}

int FakeSpooler::FinishJob(std::size_t sent) {
    SentDocument& document = m_sent[sent];
    document.finished = true;
    SetJobStatus(document.jobId, 0);
    if (JobInfo* job = FindJob(document.jobId)) job->size = static_cast<std::int64_t>(document.bytes.size());
    const Printer* queue = FindQueue(document.printer);
    const bool paused = queue != nullptr && (queue->info.statusBits & printer_status::kPaused) != 0;
    if (!m_keepJobs && !paused) TakeJobAway(document.jobId);
    return 0;
}

void FakeSpooler::Sort(Printer& printer) {
    std::sort(printer.jobs.begin(), printer.jobs.end(), [](const JobInfo& left, const JobInfo& right) {
        return left.priority != right.priority ? left.priority > right.priority : left.id < right.id;
    });
    int position = 0;
    for (JobInfo& job : printer.jobs) job.position = ++position;
}

}  // namespace quirepress
