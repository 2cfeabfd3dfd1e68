#pragma once

#include <string>
#include <string_view>

#include "base/date_time.h"

namespace quirepress {

// What is kept beside a job's data; it never changes once written (the priority is part of the file's name).
struct JobRecord {
    std::string document;
    std::string user;
    std::string machine;
    std::string dataType;
    std::string options;  // how it is to be printed (OptionsText); not written when empty
    LocalTime submitted;
};

// Lines of "KEY;value", control characters and "%" in a value as "%0A"; the last line is "END".
std::string WriteJobRecord(const JobRecord& record);

// False, and `record` untouched, when `text` is no whole record.
bool ReadJobRecord(std::string_view text, JobRecord& record);

// The name under which a job comes to lie in its output folder: "JOBID-TITLE", at most 255 bytes. A `copy`
// above 1 is told in the name, for where a file of the plain name exists already.
std::string OutputName(std::int64_t id, std::string_view document, int copy = 1);

}  // namespace quirepress
