#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>

namespace quirepress {

// While it lives, temporary folders lie in memory where it has room for so many bytes, unless $TMPDIR says
// where. As long as nothing ends but programs, that keeps what they have written as well as a disk does; and
// no other work on the disk is in the way.
class MemoryDisk {
public:
    explicit MemoryDisk(std::uintmax_t bytes) {
        constexpr const char* kFolder = "/dev/shm";
        std::error_code error;
        const bool isThere = access(kFolder, W_OK) == 0;
        if (!m_isChosen && isThere && std::filesystem::space(kFolder, error).available >= bytes && !error)
            setenv("TMPDIR", kFolder, 1);
    }
    ~MemoryDisk() {
        if (!m_isChosen) unsetenv("TMPDIR");
    }
    MemoryDisk(const MemoryDisk&) = delete;
    MemoryDisk& operator=(const MemoryDisk&) = delete;

private:
    const bool m_isChosen = std::getenv("TMPDIR") != nullptr;
};

}  // namespace quirepress
