#include "platform/embedded/embedded_spooler.h"

#include <algorithm>

#include "base/text.h"
#include "platform/clock.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/machine.h"

namespace quirepress {

namespace {

constexpr long long kRefreshInterval = 1'000;

bool IsInQueue(const JobFiles& job) {
    return job.IsWaiting() || (job.IsUnclosed() && job.hasDraft);
}

}  // namespace

EmbeddedSpooler::EmbeddedSpooler(Files& files, EventLoop& loop, Network& network, Clock& clock,
                                 Machine& machine, std::string_view workingFolder)
    : m_files(files),
      m_loop(loop),
      m_network(network),
      m_clock(clock),
      m_machine(machine),
      m_printers(files, workingFolder),
      m_self(std::make_shared<EmbeddedSpooler*>(this)) {}

EmbeddedSpooler::~EmbeddedSpooler() {
    *m_self = nullptr;
    EndDelivery();
}

int EmbeddedSpooler::Open(std::string& message) {
    if (m_printers.MakeFirst(message) != 0) return -1;
    for (const std::string& name : m_printers.Names()) {
        JobFolder jobs = m_printers.At(name).Jobs();
        jobs.Sweep(jobs.List());
    }
    if (m_pumpTask == 0) m_pumpTask = m_loop.AddPumpTask([this] { return PumpQueues(); });
    return 0;
}

void EmbeddedSpooler::EndDelivery() {
    if (m_pumpTask != 0) m_loop.RemovePumpTask(m_pumpTask);
    m_pumpTask = 0;
    m_deliveries.clear();
}

bool EmbeddedSpooler::PumpQueues() {
    RefreshDeliveries();
    bool workLeft = false;
    for (const auto& [name, delivery] : m_deliveries)
        if (!m_held.contains(name)) workLeft = delivery->Step() || workLeft;
    return workLeft;
}

void EmbeddedSpooler::RefreshDeliveries() {
    const long long now = m_loop.MonotonicMilliseconds();
    if (now < m_nextRefresh) return;
    m_nextRefresh = now + kRefreshInterval;
    const std::vector<std::string> names = m_printers.Names();
    for (const std::string& name : names) DeliveryOf(name);
    std::erase_if(m_deliveries, [&](const auto& delivery) {
        return !delivery.second->IsSending() &&
               !std::binary_search(names.begin(), names.end(), delivery.first);
    });
}

bool EmbeddedSpooler::IsIdle() {
    const DeliveryState state = WaitingJobs();
    return state.waiting == state.stuck;
}

DeliveryState EmbeddedSpooler::WaitingJobs() {
    DeliveryState state;
    for (const std::string& name : m_printers.Names()) DeliveryOf(name).AddState(state);
    return state;
}

PrinterDelivery& EmbeddedSpooler::DeliveryOf(std::string_view printer) {
    const auto found = m_deliveries.find(printer);
    if (found != m_deliveries.end()) return *found->second;
    auto delivery = std::make_unique<PrinterDelivery>(m_files, m_loop, m_network, m_printers.At(printer));
    return *m_deliveries.emplace(printer, std::move(delivery)).first->second;
}

void EmbeddedSpooler::WakeDelivery(const std::string& printer) {
    DeliveryOf(printer).LookSoon();
}

int EmbeddedSpooler::ListPrinters(std::vector<PrinterInfo>& printers) {
    const std::string defaultPrinter = m_printers.Default();
    for (const std::string& name : m_printers.Names()) {
        printers.push_back(DescribePrinter(name));
        printers.back().isDefault = name == defaultPrinter;
    }
    return 0;
}

PrinterInfo EmbeddedSpooler::DescribePrinter(const std::string& name) {
    const PrinterFolder folder = m_printers.At(name);
    const PrinterSettings settings = folder.ReadSettings();
    const std::vector<JobFiles> all = folder.Jobs().List();
    const PortTrouble trouble = DeliveryOf(name).CurrentTrouble();
    PrinterInfo info;
    info.name = name;
    info.port = settings.portText;
    info.driver = settings.driver;
    info.jobs = static_cast<std::uint32_t>(std::count_if(all.begin(), all.end(), IsInQueue));
    info.statusBits = settings.statusBits | trouble.printerBits;
    if (settings.paused) info.statusBits |= printer_status::kPaused;
    if (!settings.portError.empty()) info.statusBits |= printer_status::kError;
    info.statusText = trouble.jobId != 0 ? trouble.text : settings.portError;
    return info;
}

std::unique_ptr<RawPrinter> EmbeddedSpooler::OpenRawPrinter(std::string_view printer, int& systemError) {
    PrinterFolder folder = m_printers.At(printer);
    systemError = kNoSuchPrinterNumber;
    if (!folder.Exists()) return nullptr;
    systemError = 0;
    JobRecord record;
    record.user = m_machine.LoginName();
    record.machine = m_machine.HostName();
    record.dataType = "RAW";
    record.submitted = m_clock.ToLocal(m_clock.Now());
    const auto wake = [self = m_self, name = std::string(printer)] {
        if (*self != nullptr) (*self)->WakeDelivery(name);
    };
    return std::make_unique<SpooledDocument>(m_files, std::move(folder), std::move(record), wake);
}

std::int64_t EmbeddedSpooler::PrintDocument(std::string_view printer, std::string_view path,
                                            const DocumentInfo& document, int& systemError) {
    FileResult result = FileResult::kDone;
    const std::unique_ptr<InputFile> source = m_files.OpenForReading(path, result);
    systemError = SpoolerErrorNumber(result);
    if (!source) return -1;
    const std::int64_t copies =
        std::int64_t{std::max(document.copies, 1)} * std::max(document.ticket.copies, 1);
    systemError = kTooManyCopiesNumber;
    if (copies > kMostCopies) return -1;
    DocumentInfo single = document;
    single.copies = 1;
    single.ticket.copies = 0;
    if (copies == 1) return CopyIntoQueue(printer, *source, single, systemError);
    // None of them goes out while a later one can still fail.
    const auto held = m_held.emplace(printer);
    std::vector<std::int64_t> ids;
    std::int64_t id = 0;
    for (std::int64_t copy = 0; copy < copies && id >= 0; ++copy) {
        id = CopyIntoQueue(printer, *source, single, systemError);
        ids.push_back(id);
    }
    if (id < 0) {
        ids.pop_back();
        for (const std::int64_t earlier : ids) CancelJob(printer, earlier);
    }
    m_held.erase(held);
    return id < 0 ? -1 : ids.front();
}

std::int64_t EmbeddedSpooler::CopyIntoQueue(std::string_view printer, InputFile& source,
                                            const DocumentInfo& document, int& systemError) {
    constexpr std::size_t kChunk = std::size_t{256} * 1024;
    const std::unique_ptr<RawPrinter> target = OpenRawPrinter(printer, systemError);
    if (!target) return -1;
    std::vector<char> buffer(kChunk);
    int result = target->StartDocument(document);
    const std::int64_t size = source.Size();
    for (std::int64_t position = 0; result == 0;) {
        const std::int64_t count = source.ReadAt(position, buffer.data(), buffer.size());
        if (count < 0 || (count == 0 && position != size)) {
            systemError = SpoolerErrorNumber(FileResult::kFailed);
            return -1;
        }
        if (count == 0) break;
        result = target->WriteChunk(buffer.data(), static_cast<std::size_t>(count));
        position += count;
        m_loop.Pump();
    }
    if (result == 0) result = target->Finish();
    systemError = target->SystemError();
    return result == 0 ? target->JobId() : -1;
}

int EmbeddedSpooler::ListJobs(std::string_view printer, std::vector<JobInfo>& jobs) {
    const PrinterFolder folder = m_printers.At(printer);
    if (!folder.Exists()) return -1;
    std::vector<JobFiles> all = folder.Jobs().List();
    std::erase_if(all, [](const JobFiles& job) { return !IsInQueue(job); });
    std::stable_sort(all.begin(), all.end(), [](const JobFiles& left, const JobFiles& right) {
        return std::max(left.priority, kLowestPriority) > std::max(right.priority, kLowestPriority);
    });
    const PortTrouble trouble = DeliveryOf(printer).CurrentTrouble();
    int position = 0;
    for (const JobFiles& job : all) {
        jobs.push_back(DescribeJob(folder, job, trouble));
        jobs.back().position = ++position;
    }
    return 0;
}

JobInfo EmbeddedSpooler::DescribeJob(const PrinterFolder& printer, const JobFiles& job,
                                     const PortTrouble& trouble) {
    JobInfo info;
    info.id = job.id;
    info.printer = printer.Name();
    info.priority = std::max(job.priority, kLowestPriority);
    info.size = m_files.Inspect(printer.Jobs().DataPath(job.id)).size;
    JobRecord record;
    const bool isRead = ReadRecord(m_files, printer.Jobs(), job, record);
    info.document = record.document;
    info.user = record.user;
    info.machine = record.machine;
    info.dataType = record.dataType;
    info.options = record.options;
    info.submitted = record.submitted;
    if (job.IsUnclosed()) {
        info.statusBits = job_status::kSpooling;
    } else if (!isRead) {
        info.statusBits = job_status::kError;
        info.statusText = kDamagedRecord;
    } else {
        PrinterDelivery& delivery = DeliveryOf(printer.Name());
        delivery.DescribeJob(job, trouble, info.statusBits, info.statusText);
        const bool isWell = info.statusBits == 0 || info.statusBits == job_status::kPrinting;
        info.isUntried = isWell && delivery.IsUntried();
        info.isOfUnknownOutcome = job.isBegun && (info.statusBits & job_status::kUserIntervention) != 0;
        info.isOutcomeTold = info.isOfUnknownOutcome && delivery.IsTold(job.id);
    }
    return info;
}

int EmbeddedSpooler::ChangeJobPriority(std::string_view printer, std::int64_t id, int priority) {
    const PrinterFolder folder = m_printers.At(printer);
    if (priority < kLowestPriority || priority > kHighestPriority || !folder.Exists()) return -1;
    for (const JobFiles& job : folder.Jobs().List()) {
        if (job.id != id || !job.IsWaiting()) continue;
        if (job.priority == priority) return 0;
        // One rename: the job has the one priority or the other, whatever happens.
        const std::string from = folder.Jobs().RecordPath(id, job.priority);
        const std::string to = folder.Jobs().RecordPath(id, priority);
        return m_files.Rename(from, to, false) == FileResult::kDone ? 0 : -1;
    }
    return -1;
}

int EmbeddedSpooler::CancelJob(std::string_view printer, std::int64_t id) {
    const PrinterFolder folder = m_printers.At(printer);
    if (!folder.Exists()) return -1;
    DeliveryOf(printer).Abandon(id);
    for (const JobFiles& job : folder.Jobs().List()) {
        if (job.id != id || !job.IsWaiting()) continue;
        DeliveryOf(printer).LookSoon();
        return folder.Jobs().Retire(job) == FileResult::kDone ? 0 : -1;
    }
    return -1;
}

int EmbeddedSpooler::ListBins(std::string_view printer, std::vector<BinInfo>& bins) {
    const PrinterFolder folder = m_printers.At(printer);
    if (!folder.Exists()) return -1;
    const PrinterSettings settings = folder.ReadSettings();
    bins.insert(bins.end(), settings.bins.begin(), settings.bins.end());
    return 0;
}

std::string EmbeddedSpooler::DefaultPrinter() {
    return m_printers.Default();
}

int EmbeddedSpooler::MakeDefaultPrinter(std::string_view printer) {
    return m_printers.MakeDefault(printer);
}

int EmbeddedSpooler::RestoreDefaultChoice(std::string_view choice) {
    return choice.empty() ? m_printers.ForgetDefault() : m_printers.MakeDefault(choice);
}

void EmbeddedSpooler::NoteOutcomeTold(std::string_view printer, std::int64_t id) {
    const PrinterFolder folder = m_printers.At(printer);
    if (folder.Exists() && m_files.Inspect(folder.Jobs().BegunPath(id)).kind == FileKind::kRegular)
        DeliveryOf(printer).NoteTold(id);
}

int EmbeddedSpooler::CreatePrinterQueue(std::string_view printer, std::string_view port,
                                        std::string& message) {
    return m_printers.Create(printer, port, message);
}

int EmbeddedSpooler::RemovePrinterQueue(std::string_view printer, std::string& message) {
    return m_printers.Remove(printer, message);
}

int EmbeddedSpooler::PausePrinterQueue(std::string_view printer, std::string& message) {
    return m_printers.SetPaused(printer, true, message);
}

int EmbeddedSpooler::ResumePrinterQueue(std::string_view printer, std::string& message) {
    const int result = m_printers.SetPaused(printer, false, message);
    if (result == 0) DeliveryOf(printer).RetrySoon();
    return result;
}

int EmbeddedSpooler::RestartJob(std::string_view printer, std::int64_t id, std::string& message) {
    const PrinterFolder folder = m_printers.At(printer);
    message = "There is no printer \"" + ToPrintableLine(printer) + "\".";
    if (!folder.Exists()) return 2;
    message = "There is no job " + std::to_string(id) + " on \"" + ToPrintableLine(printer) + "\".";
    for (const JobFiles& job : folder.Jobs().List()) {
        if (job.id != id || !job.IsWaiting()) continue;
        const FileResult result = DeliveryOf(printer).Restart(job);
        message = "The job can't be restarted: " + std::string(DescribeFileResult(result)) + ".";
        if (result != FileResult::kDone) return -1;
        message.clear();
        return 0;
    }
    return -1;
}

}  // namespace quirepress
