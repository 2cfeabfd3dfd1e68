#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/files.h"

namespace quirepress {

// The numbers of one printer's jobs, given to every program on the folder, each once.
class JobIds {
public:
    static constexpr std::int64_t kHighest = 99'999'999;

    // The numbers given are noted in the file `path`, one a line; only the last line counts.
    JobIds(Files& files, std::string_view path) : m_files(files), m_path(path) {}

    // The next number of which `take` says that it could be taken; nobody else is given one meanwhile. The
    // search begins anew above `highestSeen()` when the file is missing, damaged or behind.
    // kBusy when another program keeps the numbers for seconds.
    FileResult Give(const std::function<bool(std::int64_t)>& take,
                    const std::function<std::int64_t()>& highestSeen, std::int64_t& id) const;

private:
    std::int64_t ReadLast(bool& isLong) const;
    FileResult NoteLast(std::int64_t id, bool anew) const;

    Files& m_files;
    std::string m_path;
};

}  // namespace quirepress
