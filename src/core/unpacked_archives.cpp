#include "core/unpacked_archives.h"

#include <string>

#include "base/format.h"
#include "core/print_list.h"
#include "platform/files.h"
#include "platform/prompts.h"

namespace quirepress {

namespace {

// Why it is still there; empty: it is gone.
std::string Delete(Files& files, const std::string& path, const SourceVersion& version) {
    const FileFacts facts = files.Inspect(path);
    if (facts.kind == FileKind::kMissing) return {};
    if (facts.size != version.size || facts.written != version.written)
        return "it has changed since it was unpacked";
    const FileResult erased = files.Erase(path);
    return erased == FileResult::kDone ? "" : DescribeFileResult(erased);
}

}  // namespace

void DeleteUnpackedArchives(PrintList& list, Files& files, Prompts& prompts) {
    for (const auto& [path, version] : list.TakeUnpackedArchives()) {
        const std::string obstacle = Delete(files, path, version);
        if (!obstacle.empty()) prompts.ShowBox("Delete Error", Format("Can't delete %s: %s", path, obstacle));
    }
}

}  // namespace quirepress
