#include "platform/file_tools.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "base/path.h"

namespace quirepress {

namespace {

constexpr std::size_t kChunkSize = 262'144;
constexpr Instant kHour = Instant{3600} * 1'000'000'000;

// Neither made nor written by a writer that is still at work: a copy gets the times of its model before its
// name, but not the time when it was made.
bool IsLeftOver(const FileFacts& file, const FileFacts& fresh) {
    return file.kind == FileKind::kRegular && fresh.written != kNoInstant &&
           std::max(file.created, file.written) < fresh.written - kHour;
}

std::string NameOfReplacement(std::string_view folder, int number) {
    return std::string(folder) + "~qpr" + std::to_string(number) + ".tmp";
}

}  // namespace

bool ReadWholeFile(Files& files, std::string_view path, std::int64_t limit, std::string& out,
                   FileResult& result) {
    const std::unique_ptr<InputFile> file = files.OpenForReading(path, result);
    if (!file) return false;
    result = FileResult::kFailed;
    // Not by its size alone: some files tell none, and any file may grow meanwhile.
    constexpr std::int64_t kLeast = 4096;
    std::string bytes;
    std::int64_t size = 0;
    for (;;) {
        const std::int64_t wanted = std::min(std::max(file->Size() - size, kLeast), limit - size) + 1;
        bytes.resize(static_cast<std::size_t>(size + wanted));
        const std::int64_t count = file->ReadAt(size, bytes.data() + size, static_cast<std::size_t>(wanted));
        if (count < 0 || size + count > limit) return false;
        size += count;
        if (count < wanted) break;
    }
    bytes.resize(static_cast<std::size_t>(size));
    out = std::move(bytes);
    result = FileResult::kDone;
    return true;
}

// A new file beside `path`, under a name that is free. It has this name until it is complete.
ReplacementFile::ReplacementFile(Files& files, std::string_view path, FileAccess access) : m_files(files) {
    constexpr int kMostTries = 1000;
    // A link stays one: what it stands for is replaced.
    m_target = files.ResolvePath(path);
    if (m_target.empty()) m_target = path;
    // A device or a FIFO must not become a file.
    m_result = FileResult::kNoAccess;
    if (files.Inspect(m_target).kind == FileKind::kOther) return;
    // The name is short, so that it can be made wherever `path` can.
    const std::string_view folder = FolderOf(m_target);
    int number = 0;
    for (; number < kMostTries; ++number) {
        m_path = NameOfReplacement(folder, number);
        m_file = files.OpenForWriting(m_path, OpenMode::kCreateNew, access, m_result);
        if (m_result != FileResult::kExists) break;
    }
    if (m_result == FileResult::kDone && number > 0) EraseLeftOvers(number);
}

// What writers that were ended have left under the names that were taken.
void ReplacementFile::EraseLeftOvers(int count) {
    const FileFacts fresh = m_files.Inspect(m_path);
    for (int number = 0; number < count; ++number) {
        const std::string path = NameOfReplacement(FolderOf(m_target), number);
        if (IsLeftOver(m_files.Inspect(path), fresh)) m_files.Erase(path);
    }
}

ReplacementFile::~ReplacementFile() {
    if (!m_file) return;
    m_file.reset();
    m_files.Erase(m_path);
}

FileResult ReplacementFile::Write(const void* data, std::size_t size) {
    if (m_result == FileResult::kDone) m_result = m_file->Write(data, size);
    return m_result;
}

// The permissions before there is anything to read, and the times once more when nothing is written any more.
void ReplacementFile::TakeAttributesOf(std::string_view path) {
    m_model = path;
    if (m_result == FileResult::kDone) m_files.CopyAttributes(m_model, m_path);
}

FileResult ReplacementFile::Finish(bool replace) {
    if (m_result == FileResult::kDone) m_result = m_file->FlushToDisk();
    if (m_result == FileResult::kDone) m_result = m_file->Close();
    if (m_result == FileResult::kDone && !m_model.empty()) m_files.CopyAttributes(m_model, m_path);
    if (m_result == FileResult::kDone) m_result = m_files.Rename(m_path, m_target, replace);
    if (m_result == FileResult::kDone) m_file.reset();
    return m_result;
}

FileResult ReplaceFileDurably(Files& files, std::string_view path, std::string_view bytes,
                              FileAccess access) {
    ReplacementFile file(files, path, access);
    file.Write(bytes.data(), bytes.size());
    return file.Finish();
}

FileResult WriteNewFileDurably(Files& files, std::string_view path, std::string_view bytes) {
    if (files.Inspect(path).kind != FileKind::kMissing) return FileResult::kExists;
    ReplacementFile file(files, path);
    file.Write(bytes.data(), bytes.size());
    return file.Finish(false);
}

FileResult CopyFileDurably(Files& files, std::string_view from, std::string_view to,
                           const std::function<bool()>& keepGoing) {
    FileResult result = FileResult::kFailed;
    const std::unique_ptr<InputFile> source = files.OpenForReading(from, result);
    if (!source) return result;
    if (files.Inspect(to).kind != FileKind::kMissing) return FileResult::kExists;
    ReplacementFile target(files, to);
    target.TakeAttributesOf(from);
    std::vector<char> chunk(kChunkSize);
    for (std::int64_t position = 0;;) {
        const std::int64_t count = source->ReadAt(position, chunk.data(), chunk.size());
        if (count < 0) return FileResult::kFailed;
        if (count == 0) break;
        result = target.Write(chunk.data(), static_cast<std::size_t>(count));
        if (result != FileResult::kDone) return result;
        if (keepGoing && !keepGoing()) return FileResult::kFailed;
        position += count;
    }
    return target.Finish(false);
}

bool IsGone(Files& files, std::string_view path) {
    const std::string_view folder = FolderOf(path);
    return files.Inspect(path).kind == FileKind::kMissing &&
           files.Inspect(folder.empty() ? "." : folder).kind == FileKind::kFolder;
}

bool HaveSameBytes(Files& files, std::string_view path, std::string_view other) {
    FileResult result = FileResult::kDone;
    const std::unique_ptr<InputFile> one = files.OpenForReading(path, result);
    const std::unique_ptr<InputFile> two = files.OpenForReading(other, result);
    if (!one || !two || one->Size() != two->Size()) return false;
    std::vector<char> bytes(kChunkSize);
    std::vector<char> others(kChunkSize);
    for (std::int64_t position = 0;; position += kChunkSize) {
        const std::int64_t count = one->ReadAt(position, bytes.data(), bytes.size());
        if (count < 0 || two->ReadAt(position, others.data(), others.size()) != count) return false;
        if (!std::equal(bytes.begin(), bytes.begin() + count, others.begin())) return false;
        if (count < static_cast<std::int64_t>(bytes.size())) return true;
    }
}

FileResult EraseTree(Files& files, std::string_view path) {
    // Only a folder that is not empty is gone into, which a link to one never is.
    FileResult result = files.Erase(path);
    if (result == FileResult::kMissing) return FileResult::kDone;
    if (result != FileResult::kExists) return result;
    std::vector<FolderEntry> entries;
    result = files.ListFolder(path, entries);
    for (const FolderEntry& entry : entries) {
        const FileResult erased = EraseTree(files, JoinPath(path, entry.name));
        if (erased != FileResult::kDone) result = erased;
    }
    return result == FileResult::kDone ? files.Erase(path) : result;
}

}  // namespace quirepress
