#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/embedded/job_ids.h"
#include "platform/files.h"

namespace quirepress {

// What the files of one job say; docs/formats-spooler.md tells what each may be found as.
struct JobFiles {
    std::int64_t id = 0;
    int priority = 0;  // 0: not closed
    bool hasData = false;
    bool hasDraft = false;
    bool hasLock = false;
    bool isBegun = false;

    bool IsWaiting() const { return priority != 0 && hasData; }
    bool IsDelivered() const { return priority != 0 && !hasData; }
    bool IsUnclosed() const { return priority == 0 && hasLock; }
};

// The jobs of one printer: files in one folder, shared by every program on it. Nothing is kept in memory.
class JobFolder {
public:
    // `idsPath` is the file in which the numbers are kept.
    JobFolder(Files& files, std::string_view folder, std::string_view idsPath)
        : m_files(files), m_folder(folder), m_ids(files, idsPath) {}

    FileResult Prepare() const { return m_files.MakeFolders(m_folder); }
    // In the order of their ids; none when the folder cannot be read.
    std::vector<JobFiles> List() const;
    // The jobs that are waiting, in the order in which they are delivered.
    static std::vector<JobFiles> WaitingInOrder(const std::vector<JobFiles>& all);

    // A new id. The lock tells others that the job's program lives.
    std::unique_ptr<FileLock> Claim(std::int64_t& id, FileResult& result) const;
    // Ends a job: its data first (the job is gone with them), then the rest. kMissing when the data had gone
    // before.
    FileResult Retire(const JobFiles& job) const;
    // Clears away what programs that died have left: jobs not closed, delivered ones. The jobs of programs
    // that live are passed over.
    void Sweep(const std::vector<JobFiles>& all) const;

    std::string DataPath(std::int64_t id) const { return PathOf(id, ".data"); }
    std::string DraftPath(std::int64_t id) const { return PathOf(id, ".open"); }
    std::string LockPath(std::int64_t id) const { return PathOf(id, ".lock"); }
    std::string BegunPath(std::int64_t id) const { return PathOf(id, ".begun"); }
    std::string RecordPath(std::int64_t id, int priority) const;
    const std::string& Path() const { return m_folder; }

private:
    std::string PathOf(std::int64_t id, std::string_view ending) const;
    void SweepDelivered(const JobFiles& job) const;
    void SweepUnclosed(std::int64_t id) const;

    Files& m_files;
    std::string m_folder;
    JobIds m_ids;
};

constexpr int kLowestPriority = 1;
constexpr int kHighestPriority = 99;

}  // namespace quirepress
