#include "backends/unseen_jobs.h"

#include <algorithm>
#include <unordered_set>

#include "platform/spooler.h"

namespace quirepress {

namespace {

constexpr std::size_t kMostJobs = 4096;

}  // namespace

void UnseenJobs::Add(std::string_view printer, std::int64_t id, long long now) {
    if (m_jobs.size() == kMostJobs) m_jobs.pop_front();
    m_jobs.push_back({std::string(printer), id, now});
}

void UnseenJobs::Remove(std::string_view printer, std::int64_t id) {
    std::erase_if(m_jobs, [&](const Job& job) { return job.id == id && job.printer == printer; });
}

int UnseenJobs::Settle(std::string_view printer, const std::vector<JobInfo>& listed, long long now) {
    std::erase_if(m_jobs, [&](const Job& job) { return now - job.since >= kLongestMilliseconds; });
    if (m_jobs.empty()) return 0;
    std::unordered_set<std::int64_t> ids;
    for (const JobInfo& job : listed) ids.insert(job.id);
    // From the newest on: what was handed over before a listed one would be listed too, were it still there.
    bool isListed = false;
    const auto isSettled = [&](const Job& job) {
        if (job.printer != printer) return false;
        isListed = isListed || ids.contains(job.id);
        return isListed;
    };
    const auto kept = std::remove_if(m_jobs.rbegin(), m_jobs.rend(), isSettled);
    m_jobs.erase(m_jobs.begin(), kept.base());
    return static_cast<int>(
        std::count_if(m_jobs.begin(), m_jobs.end(), [&](const Job& job) { return job.printer == printer; }));
}

}  // namespace quirepress
