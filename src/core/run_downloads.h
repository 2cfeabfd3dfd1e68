#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "core/run_way.h"
#include "transport/transfer.h"

namespace quirepress {

class Clock;
class FileLock;
class Files;
class PrintList;
class Prompts;
class TransferLogs;
struct DownloadRequest;
struct GeneralOptions;

struct RunDownloadServices {
    Files& files;
    Clock& clock;
    Prompts& prompts;
    TransferLogs& logs;
    TransferPlace place;
    const GeneralOptions& options;
    std::string workingFolder;
};

// "Downloads" in the temporary folder: there the files of download entries come to lie.
std::string DownloadFolderOf(const GeneralOptions& options, std::string_view workingFolder);

// Fetches the files that download entries name, into their folder.
class RunDownloads {
public:
    explicit RunDownloads(RunDownloadServices services);
    ~RunDownloads();

    // What ended programs have left there for a day goes, unless the list or another program uses it.
    void BeginRun(const PrintList& list);
    // What the run has fetched stays, for rows name it, but other programs may erase it a day later.
    void EndRun();
    // `entry` is an address, "DL;" before it or not. The end is kPrinted when the file is at `path`. May
    // pump.
    WayResult Fetch(const std::string& entry, WayFeedback& feedback, std::string& path);

private:
    DownloadRequest RequestFor(const std::string& entry, WayFeedback& feedback) const;
    std::string Folder() const;

    RunDownloadServices m_services;
    std::map<std::string, std::unique_ptr<FileLock>> m_locks;  // of this run, by the paths of their files
};

}  // namespace quirepress
