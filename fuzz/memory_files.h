#pragma once

#include <algorithm>
#include <cstring>
#include <map>
#include <string>

#include "platform/files.h"

namespace quirepress {

// A small disk in memory: a file is its path and its bytes, a folder is there when a path leads through it.
class MemoryFiles : public Files {
public:
    void Put(std::string path, std::string bytes) { m_files[std::move(path)] = std::move(bytes); }
    const std::map<std::string, std::string>& All() const { return m_files; }

    FileFacts Inspect(std::string_view path) override {
        FileFacts facts;
        const auto found = m_files.find(std::string(path));
        if (found != m_files.end()) {
            facts.kind = FileKind::kRegular;
            facts.readable = true;
            facts.size = static_cast<std::int64_t>(found->second.size());
            facts.created = facts.written = facts.accessed = 1;
        } else if (HasFolder(path)) {
            facts.kind = FileKind::kFolder;
        }
        return facts;
    }

    std::unique_ptr<InputFile> OpenForReading(std::string_view path, FileResult& result) override {
        const auto found = m_files.find(std::string(path));
        result = found == m_files.end() ? FileResult::kMissing : FileResult::kDone;
        return found == m_files.end() ? nullptr : std::make_unique<Input>(found->second);
    }

    std::unique_ptr<OutputFile> OpenForWriting(std::string_view path, OpenMode mode, FileAccess,
                                               FileResult& result) override {
        const auto [place, isNew] = m_files.try_emplace(std::string(path));
        result = !isNew && mode == OpenMode::kCreateNew ? FileResult::kExists : FileResult::kDone;
        if (result != FileResult::kDone) return nullptr;
        if (mode == OpenMode::kReplace) place->second.clear();
        return std::make_unique<Output>(place->second, m_room);
    }

    FileResult ListFolder(std::string_view path, std::vector<FolderEntry>& entries) override {
        const std::string start = std::string(path) + "/";
        for (auto it = m_files.lower_bound(start); it != m_files.end() && it->first.starts_with(start);
             ++it) {
            const std::string rest = it->first.substr(start.size());
            const std::string name = rest.substr(0, rest.find('/'));
            const FileKind kind = name == rest ? FileKind::kRegular : FileKind::kFolder;
            if (!name.empty() && (entries.empty() || entries.back().name != name))
                entries.push_back({name, kind});
        }
        return FileResult::kDone;
    }

    FileResult MakeFolders(std::string_view path) override {
        return m_files.count(std::string(path)) != 0 ? FileResult::kExists : FileResult::kDone;
    }
    FileResult Rename(std::string_view, std::string_view, bool) override { return FileResult::kFailed; }
    FileResult Erase(std::string_view path) override {
        return m_files.erase(std::string(path)) != 0 ? FileResult::kDone : FileResult::kMissing;
    }
    FileResult CopyAttributes(std::string_view, std::string_view) override { return FileResult::kDone; }
    FileResult FlushFolder(std::string_view) override { return FileResult::kDone; }
    std::string ResolvePath(std::string_view path) override {
        return Inspect(path).kind == FileKind::kMissing ? std::string() : std::string(path);
    }
    std::unique_ptr<FileLock> TryLock(std::string_view, FileResult& result) override {
        result = FileResult::kFailed;
        return nullptr;
    }
    std::int64_t FreeSpace(std::string_view) override { return m_room; }

private:
    class Input : public InputFile {
    public:
        explicit Input(std::string bytes) : m_bytes(std::move(bytes)) {}
        std::int64_t ReadAt(std::int64_t offset, void* buffer, std::size_t size) override {
            if (offset < 0) return -1;
            if (offset >= Size()) return 0;
            const std::size_t count = std::min(size, m_bytes.size() - static_cast<std::size_t>(offset));
            std::memcpy(buffer, m_bytes.data() + offset, count);
            return static_cast<std::int64_t>(count);
        }
        std::int64_t Size() override { return static_cast<std::int64_t>(m_bytes.size()); }

    private:
        std::string m_bytes;
    };

    class Output : public OutputFile {
    public:
        Output(std::string& bytes, std::int64_t& room) : m_bytes(bytes), m_room(room) {}
        FileResult Write(const void* data, std::size_t size) override {
            if (static_cast<std::int64_t>(size) > m_room) return FileResult::kNoSpace;
            m_room -= static_cast<std::int64_t>(size);
            m_bytes.append(static_cast<const char*>(data), size);
            return FileResult::kDone;
        }
        FileResult FlushToDisk() override { return FileResult::kDone; }
        FileResult Close() override { return FileResult::kDone; }

    private:
        std::string& m_bytes;
        std::int64_t& m_room;
    };

    bool HasFolder(std::string_view path) const {
        const std::string start = std::string(path) + "/";
        const auto it = m_files.lower_bound(start);
        return it != m_files.end() && it->first.starts_with(start);
    }

    std::map<std::string, std::string> m_files;
    std::int64_t m_room = std::int64_t{16} << 20;
};

}  // namespace quirepress
