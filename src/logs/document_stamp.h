#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quirepress {

class Clock;
struct FileFacts;

// What the logs keep of a document besides its name; all but the path is blank when it could not be opened.
struct DocumentStamp {
    std::string path;
    std::int64_t size = 0;  // bytes
    std::string created;    // date-time texts; empty when unknown
    std::string written;
};

DocumentStamp StampDocument(std::string_view path, const FileFacts& facts, Clock& clock);

}  // namespace quirepress
