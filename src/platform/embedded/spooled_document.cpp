#include "platform/embedded/spooled_document.h"

#include <algorithm>

#include <utility>

#include "base/format.h"

namespace quirepress {

int SpoolerErrorNumber(FileResult result) {
    return static_cast<int>(result);
}

std::string SpoolerErrorText(int number) {
    if (number == kNoSuchPrinterNumber) return "there is no such printer";
    if (number == kTooManyCopiesNumber) return Format("more than %d copies at once", kMostCopies);
    return DescribeFileResult(static_cast<FileResult>(number));
}

SpooledDocument::SpooledDocument(Files& files, PrinterFolder printer, JobRecord record,
                                 std::function<void()> onClosed)
    : m_files(files),
      m_printer(std::move(printer)),
      m_record(std::move(record)),
      m_onClosed(std::move(onClosed)) {}

SpooledDocument::~SpooledDocument() {
    Drop();
}

int SpooledDocument::StartDocument(const DocumentInfo& document) {
    if (m_id != 0) return Fail(FileResult::kBusy);
    m_record.document = document.name;
    m_priority = std::clamp(document.priority, kLowestPriority, kHighestPriority);
    m_record.options = OptionsText(document.ticket, document.pageRanges);
    FileResult result = m_printer.Jobs().Prepare();
    if (result == FileResult::kDone) m_lock = m_printer.Jobs().Claim(m_id, result);
    if (!m_lock) return Fail(result);
    result = OpenFiles();
    if (result == FileResult::kDone) return 0;
    Drop();
    m_id = 0;
    return Fail(result);
}

// The draft comes before the data: JobFolder tells by it that the job is not closed.
FileResult SpooledDocument::OpenFiles() {
    const JobFolder& jobs = m_printer.Jobs();
    // Looked at once the job's lock is to be seen: the printer may be on its way out.
    FileResult result = FileResult::kMissing;
    if (!m_printer.Exists()) return result;
    m_draft = m_files.OpenForWriting(jobs.DraftPath(m_id), OpenMode::kCreateNew, FileAccess::kShared, result);
    if (!m_draft) return result;
    const std::string text = WriteJobRecord(m_record);
    result = m_draft->Write(text.data(), text.size());
    if (result != FileResult::kDone) return result;
    m_data = m_files.OpenForWriting(jobs.DataPath(m_id), OpenMode::kCreateNew, FileAccess::kShared, result);
    return result;
}

int SpooledDocument::WriteChunk(const void* data, std::size_t size) {
    if (!m_data) return Fail(FileResult::kMissing);
    const FileResult result = m_data->Write(data, size);
    if (result == FileResult::kDone) return 0;
    if (m_writeResult == FileResult::kDone) m_writeResult = result;
    return Fail(result);
}

int SpooledDocument::Finish() {
    if (!m_data) return Fail(FileResult::kMissing);
    FileResult result = m_writeResult;
    if (result == FileResult::kDone) result = Commit();
    if (result != FileResult::kDone) {
        Drop();
        return Fail(result);
    }
    m_lock.reset();
    m_files.Erase(m_printer.Jobs().LockPath(m_id));
    if (m_onClosed) m_onClosed();
    return 0;
}

// Three flushes, none of them to spare: the data and the record each for what is in them, and the folder (by
// the rename) for their names. The record's new name is what makes the job; nothing has to be flushed
// before the data are, nor after it.
FileResult SpooledDocument::Commit() {
    for (std::unique_ptr<OutputFile>* file : {&m_data, &m_draft}) {
        FileResult result = (*file)->FlushToDisk();
        if (result == FileResult::kDone) result = (*file)->Close();
        if (result != FileResult::kDone) return result;
        file->reset();
    }
    const JobFolder& jobs = m_printer.Jobs();
    return m_files.Rename(jobs.DraftPath(m_id), jobs.RecordPath(m_id, m_priority), false);
}

void SpooledDocument::Drop() {
    if (!m_lock) return;
    m_data.reset();
    m_draft.reset();
    JobFiles job;
    job.id = m_id;
    job.hasData = job.hasDraft = job.hasLock = true;
    m_printer.Jobs().Retire(job);
    m_lock.reset();
}

int SpooledDocument::Fail(FileResult result) {
    m_systemError = SpoolerErrorNumber(result);
    return -1;
}

}  // namespace quirepress
