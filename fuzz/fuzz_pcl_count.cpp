#include <cstdlib>
#include <string>

#include "documents/page_counts.h"
#include "fakes/memory_file.h"

// A page needs a byte at least, and the last one may lack its end.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    quirepress::MemoryFile file(std::string(reinterpret_cast<const char*>(data), size));
    const int pages = quirepress::CountPclPages(file);
    if (pages < 0 || pages > file.Size()) std::abort();
    return 0;
}
