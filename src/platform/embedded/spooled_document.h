#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/embedded/job_record.h"
#include "platform/embedded/printer_folder.h"
#include "platform/spooler.h"

namespace quirepress {

// A stable number for `result`, to be shown in logs; 0 for kDone.
int SpoolerErrorNumber(FileResult result);
constexpr int kNoSuchPrinterNumber = 100;
constexpr int kTooManyCopiesNumber = 101;
// The sentence part for each of them.
std::string SpoolerErrorText(int number);

// Of one file at once: each is a job and a file of its own, and nothing else happens until the last is
// written.
constexpr std::int64_t kMostCopies = 9'999;

// One document on its way into a printer's queue. It can outlive the spooler that opened it.
class SpooledDocument : public RawPrinter {
public:
    // `record` lacks the document's name and options; `onClosed` is called when a job has joined the queue.
    SpooledDocument(Files& files, PrinterFolder printer, JobRecord record, std::function<void()> onClosed);
    ~SpooledDocument() override;

    int StartDocument(const DocumentInfo& document) override;
    int WriteChunk(const void* data, std::size_t size) override;
    int Finish() override;
    std::int64_t JobId() const override { return m_id; }
    int SystemError() const override { return m_systemError; }

private:
    FileResult OpenFiles();
    FileResult Commit();
    void Drop();
    int Fail(FileResult result);

    Files& m_files;
    PrinterFolder m_printer;
    JobRecord m_record;
    std::function<void()> m_onClosed;
    int m_priority = 1;
    std::int64_t m_id = 0;
    std::unique_ptr<FileLock> m_lock;  // held while the document is open
    std::unique_ptr<OutputFile> m_draft;
    std::unique_ptr<OutputFile> m_data;
    FileResult m_writeResult = FileResult::kDone;  // the first failure
    int m_systemError = 0;
};

}  // namespace quirepress
