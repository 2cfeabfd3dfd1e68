#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/files.h"

namespace quirepress {

// Passes every call on to other files, but for those that it is told to fail, and keeps a record.
class FaultyFiles : public Files {
public:
    enum class Call {
        kInspect,
        kOpenForReading,
        kReadAt,
        kOpenForWriting,
        kWrite,
        kFlushToDisk,
        kClose,
        kListFolder,
        kMakeFolders,
        kRename,
        kErase,
        kFlushFolder,
        kTryLock,
        kCopyAttributes
    };
    struct Record {
        Call call;
        std::string path;
        friend bool operator==(const Record&, const Record&) = default;
    };

    explicit FaultyFiles(Files& real) : m_real(real) {}

    // The `nth` call of this kind from now on fails, once.
    void FailOnce(Call call, FileResult result, int nth = 1) { m_faults[call] = {result, nth, false}; }
    void FailAlways(Call call, FileResult result) { m_faults[call] = {result, 1, true}; }
    // From now on `bytes` more can be written; of a longer write what fits is written, and it fails.
    void FillDiskAfter(std::int64_t bytes) { m_room = bytes; }
    void Heal();
    // Runs before each call of this kind: other programs at work.
    void BeforeEach(Call call, std::function<void(std::string_view path)> action);

    const std::vector<Record>& Records() const { return m_records; }
    int CountOf(Call call) const;

    FileFacts Inspect(std::string_view path) override;
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

private:
    friend class FaultyInputFile;
    friend class FaultyOutputFile;
    struct Fault {
        FileResult result = FileResult::kFailed;
        int callsUntil = 1;
        bool always = false;
    };

    // Notes the call; what it is to fail with, or kDone.
    FileResult Begin(Call call, std::string_view path);
    // How many of `size` bytes still fit.
    std::size_t TakeRoom(std::size_t size);

    Files& m_real;
    std::map<Call, Fault> m_faults;
    std::map<Call, std::function<void(std::string_view)>> m_actions;
    std::optional<std::int64_t> m_room;
    std::vector<Record> m_records;
};

}  // namespace quirepress
