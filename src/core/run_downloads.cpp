#include "core/run_downloads.h"

#include "backends/script_run.h"
#include "base/path.h"
#include "base/text.h"
#include "core/scratch_folder.h"
#include "platform/files.h"
#include "platform/prompts.h"
#include "transport/download.h"

namespace quirepress {

namespace {

constexpr std::string_view kEntryStart = "DL;";

// Not one that would be run, or change how the rows below are printed: a server chooses it.
bool IsDocumentName(std::string_view title) {
    return KindOfItem(title) == ItemKind::kDocument && !IsScript(title);
}

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
    const bool isFtp = StartsWith(ToLowerAscii(request.address), "ftp:");
    const std::string failure = isFtp ? "Unable to download ftp file" : "Unable to download web file";
    WayResult result;
    switch (fetched.end) {
        case TransferEnd::kDone:
            if (IsDocumentName(FileTitle(fetched.path))) {
                path = fetched.path;
                result.end = WayResult::End::kPrinted;
                break;
            }
            m_services.files.Erase(fetched.path);
            result.status = failure;
            result.remark = "Can't Print - the server named the file \"" +
                            ToPrintableLine(FileTitle(fetched.path)) + "\", which is no document's name";
            break;
        case TransferEnd::kStopped:
            result.end = WayResult::End::kStopped;
            result.status = "Error - Stopped, nothing was printed";
            break;
        case TransferEnd::kFailed:
            result.status = failure;
            result.remark = "Can't Print - " + fetched.failure;
            result.canRetry = true;
            break;
    }
    return result;
}

}  // namespace quirepress
