#include <cstdlib>
#include <string>

#include "base/numbers.h"
#include "documents/page_counts.h"
#include "fakes/memory_file.h"

namespace quirepress {
namespace {

// The rule offset by offset: a slice of 20 bytes at each.
int CountSlowly(const std::string& bytes) {
    if (bytes.compare(0, 4, "%!PS") != 0) return 0;
    int pages = 0;
    bool atEnd = false;
    const auto size = static_cast<long long>(bytes.size());
    for (long long p = 0; p < size;) {
        const std::string slice = bytes.substr(static_cast<std::size_t>(p), 20);
        long long next = p + 1;
        if (slice.compare(0, 16, "%%Pages: (atend)") == 0) {
            atEnd = true;
            if (size > 60 && p < size - 60) next = size - 60;
        } else if (slice.compare(0, 8, "%%Pages:") == 0) {
            pages = ParseLong(slice.substr(8));
        }
        if (!atEnd && p == 4097) break;
        p = next;
    }
    return pages;
}

}  // namespace
}  // namespace quirepress

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    quirepress::MemoryFile file(bytes);
    if (quirepress::CountPostScriptPages(file) != quirepress::CountSlowly(bytes)) std::abort();
    return 0;
}
