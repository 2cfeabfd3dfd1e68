#include "fakes/faulty_files.h"

#include <algorithm>
#include <utility>

namespace quirepress {

class FaultyInputFile : public InputFile {
public:
    FaultyInputFile(FaultyFiles& owner, std::string_view path, std::unique_ptr<InputFile> real)
        : m_owner(owner), m_path(path), m_real(std::move(real)) {}

    std::int64_t ReadAt(std::int64_t offset, void* buffer, std::size_t size) override {
        if (m_owner.Begin(FaultyFiles::Call::kReadAt, m_path) != FileResult::kDone) return -1;
        return m_real->ReadAt(offset, buffer, size);
    }
    std::int64_t Size() override { return m_real->Size(); }

private:
    FaultyFiles& m_owner;
    std::string m_path;
    std::unique_ptr<InputFile> m_real;
};

class FaultyOutputFile : public OutputFile {
public:
    FaultyOutputFile(FaultyFiles& owner, std::string_view path, std::unique_ptr<OutputFile> real)
        : m_owner(owner), m_path(path), m_real(std::move(real)) {}

    FileResult Write(const void* data, std::size_t size) override {
        const FileResult fault = m_owner.Begin(FaultyFiles::Call::kWrite, m_path);
        if (fault != FileResult::kDone) return fault;
        const std::size_t fitting = m_owner.TakeRoom(size);
        const FileResult result = m_real->Write(data, fitting);
        return result == FileResult::kDone && fitting < size ? FileResult::kNoSpace : result;
    }
    FileResult FlushToDisk() override {
        const FileResult fault = m_owner.Begin(FaultyFiles::Call::kFlushToDisk, m_path);
        return fault == FileResult::kDone ? m_real->FlushToDisk() : fault;
    }
    FileResult Close() override {
        const FileResult fault = m_owner.Begin(FaultyFiles::Call::kClose, m_path);
        const FileResult result = m_real->Close();
        return fault == FileResult::kDone ? result : fault;
    }

private:
    FaultyFiles& m_owner;
    std::string m_path;
    std::unique_ptr<OutputFile> m_real;
};

void FaultyFiles::Heal() {
    m_faults.clear();
    m_actions.clear();
    m_room.reset();
}

void FaultyFiles::BeforeEach(Call call, std::function<void(std::string_view path)> action) {
    m_actions[call] = std::move(action);
}

int FaultyFiles::CountOf(Call call) const {
    const auto isOfKind = [call](const Record& record) { return record.call == call; };
    return static_cast<int>(std::count_if(m_records.begin(), m_records.end(), isOfKind));
}

FileFacts FaultyFiles::Inspect(std::string_view path) {
    return Begin(Call::kInspect, path) == FileResult::kDone ? m_real.Inspect(path) : FileFacts();
}

std::unique_ptr<InputFile> FaultyFiles::OpenForReading(std::string_view path, FileResult& result) {
    result = Begin(Call::kOpenForReading, path);
    if (result != FileResult::kDone) return nullptr;
    auto file = m_real.OpenForReading(path, result);
    return file ? std::make_unique<FaultyInputFile>(*this, path, std::move(file)) : nullptr;
}

std::unique_ptr<OutputFile> FaultyFiles::OpenForWriting(std::string_view path, OpenMode mode,
                                                        FileAccess access, FileResult& result) {
    result = Begin(Call::kOpenForWriting, path);
    if (result != FileResult::kDone) return nullptr;
    auto file = m_real.OpenForWriting(path, mode, access, result);
    return file ? std::make_unique<FaultyOutputFile>(*this, path, std::move(file)) : nullptr;
}

FileResult FaultyFiles::ListFolder(std::string_view path, std::vector<FolderEntry>& entries) {
    const FileResult fault = Begin(Call::kListFolder, path);
    return fault == FileResult::kDone ? m_real.ListFolder(path, entries) : fault;
}

FileResult FaultyFiles::MakeFolders(std::string_view path) {
    const FileResult fault = Begin(Call::kMakeFolders, path);
    return fault == FileResult::kDone ? m_real.MakeFolders(path) : fault;
}

FileResult FaultyFiles::MakePrivateFolders(std::string_view path) {
    const FileResult fault = Begin(Call::kMakeFolders, path);
    return fault == FileResult::kDone ? m_real.MakePrivateFolders(path) : fault;
}

FileResult FaultyFiles::Rename(std::string_view from, std::string_view to, bool replace) {
    const FileResult fault = Begin(Call::kRename, from);
    return fault == FileResult::kDone ? m_real.Rename(from, to, replace) : fault;
}

FileResult FaultyFiles::Erase(std::string_view path) {
    const FileResult fault = Begin(Call::kErase, path);
    return fault == FileResult::kDone ? m_real.Erase(path) : fault;
}

FileResult FaultyFiles::CopyAttributes(std::string_view from, std::string_view to) {
    const FileResult fault = Begin(Call::kCopyAttributes, to);
    return fault == FileResult::kDone ? m_real.CopyAttributes(from, to) : fault;
}

FileResult FaultyFiles::FlushFolder(std::string_view path) {
    const FileResult fault = Begin(Call::kFlushFolder, path);
    return fault == FileResult::kDone ? m_real.FlushFolder(path) : fault;
}

std::unique_ptr<FileLock> FaultyFiles::TryLock(std::string_view path, FileResult& result) {
    result = Begin(Call::kTryLock, path);
    return result == FileResult::kDone ? m_real.TryLock(path, result) : nullptr;
}

FileResult FaultyFiles::Begin(Call call, std::string_view path) {
    m_records.push_back({call, std::string(path)});
    const auto action = m_actions.find(call);
    if (action != m_actions.end()) action->second(path);
    const auto found = m_faults.find(call);
    if (found == m_faults.end()) return FileResult::kDone;
    Fault& fault = found->second;
    if (fault.always) return fault.result;
    if (--fault.callsUntil > 0) return FileResult::kDone;
    const FileResult result = fault.result;
    m_faults.erase(found);
    return result;
}

std::size_t FaultyFiles::TakeRoom(std::size_t size) {
    if (!m_room) return size;
    const auto fitting = std::min<std::int64_t>(static_cast<std::int64_t>(size), *m_room);
    *m_room -= fitting;
    return static_cast<std::size_t>(fitting);
}

}  // namespace quirepress
