#include "platform/embedded/printer_delivery.h"

#include <algorithm>

#include "base/format.h"
#include "platform/event_loop.h"
#include "platform/file_tools.h"
#include "platform/spooler.h"

namespace quirepress {

namespace {

constexpr long long kLookInterval = 1'000;
constexpr long long kFirstBackOff = 1'000;
constexpr long long kLongestBackOff = 60'000;
constexpr std::int64_t kLongestRecord = 1 << 20;
constexpr std::string_view kProgramEnded = "the program ended while the job was being sent";

std::string ReadNote(Files& files, const JobFolder& jobs, std::int64_t id) {
    std::string note;
    FileResult result = FileResult::kDone;
    ReadWholeFile(files, jobs.BegunPath(id), kLongestRecord, note, result);
    return note;
}

void WriteNote(Files& files, const JobFolder& jobs, std::int64_t id, const std::string& note) {
    FileResult result = FileResult::kDone;
    const auto file =
        files.OpenForWriting(jobs.BegunPath(id), OpenMode::kReplace, FileAccess::kShared, result);
    if (file) file->Write(note.data(), note.size());
}

bool HasJob(const std::vector<JobFiles>& all, std::int64_t id) {
    return std::any_of(all.begin(), all.end(), [id](const JobFiles& job) { return job.id == id; });
}

bool IsPlaced(const std::string& note) {
    std::string copyPath;
    return begun_note::ReadPlaced(note, copyPath);
}

}  // namespace

bool ReadRecord(Files& files, const JobFolder& jobs, const JobFiles& job, JobRecord& record) {
    std::string text;
    FileResult result = FileResult::kDone;
    const std::string path =
        job.priority != 0 ? jobs.RecordPath(job.id, job.priority) : jobs.DraftPath(job.id);
    return ReadWholeFile(files, path, kLongestRecord, text, result) && ReadJobRecord(text, record);
}

PrinterDelivery::PrinterDelivery(Files& files, EventLoop& loop, Network& network, PrinterFolder printer)
    : m_files(files),
      m_loop(loop),
      m_network(network),
      m_printer(std::move(printer)),
      m_movedAt(loop.MonotonicMilliseconds()) {}

bool PrinterDelivery::Step() {
    if (!m_sender) {
        if (m_loop.MonotonicMilliseconds() < m_nextLook) return false;
        Look();
        return m_sender != nullptr;
    }
    CheckStillWanted();
    if (!m_sender) return true;
    const SendReport report = m_sender->Step();
    if (report.outcome == SendOutcome::kWorking) return report.moreAtOnce;
    Conclude(report);
    return true;
}

void PrinterDelivery::RetrySoon() {
    LookSoon();
    m_retryAt = 0;
    m_jobTroubles.clear();
}

void PrinterDelivery::Abandon(std::int64_t id) {
    if (IsSending(id)) m_sender.reset();
    m_jobTroubles.erase(id);
    std::string copyPath;
    if (begun_note::ReadPlaced(ReadNote(m_files, m_printer.Jobs(), id), copyPath)) m_files.Erase(copyPath);
}

void PrinterDelivery::NoteTold(std::int64_t id) {
    const JobFolder& jobs = m_printer.Jobs();
    WriteNote(m_files, jobs, id, begun_note::WithTold(ReadNote(m_files, jobs, id)));
}

bool PrinterDelivery::IsTold(std::int64_t id) const {
    return begun_note::IsTold(ReadNote(m_files, m_printer.Jobs(), id));
}

FileResult PrinterDelivery::Restart(const JobFiles& job) {
    if (IsSending(job.id)) return FileResult::kBusy;
    const std::string note = job.isBegun ? ReadNote(m_files, m_printer.Jobs(), job.id) : std::string();
    FileResult result = FileResult::kDone;
    if (job.isBegun && !IsPlaced(note)) {
        if (note.empty() && IsOtherDelivering()) return FileResult::kBusy;
        result = m_files.Erase(m_printer.Jobs().BegunPath(job.id));
    }
    RetrySoon();
    return result;
}

bool PrinterDelivery::IsOtherDelivering() {
    FileResult result = FileResult::kDone;
    return !m_lock && !m_files.TryLock(m_printer.DeliveryLockPath(), result) && result == FileResult::kBusy;
}

void PrinterDelivery::LookSoon() {
    m_nextLook = 0;
    m_isChanged = true;
}

void PrinterDelivery::Look() {
    const long long now = m_loop.MonotonicMilliseconds();
    m_nextLook = now + kLookInterval;
    const PrinterSettings settings = m_printer.ReadSettings();
    if (settings.paused || now < m_retryAt) {
        m_lock.reset();
        if (IsListOld()) Refresh();
        return;
    }
    // Without the lock another program may deliver; what it has done is seen only once the lock is held.
    if (!m_lock && !m_isChanged) Refresh();
    const bool isWorthTrying = m_lock || m_isChanged || !m_waiting.empty();
    if (!isWorthTrying || !TakeLock()) return;
    if (!StartNext(settings)) m_lock.reset();
}

bool PrinterDelivery::TakeLock() {
    if (m_lock && !m_isChanged && !IsListOld()) return true;
    FileResult result = FileResult::kDone;
    if (!m_lock) m_lock = m_files.TryLock(m_printer.DeliveryLockPath(), result);
    m_isOthersTurn = result == FileResult::kBusy;
    if (m_lock) Refresh();
    return m_lock != nullptr;
}

bool PrinterDelivery::IsListOld() const {
    return m_loop.MonotonicMilliseconds() - m_listedAt >= kLookInterval;
}

void PrinterDelivery::Refresh() {
    const std::vector<JobFiles> all = m_printer.Jobs().List();
    m_listedAt = m_loop.MonotonicMilliseconds();
    m_isChanged = false;
    m_printer.Jobs().Sweep(all);
    std::vector<JobFiles> waiting = JobFolder::WaitingInOrder(all);
    const auto isSame = [](const JobFiles& left, const JobFiles& right) { return left.id == right.id; };
    if (!std::equal(waiting.begin(), waiting.end(), m_waiting.begin(), m_waiting.end(), isSame))
        m_movedAt = m_listedAt;
    m_waiting = std::move(waiting);
    std::erase_if(m_jobTroubles, [&](const auto& trouble) { return !HasJob(all, trouble.first); });
}

bool PrinterDelivery::StartNext(const PrinterSettings& settings) {
    for (JobFiles& job : m_waiting) {
        JobRecord record;
        if (!CanSend(job, record)) continue;
        m_job = job;
        if (!settings.portError.empty()) {
            Conclude({SendOutcome::kPortFailed, printer_status::kError, job_status::kError,
                      settings.portError.substr(0, settings.portError.size() - 1)});
            return false;
        }
        m_sender =
            MakeJobSender({m_files, m_loop, m_network, m_habits, m_printer, settings.port, job, record});
        m_nextCheck = m_loop.MonotonicMilliseconds() + kLookInterval;
        return true;
    }
    return false;
}

bool PrinterDelivery::CanSend(JobFiles& job, JobRecord& record) {
    const long long now = m_loop.MonotonicMilliseconds();
    const auto trouble = m_jobTroubles.find(job.id);
    if (trouble != m_jobTroubles.end() && now < trouble->second.retryAt) return false;
    const JobFolder& jobs = m_printer.Jobs();
    if (job.isBegun && !CanResume(job)) return false;
    if (ReadRecord(m_files, jobs, job, record)) return true;
    // A record that is not there any more has just got another priority, or the job is gone.
    if (m_files.Inspect(jobs.RecordPath(job.id, job.priority)).kind == FileKind::kMissing)
        m_isChanged = true;
    else
        m_jobTroubles[job.id] = {std::string(kDamagedRecord), now + kLongestBackOff};
    return false;
}

bool PrinterDelivery::CanResume(JobFiles& job) {
    const JobFolder& jobs = m_printer.Jobs();
    job.isBegun = m_files.Inspect(jobs.BegunPath(job.id)).kind != FileKind::kMissing;
    if (!job.isBegun) return true;  // restarted
    const std::string note = ReadNote(m_files, jobs, job.id);
    // Who sent it is gone, or the delivery would not be ours.
    if (note.empty()) WriteNote(m_files, jobs, job.id, begun_note::WriteUnknown(std::string(kProgramEnded)));
    return IsPlaced(note);
}

// Another program may have cancelled the job while it is sent. Its data may stay to be seen while they are
// open here, so the record counts; it has another name by another priority. What is left is for Sweep.
void PrinterDelivery::CheckStillWanted() {
    const long long now = m_loop.MonotonicMilliseconds();
    if (now < m_nextCheck) return;
    m_nextCheck = now + kLookInterval;
    const std::string record = m_printer.Jobs().RecordPath(m_job.id, m_job.priority);
    if (m_files.Inspect(record).kind != FileKind::kMissing) return;
    for (const JobFiles& job : m_printer.Jobs().List()) {
        if (job.id != m_job.id || !job.IsWaiting()) continue;
        m_job.priority = job.priority;
        return;
    }
    m_sender.reset();
    LookSoon();
}

void PrinterDelivery::Conclude(const SendReport& report) {
    m_sender.reset();
    m_nextLook = 0;
    m_movedAt = m_loop.MonotonicMilliseconds();
    switch (report.outcome) {
        case SendOutcome::kDelivered:
        case SendOutcome::kGone:
            RetireJob();
            break;
        case SendOutcome::kPortFailed:
            NotePortTrouble(report);
            break;
        case SendOutcome::kJobFailed:
            m_jobTroubles[m_job.id] = {report.text + ".", m_loop.MonotonicMilliseconds() + kLongestBackOff};
            break;
        default:  // of unknown outcome: the job's files say so
            m_isChanged = true;
            break;
    }
}

void PrinterDelivery::RetireJob() {
    std::erase_if(m_waiting, [this](const JobFiles& job) { return job.id == m_job.id; });
    m_job.isBegun = m_job.hasDraft = true;  // by now perhaps
    const FileResult result = m_printer.Jobs().Retire(m_job);
    m_jobTroubles.erase(m_job.id);
    m_printer.WriteTrouble({});
    m_backOff = 0;
    if (result == FileResult::kDone || result == FileResult::kMissing) return;
    // A job that went over a network stays as one of unknown outcome.
    m_jobTroubles[m_job.id] = {std::string("The job is delivered but can't be taken from the queue: ") +
                                   DescribeFileResult(result) + ".",
                               m_loop.MonotonicMilliseconds() + kLongestBackOff};
}

void PrinterDelivery::NotePortTrouble(const SendReport& report) {
    m_backOff = m_backOff == 0 ? kFirstBackOff : std::min(2 * m_backOff, kLongestBackOff);
    m_retryAt = m_loop.MonotonicMilliseconds() + m_backOff;
    m_nextLook = std::min(m_retryAt, m_loop.MonotonicMilliseconds() + kLookInterval);
    m_lock.reset();
    m_printer.WriteTrouble({m_job.id, report.printerBits, report.jobBits,
                            report.text + Format("; next try in %d s", m_backOff / 1000)});
}

PortTrouble PrinterDelivery::CurrentTrouble() {
    // What another program noted holds as long as the job is there that it tried.
    PortTrouble trouble = m_printer.ReadTrouble();
    if (trouble.jobId == 0 || (IsSending(trouble.jobId) && m_sender->BytesSent() > 0)) return {};
    const std::string data = m_printer.Jobs().DataPath(trouble.jobId);
    return m_files.Inspect(data).kind == FileKind::kMissing ? PortTrouble() : trouble;
}

void PrinterDelivery::DescribeJob(const JobFiles& job, const PortTrouble& trouble, std::uint32_t& bits,
                                  std::string& text) {
    const auto own = m_jobTroubles.find(job.id);
    JobRecord record;
    if (IsSending(job.id) && trouble.jobId != job.id) {
        bits = job_status::kPrinting;
        text = Format("%d of %d bytes sent", m_sender->BytesSent(), m_sender->BytesTotal());
    } else if (job.isBegun) {
        const std::string note = ReadNote(m_files, m_printer.Jobs(), job.id);
        if (IsPlaced(note)) return;
        const bool isSentByOther = note.empty() && IsOtherDelivering();
        bits = isSentByOther ? job_status::kPrinting : job_status::kError | job_status::kUserIntervention;
        if (!isSentByOther) text = begun_note::ReadUnknown(note);
    } else if (own != m_jobTroubles.end()) {
        bits = job_status::kError;
        text = own->second.text;
    } else if (trouble.jobId == job.id) {
        bits = trouble.jobBits;
        text = trouble.text;
    }
}

bool PrinterDelivery::IsUntried() {
    const bool isOffered = m_sender && m_sender->BytesSent() > 0;
    return !isOffered && !m_isOthersTurn && !m_printer.ReadSettings().paused && CurrentTrouble().jobId == 0;
}

long long PrinterDelivery::UnmovedMilliseconds() const {
    return m_sender ? m_sender->StalledMilliseconds() : m_loop.MonotonicMilliseconds() - m_movedAt;
}

void PrinterDelivery::AddState(DeliveryState& state) {
    if (m_isChanged || IsListOld()) Refresh();
    if (m_waiting.empty()) return;
    const bool isPaused = m_printer.ReadSettings().paused;
    // What was noted before this program tried itself, or saw that another one does, is no news.
    const bool isTried = m_backOff != 0 || m_isOthersTurn;
    const bool isPortStuck = isTried && CurrentTrouble().jobId != 0;
    const int othersBefore = state.waiting - state.stuck;
    for (const JobFiles& job : m_waiting) {
        const bool isUnknown =
            job.isBegun && !m_isOthersTurn && !IsPlaced(ReadNote(m_files, m_printer.Jobs(), job.id));
        const bool isHeld = isPaused || isPortStuck || isUnknown || m_jobTroubles.contains(job.id);
        const bool isUnderWay = IsSending(job.id) && m_sender->BytesSent() > 0;
        ++state.waiting;
        if (isHeld && !isUnderWay) ++state.stuck;
    }
    if (state.waiting - state.stuck > othersBefore) {
        const long long unmoved = UnmovedMilliseconds();
        state.unmoved = othersBefore == 0 ? unmoved : std::min(state.unmoved, unmoved);
    }
    if (!m_sender) return;
    state.bytesSent += m_sender->BytesSent();
    state.bytesTotal += m_sender->BytesTotal();
}

}  // namespace quirepress
