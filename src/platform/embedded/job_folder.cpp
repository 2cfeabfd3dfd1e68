#include "platform/embedded/job_folder.h"

#include <algorithm>
#include <iterator>

#include "base/format.h"
#include "base/numbers.h"
#include "base/path.h"
#include "base/text.h"

namespace quirepress {

namespace {

constexpr std::size_t kIdDigits = 8;
constexpr std::string_view kRecordEnding = ".job";

// Notes what a file named `rest` behind its id says; false for a file that is none of ours.
bool NoteFile(std::string_view rest, JobFiles& job) {
    if (rest == ".data") return job.hasData = true;
    if (rest == ".open") return job.hasDraft = true;
    if (rest == ".lock") return job.hasLock = true;
    if (rest == ".begun") return job.isBegun = true;
    if (rest.size() != 7 || rest[0] != '-' || !EndsWith(rest, kRecordEnding)) return false;
    const auto priority = ParseWholeNumber(rest.substr(1, 2), kLowestPriority, kHighestPriority);
    if (priority) job.priority = static_cast<int>(*priority);
    return priority.has_value();
}

void Join(JobFiles& job, const JobFiles& other) {
    job.priority = std::max(job.priority, other.priority);
    job.hasData = job.hasData || other.hasData;
    job.hasDraft = job.hasDraft || other.hasDraft;
    job.hasLock = job.hasLock || other.hasLock;
    job.isBegun = job.isBegun || other.isBegun;
}

const JobFiles* FindJob(const std::vector<JobFiles>& all, std::int64_t id) {
    const auto found =
        std::find_if(all.begin(), all.end(), [id](const JobFiles& job) { return job.id == id; });
    return found == all.end() ? nullptr : &*found;
}

}  // namespace

std::string JobFolder::PathOf(std::int64_t id, std::string_view ending) const {
    return JoinPath(m_folder, Format("%08d", id) + std::string(ending));
}

std::string JobFolder::RecordPath(std::int64_t id, int priority) const {
    return PathOf(id, Format("-%02d", priority) + std::string(kRecordEnding));
}

std::vector<JobFiles> JobFolder::List() const {
    std::vector<FolderEntry> entries;
    if (m_files.ListFolder(m_folder, entries) != FileResult::kDone) return {};
    std::vector<JobFiles> all;
    all.reserve(entries.size());
    for (const FolderEntry& entry : entries) {
        const std::string_view name = entry.name;
        const auto id = ParseWholeNumber(name.substr(0, kIdDigits), 1, JobIds::kHighest);
        if (!id || name.size() <= kIdDigits || entry.kind != FileKind::kRegular) continue;
        JobFiles noted = {*id};
        if (NoteFile(name.substr(kIdDigits), noted)) all.push_back(noted);
    }
    std::sort(all.begin(), all.end(),
              [](const JobFiles& left, const JobFiles& right) { return left.id < right.id; });
    std::size_t count = 0;
    for (const JobFiles& noted : all) {
        if (count == 0 || all[count - 1].id != noted.id)
            all[count++] = noted;
        else
            Join(all[count - 1], noted);
    }
    all.resize(count);
    return all;
}

std::vector<JobFiles> JobFolder::WaitingInOrder(const std::vector<JobFiles>& all) {
    std::vector<JobFiles> waiting;
    std::copy_if(all.begin(), all.end(), std::back_inserter(waiting),
                 [](const JobFiles& job) { return job.IsWaiting(); });
    std::stable_sort(waiting.begin(), waiting.end(), [](const JobFiles& left, const JobFiles& right) {
        return left.priority > right.priority;
    });
    return waiting;
}

std::unique_ptr<FileLock> JobFolder::Claim(std::int64_t& id, FileResult& result) const {
    std::unique_ptr<FileLock> lock;
    FileResult taken = FileResult::kDone;
    const auto take = [&](std::int64_t next) {
        const bool isFree = m_files.Inspect(DataPath(next)).kind == FileKind::kMissing &&
                            m_files.Inspect(DraftPath(next)).kind == FileKind::kMissing;
        lock = isFree ? m_files.TryLock(LockPath(next), taken) : nullptr;
        return lock != nullptr;
    };
    const auto highestSeen = [this] {
        const std::vector<JobFiles> all = List();
        return all.empty() ? 0 : all.back().id;
    };
    result = m_ids.Give(take, highestSeen, id);
    if (result == FileResult::kDone) return lock;
    if (lock) {
        lock.reset();
        m_files.Erase(LockPath(id));
    } else if (taken != FileResult::kDone) {
        result = taken;
    }
    return nullptr;
}

FileResult JobFolder::Retire(const JobFiles& job) const {
    const FileResult result = job.hasData ? m_files.Erase(DataPath(job.id)) : FileResult::kDone;
    if (result != FileResult::kDone && result != FileResult::kMissing) return result;
    if (job.isBegun) m_files.Erase(BegunPath(job.id));
    if (job.hasDraft) m_files.Erase(DraftPath(job.id));
    if (job.priority != 0) m_files.Erase(RecordPath(job.id, job.priority));
    if (job.hasLock) m_files.Erase(LockPath(job.id));
    return result;
}

void JobFolder::Sweep(const std::vector<JobFiles>& all) const {
    for (const JobFiles& job : all) {
        if (job.hasLock)
            SweepUnclosed(job.id);
        else if (job.IsDelivered() || (job.isBegun && !job.hasData))
            SweepDelivered(job);
    }
}

void JobFolder::SweepDelivered(const JobFiles& job) const {
    // A job that was spooled and closed while the folder was listed may have been seen without its data.
    if (m_files.Inspect(DataPath(job.id)).kind == FileKind::kMissing) Retire(job);
}

void JobFolder::SweepUnclosed(std::int64_t id) const {
    FileResult result = FileResult::kDone;
    const std::unique_ptr<FileLock> lock = m_files.TryLock(LockPath(id), result);
    if (!lock) return;
    // Its program is gone, or has just closed the job: only what the files say now counts.
    const std::vector<JobFiles> now = List();
    const JobFiles* job = FindJob(now, id);
    if (job == nullptr) return;
    // The draft is there before the data and leaves after them. Data alone are a closed job whose record is
    // just being renamed.
    if (job->IsUnclosed() && (job->hasDraft || !job->hasData))
        Retire(*job);
    else
        m_files.Erase(LockPath(id));
}

}  // namespace quirepress
