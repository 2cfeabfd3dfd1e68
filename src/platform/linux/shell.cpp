#include "platform/shell.h"

#include <memory>

#include "base/path.h"
#include "base/text.h"
#include "platform/file_tools.h"
#include "platform/linux/desktop_entry.h"
#include "platform/linux/make_services.h"

namespace quirepress {

namespace {

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

private:
    Files& m_files;
};

}  // namespace

std::unique_ptr<Shell> MakeShell(Files& files) {
    return std::make_unique<LinuxShell>(files);
}

}  // namespace quirepress
