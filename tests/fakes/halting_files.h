#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files.h"

namespace quirepress {

// Files of a program that is ended at its n-th change: that change is done by half or not at all, and
// whatever the program tries afterwards fails without an effect. Nothing is flushed: the system goes on.
class HaltingFiles : public Files {
public:
    explicit HaltingFiles(Files& real) : m_real(real) {}

    void HaltAfter(int changes) { m_left = changes; }
    bool HasHalted() const { return m_left < 0; }
    // Renames into this folder, and out of it, answer that it lies on another volume.
    void PutOnOtherVolume(std::string_view folder) { m_otherVolume = folder; }

    FileFacts Inspect(std::string_view path) override { return m_real.Inspect(path); }
    std::unique_ptr<InputFile> OpenForReading(std::string_view path, FileResult& result) override;
    std::unique_ptr<OutputFile> OpenForWriting(std::string_view path, OpenMode mode, FileAccess access,
                                               FileResult& result) override;
    FileResult ListFolder(std::string_view path, std::vector<FolderEntry>& entries) override;
    FileResult MakeFolders(std::string_view path) override;
    FileResult MakePrivateFolders(std::string_view path) override;
    FileResult Rename(std::string_view from, std::string_view to, bool replace) override;
    FileResult Erase(std::string_view path) override;
    FileResult CopyAttributes(std::string_view from, std::string_view to) override;
    FileResult FlushFolder(std::string_view path) override;
    std::string ResolvePath(std::string_view path) override { return m_real.ResolvePath(path); }
    std::string ShortPath(std::string_view path) override { return m_real.ShortPath(path); }
    std::unique_ptr<FileLock> TryLock(std::string_view path, FileResult& result) override;
    std::int64_t FreeSpace(std::string_view path) override { return m_real.FreeSpace(path); }

    // Whether one more change may be made; the one that may not halts the program.
    bool TakeChange();

private:
    Files& m_real;
    std::string m_otherVolume;
    int m_left = 1'000'000'000;
};

}  // namespace quirepress
