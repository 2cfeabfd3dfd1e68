#include "platform/spooler.h"

#include <algorithm>
#include <array>

#include "base/path.h"
#include "base/text.h"

namespace quirepress {

bool Spooler::TakesDocument(std::string_view, std::string_view path) {
    constexpr std::array<std::string_view, 11> kExtensions = {
        ".pdf", ".txt", ".jpg", ".jpeg", ".jpe", ".png", ".gif", ".tiff", ".tif", ".bmp", ".text"};
    const std::string extension = ToLowerAscii(FileExtension(path));
    return std::find(kExtensions.begin(), kExtensions.end(), extension) != kExtensions.end();
}

std::int64_t Spooler::LastJob(std::string_view printer) {
    std::vector<JobInfo> jobs;
    if (ListJobs(printer, jobs) != 0) return -1;
    std::int64_t last = 0;
    for (const JobInfo& job : jobs) last = std::max(last, job.id);
    return last;
}

int Spooler::ListOverJobs(std::string_view, std::int64_t, std::vector<JobInfo>&) {
    return 0;
}

std::string Spooler::ErrorText(int systemError) {
    return "error " + std::to_string(systemError);
}

}  // namespace quirepress
