#include "platform/embedded/job_ids.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <thread>

#include "base/format.h"
#include "base/numbers.h"
#include "platform/file_tools.h"

namespace quirepress {

namespace {

constexpr std::int64_t kLineSize = 9;
constexpr std::int64_t kLongestFile = 4096;

// It is held for a few system calls; pumping meanwhile would let the caller's world change.
std::unique_ptr<FileLock> LockNumbers(Files& files, const std::string& path, FileResult& result) {
    constexpr int kMostTries = 10'000;
    for (int i = 0; i < kMostTries; ++i) {
        auto lock = files.TryLock(path, result);
        if (lock || result != FileResult::kBusy) return lock;
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return nullptr;
}

}  // namespace

FileResult JobIds::Give(const std::function<bool(std::int64_t)>& take,
                        const std::function<std::int64_t()>& highestSeen, std::int64_t& id) const {
    FileResult result = FileResult::kDone;
    const auto lock = LockNumbers(m_files, m_path + ".lock", result);
    if (!lock) return result;
    bool anew = false;
    id = ReadLast(anew) + 1;
    if (id == 1 || id > kHighest || !take(id)) {
        anew = true;
        id = std::max(id, highestSeen() + 1);
        // A program that has just begun looks whether what it finds was left behind, and may hold a number
        // that is being taken: then the next one is as good.
        constexpr int kMostTries = 10;
        int tries = 1;
        while (id <= kHighest && tries < kMostTries && !take(id)) {
            ++id;
            ++tries;
        }
        if (id > kHighest || tries == kMostTries) return FileResult::kFailed;
    }
    return NoteLast(id, anew);
}

// 0 when there is none.
std::int64_t JobIds::ReadLast(bool& isLong) const {
    FileResult result = FileResult::kDone;
    const auto file = m_files.OpenForReading(m_path, result);
    const std::int64_t size = file ? file->Size() : 0;
    isLong = size > kLongestFile;
    std::array<char, kLineSize> line = {};
    if (size < kLineSize || file->ReadAt(size - kLineSize, line.data(), line.size()) != kLineSize) return 0;
    const std::string_view digits(line.data(), line.size() - 1);
    return line.back() == '\n' ? ParseWholeNumber(digits, 1, kHighest).value_or(0) : 0;
}

// Neither truncated nor flushed for each number: both would make the disk write at once. What a power failure
// takes is found again by the jobs that it left.
FileResult JobIds::NoteLast(std::int64_t id, bool anew) const {
    const std::string line = Format("%08d\n", id);
    if (anew) return ReplaceFileDurably(m_files, m_path, line);
    FileResult result = FileResult::kDone;
    const auto file = m_files.OpenForWriting(m_path, OpenMode::kAppend, FileAccess::kShared, result);
    return file ? file->Write(line.data(), line.size()) : result;
}

}  // namespace quirepress
