#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace quirepress {

struct JobInfo;

// Jobs that were handed over and that no listing of their queue has shown yet: some print systems list a job
// a little late.
class UnseenJobs {
public:
    // A job that stays unseen so long has left its queue between two listings.
    static constexpr long long kLongestMilliseconds = 1000;

    void Add(std::string_view printer, std::int64_t id, long long now);
    void Remove(std::string_view printer, std::int64_t id);
    // Settles what a listing of the printer's queue shows and what has had its time; answers how many jobs of
    // the printer remain.
    int Settle(std::string_view printer, const std::vector<JobInfo>& listed, long long now);

private:
    struct Job {
        std::string printer;
        std::int64_t id;
        long long since;
    };
    std::deque<Job> m_jobs;  // in the order in which they were handed over
};

}  // namespace quirepress
