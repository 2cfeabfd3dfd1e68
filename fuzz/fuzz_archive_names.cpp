#include <cstdlib>

#include "base/entry_names.h"
#include "base/text.h"
#include "documents/archive.h"
#include "memory_files.h"

namespace quirepress {
namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

void CheckNames(std::string_view name) {
    for (const std::string& part : CleanEntryName(name)) {
        Require(!part.empty() && part.size() <= kLongestEntryName && part != "." && part != "..");
        Require(part.find_first_of(std::string_view("/\\:\0", 4)) == std::string::npos);
        Require(CleanEntryName(part).size() == 1);
        Require(NumberedName(part, 100'000).size() <= kLongestEntryName);
    }
}

// Whatever the bytes are, files come only below the folder, and those that are named are there.
void CheckUnpacking(std::string_view bytes) {
    MemoryFiles files;
    files.Put("/in", std::string(bytes));
    const ArchiveOutcome outcome = UnpackArchive(files, "/in", "/out", ArchiveLimits(), [] { return true; });
    Require(outcome.message.empty() == (outcome.result == 0));
    Require(files.All().size() == outcome.files.size() + 1);
    for (const std::string& file : outcome.files) {
        Require(StartsWith(file, "/out/") && !Contains(file, "/../"));
        Require(files.All().count(file) == 1);
    }
}

}  // namespace
}  // namespace quirepress

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    quirepress::CheckNames(text);
    quirepress::CheckUnpacking(text);
    return 0;
}
