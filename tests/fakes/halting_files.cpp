#include "fakes/halting_files.h"

#include "base/text.h"

namespace quirepress {

namespace {

class HaltingOutputFile : public OutputFile {
public:
    HaltingOutputFile(HaltingFiles& files, std::unique_ptr<OutputFile> real)
        : m_files(files), m_real(std::move(real)) {}

    FileResult Write(const void* data, std::size_t size) override {
        if (m_files.HasHalted()) return FileResult::kFailed;
        if (m_files.TakeChange()) return m_real->Write(data, size);
        m_real->Write(data, size / 2);
        return FileResult::kFailed;
    }
    FileResult FlushToDisk() override {
        return m_files.HasHalted() ? FileResult::kFailed : FileResult::kDone;
    }
    FileResult Close() override { return m_files.HasHalted() ? FileResult::kFailed : m_real->Close(); }

private:
    HaltingFiles& m_files;
    std::unique_ptr<OutputFile> m_real;
};

}  // namespace

bool HaltingFiles::TakeChange() {
    if (m_left >= 0) --m_left;
    return m_left >= 0;
}

std::unique_ptr<InputFile> HaltingFiles::OpenForReading(std::string_view path, FileResult& result) {
    result = FileResult::kFailed;
    return HasHalted() ? nullptr : m_real.OpenForReading(path, result);
}

std::unique_ptr<OutputFile> HaltingFiles::OpenForWriting(std::string_view path, OpenMode mode,
                                                         FileAccess access, FileResult& result) {
    result = FileResult::kFailed;
    if (!TakeChange()) return nullptr;
    auto file = m_real.OpenForWriting(path, mode, access, result);
    return file ? std::make_unique<HaltingOutputFile>(*this, std::move(file)) : nullptr;
}

FileResult HaltingFiles::ListFolder(std::string_view path, std::vector<FolderEntry>& entries) {
    return HasHalted() ? FileResult::kFailed : m_real.ListFolder(path, entries);
}

FileResult HaltingFiles::MakePrivateFolders(std::string_view path) {
    return TakeChange() ? m_real.MakePrivateFolders(path) : FileResult::kFailed;
}

FileResult HaltingFiles::MakeFolders(std::string_view path) {
    return TakeChange() ? m_real.MakeFolders(path) : FileResult::kFailed;
}

FileResult HaltingFiles::Rename(std::string_view from, std::string_view to, bool replace) {
    const auto isOther = [&](std::string_view path) {
        return !m_otherVolume.empty() && StartsWith(path, m_otherVolume);
    };
    if (!HasHalted() && isOther(from) != isOther(to)) return FileResult::kOtherVolume;
    return TakeChange() ? m_real.Rename(from, to, replace) : FileResult::kFailed;
}

FileResult HaltingFiles::Erase(std::string_view path) {
    return TakeChange() ? m_real.Erase(path) : FileResult::kFailed;
}

FileResult HaltingFiles::CopyAttributes(std::string_view from, std::string_view to) {
    return TakeChange() ? m_real.CopyAttributes(from, to) : FileResult::kFailed;
}

FileResult HaltingFiles::FlushFolder(std::string_view) {
    return HasHalted() ? FileResult::kFailed : FileResult::kDone;
}

std::unique_ptr<FileLock> HaltingFiles::TryLock(std::string_view path, FileResult& result) {
    result = FileResult::kFailed;
    return TakeChange() ? m_real.TryLock(path, result) : nullptr;
}

}  // namespace quirepress
