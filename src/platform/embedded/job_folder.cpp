#include "platform/embedded/job_folder.h"

#include <algorithm>
#include <map>

#include "base/format.h"
#include "base/numbers.h"
#include "base/path.h"
#include "base/text.h"

namespace quirepress {

namespace {

constexpr std::int64_t kHighestId = 99'999'999;
constexpr std::size_t kIdDigits = 8;
constexpr std::string_view kMarkEnding = ".last";
constexpr std::string_view kRecordEnding = ".job";

// Notes what a file named `rest` behind its id says; false for a file that is none of ours.
bool NoteFile(std::string_view rest, JobFiles& job) {
    if (rest == ".data") return job.hasData = true;
    if (rest == ".open") return job.hasDraft = true;
    if (rest == ".lock") return job.hasLock = true;
    if (rest == ".begun") return job.isBegun = true;
    if (rest == kMarkEnding) return job.isMark = true;
    if (rest.size() != 7 || rest[0] != '-' || !EndsWith(rest, kRecordEnding)) return false;
    const auto priority = ParseWholeNumber(rest.substr(1, 2), kLowestPriority, kHighestPriority);
    if (priority) job.priority = static_cast<int>(*priority);
    return priority.has_value();
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
    std::map<std::int64_t, JobFiles> jobs;
    for (const FolderEntry& entry : entries) {
        const std::string_view name = entry.name;
        const auto id = ParseWholeNumber(name.substr(0, kIdDigits), 1, kHighestId);
        if (!id || name.size() <= kIdDigits || entry.kind != FileKind::kRegular) continue;
        const auto found = jobs.find(*id);
        JobFiles noted = found == jobs.end() ? JobFiles{*id} : found->second;
        if (NoteFile(name.substr(kIdDigits), noted)) jobs[*id] = noted;
    }
    std::vector<JobFiles> all;
    all.reserve(jobs.size());
    for (const auto& [id, job] : jobs) all.push_back(job);
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
    constexpr int kMostTries = 1000;
    std::vector<JobFiles> all = List();
    for (int i = 0; i < kMostTries; ++i) {
        id = all.empty() ? 1 : all.back().id + 1;
        result = FileResult::kFailed;
        if (id > kHighestId) return nullptr;
        std::unique_ptr<FileLock> lock = m_files.TryLock(LockPath(id), result);
        if (!lock && result != FileResult::kBusy) return nullptr;
        // Others may have taken this id, and ended its job, since the folder was listed. The highest id ever
        // given always leaves a file, so an id is new when it is the highest now and has no other file.
        all = List();
        const JobFiles* mine = FindJob(all, id);
        const bool isNew = lock && mine != nullptr && mine->id == all.back().id && mine->hasLock &&
                           !mine->hasData && !mine->hasDraft && mine->priority == 0 && !mine->isMark;
        if (isNew) return lock;
    }
    result = FileResult::kBusy;
    return nullptr;
}

FileResult JobFolder::Retire(const JobFiles& job, std::int64_t highest) const {
    FileResult result = job.hasData ? m_files.Erase(DataPath(job.id)) : FileResult::kDone;
    if (result != FileResult::kDone && result != FileResult::kMissing) return result;
    FileResult marked = FileResult::kDone;
    if (highest <= job.id)
        m_files.OpenForWriting(PathOf(job.id, kMarkEnding), OpenMode::kReplace, FileAccess::kShared, marked);
    if (marked != FileResult::kDone) return result;  // a full disk; the rest keeps the id until it is swept
    if (job.isBegun) m_files.Erase(BegunPath(job.id));
    if (job.hasDraft) m_files.Erase(DraftPath(job.id));
    if (job.priority != 0) m_files.Erase(RecordPath(job.id, job.priority));
    if (job.hasLock) m_files.Erase(LockPath(job.id));
    return result;
}

void JobFolder::Sweep(const std::vector<JobFiles>& all) const {
    for (const JobFiles& job : all) {
        const std::int64_t highest = all.back().id;
        if (job.hasLock)
            SweepUnclosed(job.id, highest);
        else if (job.IsDelivered() || (job.isBegun && !job.hasData))
            SweepDelivered(job, highest);
        else if (job.isMark && !job.hasData && job.priority == 0 && job.id < highest)
            m_files.Erase(PathOf(job.id, kMarkEnding));
    }
}

void JobFolder::SweepDelivered(const JobFiles& job, std::int64_t highest) const {
    // A job that was spooled and closed while the folder was listed may have been seen without its data.
    if (m_files.Inspect(DataPath(job.id)).kind == FileKind::kMissing) Retire(job, highest);
}

void JobFolder::SweepUnclosed(std::int64_t id, std::int64_t highest) const {
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
        Retire(*job, highest);
    else
        m_files.Erase(LockPath(id));
}

}  // namespace quirepress
