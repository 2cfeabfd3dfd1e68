#include "platform/shell.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <optional>

#include "base/path.h"
#include "base/text.h"
#include "platform/file_tools.h"
#include "platform/linux/desktop_entry.h"
#include "platform/linux/make_services.h"
#include "platform/linux/mime_globs.h"

namespace quirepress {

namespace {

std::string EnvironmentText(const char* name, const char* otherwise) {
    const char* const value = std::getenv(name);
    return value == nullptr || *value == '\0' ? otherwise : value;
}

// The "#!" line of a script, without its mark; empty when it has none.
std::string_view InterpreterLine(std::string_view start) {
    if (!StartsWith(start, "#!")) return {};
    std::string_view line = start.substr(2, start.find('\n') - 2);
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    while (!line.empty() && std::string_view(" \t\r").find(line.back()) != std::string_view::npos)
        line.remove_suffix(1);
    return line;
}

class LinuxShell : public Shell {
public:
    explicit LinuxShell(Files& files) : m_files(files) {}

    std::string ResolveShortcut(std::string_view path) override {
        constexpr std::int64_t kLargestEntry = 65'536;
        std::string entry;
        FileResult result = FileResult::kDone;
        if (!IsShortcut(path) || !ReadWholeFile(m_files, path, kLargestEntry, entry, result)) return {};
        std::string target = ReadLinkEntry(entry);
        const bool missing = IsAbsolutePath(target) && m_files.Inspect(target).kind == FileKind::kMissing;
        return missing ? std::string() : target;
    }

    bool IsShortcut(std::string_view path) override {
        return EqualIgnoringAsciiCase(FileExtension(path), ".desktop");
    }

    std::string TypeOfFile(std::string_view path) override {
        if (!m_types) ReadTypes();
        const auto found = m_types->find(ToLowerAscii(FileExtension(path)));
        return found == m_types->end() ? std::string() : found->second;
    }

    bool FindPrintCommand(std::string_view, RegisteredCommand&) override { return false; }
    bool FindPhotoCommand(std::string_view, std::string_view, RegisteredCommand&) override { return false; }

    std::string FindProgram(std::string_view name) override {
        if (name.empty() || name.find('\0') != std::string_view::npos) return {};
        if (name.find('/') != std::string_view::npos)
            return IsProgram(std::string(name)) ? std::string(name) : std::string();
        const std::string folders = EnvironmentText("PATH", "/usr/local/bin:/usr/bin:/bin");
        for (const std::string_view folder : SplitAt(folders, ':')) {
            std::string path = JoinPath(folder.empty() ? "." : folder, name);
            if (IsProgram(path)) return path;
        }
        return {};
    }

    // As the system reads a script's first line: an interpreter and at most one word for it.
    std::vector<std::string> ScriptCommand(std::string_view path) override {
        FileResult result = FileResult::kDone;
        const std::unique_ptr<InputFile> file = m_files.OpenForReading(path, result);
        std::array<char, 256> bytes = {};
        const std::int64_t size = file ? file->ReadAt(0, bytes.data(), bytes.size()) : -1;
        if (size < 0) return {};
        const std::string_view line =
            InterpreterLine(std::string_view(bytes.data(), static_cast<std::size_t>(size)));
        std::vector<std::string> words;
        if (line.empty()) {
            words.emplace_back("/bin/sh");
        } else {
            const std::size_t end = std::min(line.find_first_of(" \t"), line.size());
            words.emplace_back(line.substr(0, end));
            const std::size_t next = line.find_first_not_of(" \t", end);
            if (next != std::string_view::npos) words.emplace_back(line.substr(next));
        }
        // No name is taken for an option.
        words.push_back(IsAbsolutePath(path) ? std::string(path) : "./" + std::string(path));
        return words;
    }

private:
    bool IsProgram(const std::string& path) {
        return access(path.c_str(), X_OK) == 0 && m_files.Inspect(path).kind == FileKind::kRegular;
    }

    // The database of the user, then those of the system, in their order.
    void ReadTypes() {
        constexpr std::int64_t kLargestDatabase = 16 << 20;
        m_types.emplace();
        std::string folders = EnvironmentText("XDG_DATA_HOME", "");
        if (folders.empty()) folders = EnvironmentText("HOME", "/") + "/.local/share";
        folders += ':' + EnvironmentText("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
        for (const std::string_view folder : SplitAt(folders, ':')) {
            std::string globs;
            FileResult result = FileResult::kDone;
            if (ReadWholeFile(m_files, JoinPath(folder, "mime/globs2"), kLargestDatabase, globs, result))
                AddMimeGlobs(globs, *m_types);
        }
    }

    Files& m_files;
    std::optional<TypesByEnding> m_types;
};

}  // namespace

std::unique_ptr<Shell> MakeShell(Files& files) {
    return std::make_unique<LinuxShell>(files);
}

}  // namespace quirepress
