#include "core/run_downloads.h"

#include "base/path.h"
#include "base/text.h"
#include "core/scratch_folder.h"
#include "platform/prompts.h"
#include "transport/download.h"

namespace quirepress {

namespace {

constexpr std::string_view kEntryStart = "DL;";

}  // namespace

WayResult RunDownloads::Fetch(const std::string& entry, WayFeedback& feedback, std::string& path) {
    DownloadRequest request;
    request.address = StartsWith(entry, kEntryStart) ? entry.substr(kEntryStart.size()) : entry;
    request.folder = JoinPath(TemporaryFolderOf(m_services.options, m_services.workingFolder), "Downloads");
    request.showBytes = [&feedback](std::int64_t done, std::int64_t total) {
        feedback.ShowBytes(done, total);
    };
    request.keepGoing = [&feedback] { return !feedback.IsStopped(); };
    feedback.ShowRowStatus("Downloading file");
    m_services.prompts.ShowStatus("Downloading file:" + request.address);
    const DownloadResult fetched = FetchDownload(m_services.files, m_services.place, request);
    WayResult result;
    switch (fetched.end) {
        case TransferEnd::kDone:
            path = fetched.path;
            result.end = WayResult::End::kPrinted;
            break;
        case TransferEnd::kStopped:
            result.end = WayResult::End::kStopped;
            result.status = "Error - Stopped, nothing was printed";
            break;
        case TransferEnd::kFailed: {
            const bool isFtp = StartsWith(ToLowerAscii(request.address), "ftp:");
            result.status = isFtp ? "Unable to download ftp file" : "Unable to download web file";
            result.remark = "Can't Print - " + fetched.failure;
            result.canRetry = true;
            break;
        }
    }
    return result;
}

}  // namespace quirepress
