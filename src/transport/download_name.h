#pragma once

#include <string>
#include <string_view>

namespace quirepress {

// What is known of a file that a server sends.
struct DownloadFacts {
    std::string_view address;      // where it came from in the end
    std::string_view disposition;  // the value of its Content-Disposition field; may be empty
    std::string_view mediaType;    // of its Content-Type field; may be empty
};

// A file name for it, never empty: what the server calls it, else the end of its address, reduced to a name
// without folders that every system takes. One that tells nothing of what is in the file gets the extension
// of its media type.
std::string NameDownload(const DownloadFacts& facts);

}  // namespace quirepress
