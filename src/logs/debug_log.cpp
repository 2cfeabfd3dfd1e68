#include "logs/debug_log.h"

#include "base/credentials.h"
#include "platform/files.h"

namespace quirepress {

DebugLog::DebugLog() = default;
DebugLog::~DebugLog() = default;

int DebugLog::Open(Files& files, std::string_view path) {
    FileResult result = FileResult::kDone;
    m_file = files.OpenForWriting(path, OpenMode::kAppend, FileAccess::kShared, result);
    return m_file ? 0 : -1;
}

void DebugLog::Write(std::string_view text) {
    const std::string line = HideCredentials(text);
    m_file->Write(line.data(), line.size());
}

}  // namespace quirepress
