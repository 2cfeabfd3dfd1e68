#include "platform/embedded/folder_sender.h"

#include <algorithm>

#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "platform/file_tools.h"
#include "platform/spooler.h"

namespace quirepress {

namespace {

constexpr std::int64_t kLongestNote = 1 << 16;

// The same at every try of this job, so that a try that was broken off leaves nothing behind; another for
// each printer, whatever folders they share.
std::string CopyName(const std::string& jobsFolder, std::int64_t id) {
    std::uint64_t hash = 0xcbf29ce484222325;  // FNV-1a
    for (const char c : jobsFolder) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
    return Format(".%016x-%08d.part", hash, id);
}

}  // namespace

FolderSender::FolderSender(const SendRequest& request)
    : m_request(request), m_folder(request.printer.OutputFolder(request.port)) {}

FolderSender::~FolderSender() {
    if (m_phase != Phase::kCopy) return;
    m_copy.reset();
    m_request.files.Erase(m_copyPath);
}

SendReport FolderSender::Step() {
    switch (m_phase) {
        case Phase::kStart:
            return Start();
        case Phase::kCopy:
            return Copy();
        default:
            return Place();
    }
}

SendReport FolderSender::Start() {
    Files& files = m_request.files;
    if (m_request.job.isBegun) {
        std::string note;
        FileResult result = FileResult::kDone;
        const std::string path = m_request.printer.Jobs().BegunPath(m_request.job.id);
        if (!ReadWholeFile(files, path, kLongestNote, note, result) ||
            !begun_note::ReadPlaced(note, m_copyPath))
            return Fail(FileResult::kFailed, "The file " + path + " can't be read");
        m_folder = FolderOf(m_copyPath);
        m_size = m_copied = files.Inspect(m_copyPath).size;
        return Place();
    }
    FileResult result = files.MakeFolders(m_folder);
    if (result != FileResult::kDone) return Fail(result, "The folder " + m_folder + " can't be made");
    const std::string data = m_request.printer.Jobs().DataPath(m_request.job.id);
    result = RenameInto(data);
    if (result == FileResult::kDone) return {SendOutcome::kDelivered};
    if (result == FileResult::kOtherVolume) return BeginCopy();
    if (files.Inspect(data).kind == FileKind::kMissing) return {SendOutcome::kGone};
    return FailToPlace(result);
}

SendReport FolderSender::BeginCopy() {
    const JobFolder& jobs = m_request.printer.Jobs();
    FileResult result = FileResult::kDone;
    m_source = m_request.files.OpenForReading(jobs.DataPath(m_request.job.id), result);
    if (!m_source) {
        if (result == FileResult::kMissing) return {SendOutcome::kGone};
        SendReport report = Fail(result, "The job's data can't be read");
        report.outcome = SendOutcome::kJobFailed;
        return report;
    }
    m_size = m_source->Size();
    m_copyPath = JoinPath(m_folder, CopyName(jobs.Path(), m_request.job.id));
    m_copy = m_request.files.OpenForWriting(m_copyPath, OpenMode::kReplace, FileAccess::kShared, result);
    if (!m_copy) return Fail(result, "The document can't be written into " + m_folder);
    m_phase = Phase::kCopy;
    m_buffer.resize(kBytesPerPass);
    return {.moreAtOnce = true};
}

SendReport FolderSender::Copy() {
    const std::int64_t count = m_source->ReadAt(m_copied, m_buffer.data(), m_buffer.size());
    if (count < 0) {
        SendReport report = Fail(FileResult::kFailed, "The job's data can't be read");
        report.outcome = SendOutcome::kJobFailed;
        return report;
    }
    if (count == 0) return NoteCopy();
    const FileResult result = m_copy->Write(m_buffer.data(), static_cast<std::size_t>(count));
    if (result != FileResult::kDone) return Fail(result, "The document can't be written into " + m_folder);
    m_copied += count;
    return {.moreAtOnce = true};
}

SendReport FolderSender::NoteCopy() {
    FileResult result = m_copy->FlushToDisk();
    if (result == FileResult::kDone) result = m_copy->Close();
    if (result == FileResult::kDone) result = m_request.files.FlushFolder(m_folder);
    if (result != FileResult::kDone) return Fail(result, "The document can't be written into " + m_folder);
    m_copy.reset();
    const JobFolder& jobs = m_request.printer.Jobs();
    // A job that was cancelled meanwhile must not come to lie in the folder.
    if (m_request.files.Inspect(jobs.DataPath(m_request.job.id)).kind == FileKind::kMissing)
        return {SendOutcome::kGone};
    result = WriteNote();
    if (result != FileResult::kDone) return Fail(result, "The queue can't be written");
    m_phase = Phase::kPlace;
    return {.moreAtOnce = true};
}

// Under the draft's name first, which a closed job has no other use for.
FileResult FolderSender::WriteNote() {
    Files& files = m_request.files;
    const JobFolder& jobs = m_request.printer.Jobs();
    const std::string draft = jobs.DraftPath(m_request.job.id);
    const std::string note = begun_note::WritePlaced(m_copyPath);
    FileResult result = FileResult::kDone;
    const auto file = files.OpenForWriting(draft, OpenMode::kReplace, FileAccess::kShared, result);
    if (result == FileResult::kDone) result = file->Write(note.data(), note.size());
    if (result == FileResult::kDone) result = file->FlushToDisk();
    if (result == FileResult::kDone) result = file->Close();
    if (result == FileResult::kDone) result = files.Rename(draft, jobs.BegunPath(m_request.job.id), true);
    return result;
}

SendReport FolderSender::Place() {
    m_phase = Phase::kPlace;
    const FileResult result = RenameInto(m_copyPath);
    if (result == FileResult::kDone) return {SendOutcome::kDelivered};
    // The note is written only when the copy is there for good, so it has been renamed already.
    const bool isPlaced = m_request.files.Inspect(m_copyPath).kind == FileKind::kMissing &&
                          m_request.files.Inspect(m_folder).kind == FileKind::kFolder;
    if (isPlaced) return {SendOutcome::kDelivered};
    return FailToPlace(result);
}

FileResult FolderSender::RenameInto(const std::string& from) {
    constexpr int kMostCopies = 100;
    FileResult result = FileResult::kExists;
    for (int copy = 1; copy <= kMostCopies && result == FileResult::kExists; ++copy) {
        const std::string name = OutputName(m_request.job.id, m_request.record.document, copy);
        result = m_request.files.Rename(from, JoinPath(m_folder, name), false);
    }
    return result;
}

SendReport FolderSender::Fail(FileResult result, const std::string& what) const {
    return {SendOutcome::kPortFailed, printer_status::kError, job_status::kError,
            ToPrintableLine(what) + ": " + DescribeFileResult(result)};
}

SendReport FolderSender::FailToPlace(FileResult result) const {
    SendReport report = Fail(result, "The document can't be put into " + m_folder);
    // A name that this folder does not take says nothing about the next one.
    if (result == FileResult::kBadName || result == FileResult::kExists)
        report.outcome = SendOutcome::kJobFailed;
    return report;
}

}  // namespace quirepress
