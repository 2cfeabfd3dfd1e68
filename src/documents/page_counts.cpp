#include "documents/page_counts.h"

#include <memory>

#include "platform/files.h"

namespace quirepress {
namespace {

int CountPages(Files& files, std::string_view path, std::string& status, int (*count)(InputFile&)) {
    FileResult result = FileResult::kDone;
    const std::unique_ptr<InputFile> file = path.empty() ? nullptr : files.OpenForReading(path, result);
    const int pages = file ? count(*file) : -1;
    if (pages < 0 && !path.empty()) status = "No";
    return pages;
}

}  // namespace

int CountPostScriptPages(Files& files, std::string_view path, std::string& status) {
    return CountPages(files, path, status, CountPostScriptPages);
}

int CountPclPages(Files& files, std::string_view path, std::string& status) {
    return CountPages(files, path, status, CountPclPages);
}

}  // namespace quirepress
