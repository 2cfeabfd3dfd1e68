#include "core/run_downloads.h"

#include <functional>
#include <set>

#include "backends/script_run.h"
#include "base/credentials.h"
#include "base/path.h"
#include "base/text.h"
#include "core/leftovers.h"
#include "core/print_list.h"
#include "core/scratch_folder.h"
#include "platform/files.h"
#include "platform/prompts.h"
#include "transport/download.h"
#include "transport/download_log.h"

namespace quirepress {

namespace {

constexpr std::string_view kEntryStart = "DL;";

// Not one that would be run, or change how the rows below are printed: a server chooses it.
bool IsDocumentName(std::string_view title) {
    return KindOfItem(title) == ItemKind::kDocument && !IsScript(title);
}

}  // namespace

RunDownloads::RunDownloads(RunDownloadServices services) : m_services(std::move(services)) {}

RunDownloads::~RunDownloads() = default;

std::string DownloadFolderOf(const GeneralOptions& options, std::string_view workingFolder) {
    return JoinPath(TemporaryFolderOf(options, workingFolder), "Downloads");
}

std::string RunDownloads::Folder() const {
    return DownloadFolderOf(m_services.options, m_services.workingFolder);
}

void RunDownloads::BeginRun(const PrintList& list) {
    std::set<std::string, std::less<>> used;
    for (int row = 0; row < list.RowCount(); ++row) used.emplace(list.Text(row, kColumnFilename));
    EraseLeftovers(m_services.files, m_services.clock, Folder(),
                   [&used](const std::string& path) { return used.count(path) == 0; });
}

void RunDownloads::EndRun() {
    for (auto& [path, lock] : m_locks) {
        lock.reset();
        m_services.files.Erase(LockOf(path));
    }
    m_locks.clear();
}

DownloadRequest RunDownloads::RequestFor(const std::string& entry, WayFeedback& feedback) const {
    DownloadRequest request;
    request.address = StartsWith(entry, kEntryStart) ? entry.substr(kEntryStart.size()) : entry;
    request.folder = Folder();
    request.showBytes = [&feedback](std::int64_t done, std::int64_t total) {
        feedback.ShowBytes(done, total);
    };
    request.keepGoing = [&feedback] { return !feedback.IsStopped(); };
    return request;
}

WayResult RunDownloads::Fetch(const std::string& entry, WayFeedback& feedback, std::string& path) {
    const DownloadRequest request = RequestFor(entry, feedback);
    feedback.ShowRowStatus("Downloading file");
    m_services.prompts.ShowStatus("Downloading file:" + HideCredentials(request.address));
    bool canRetry = true;
    m_services.files.MakePrivateFolders(Folder());
    DownloadResult fetched = FetchDownload(m_services.files, m_services.place, request);
    if (fetched.end == TransferEnd::kDone && !IsDocumentName(FileTitle(fetched.path))) {
        m_services.files.Erase(fetched.path);
        fetched.end = TransferEnd::kFailed;
        fetched.failure = "the server named the file \"" + ToPrintableLine(FileTitle(fetched.path)) +
                          "\", which is no document's name";
        canRetry = false;
    }
    LogFtpDownload(m_services.logs, request, fetched);
    FileResult locked = FileResult::kDone;
    WayResult result;
    switch (fetched.end) {
        case TransferEnd::kDone:
            path = fetched.path;
            m_locks[path] = m_services.files.TryLock(LockOf(path), locked);
            result.end = WayResult::End::kPrinted;
            break;
        case TransferEnd::kStopped:
            result.end = WayResult::End::kStopped;
            result.isUntouched = true;
            result.status = "Error - Stopped, nothing was printed";
            break;
        case TransferEnd::kFailed:
            result.status = StartsWith(ToLowerAscii(request.address), "ftp:") ? "Unable to download ftp file"
                                                                              : "Unable to download web file";
            result.remark = "Can't Print - " + fetched.failure;
            result.canRetry = canRetry;
            break;
    }
    return result;
}

}  // namespace quirepress
