#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/embedded/job_sender.h"

namespace quirepress {

// Puts a job into a folder. On the same volume the rename of its data is the hand-over. On another one they
// are copied beside their place, the copy is noted in the `begun` file, and its rename is the hand-over.
class FolderSender : public JobSender {
public:
    explicit FolderSender(const SendRequest& request);
    ~FolderSender() override;

    SendReport Step() override;
    std::int64_t BytesSent() const override { return m_copied; }
    std::int64_t BytesTotal() const override { return m_size; }

private:
    enum class Phase { kStart, kCopy, kPlace };

    SendReport Start();
    SendReport BeginCopy();
    SendReport Copy();
    SendReport NoteCopy();
    FileResult WriteNote();
    SendReport Place();
    FileResult RenameInto(const std::string& from);
    SendReport Fail(FileResult result, const std::string& what) const;
    SendReport FailToPlace(FileResult result) const;

    SendRequest m_request;
    std::string m_folder;
    std::string m_copyPath;
    Phase m_phase = Phase::kStart;
    std::unique_ptr<InputFile> m_source;
    std::unique_ptr<OutputFile> m_copy;
    std::vector<char> m_buffer;
    std::int64_t m_copied = 0;
    std::int64_t m_size = 0;
};

}  // namespace quirepress
