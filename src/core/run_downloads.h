#pragma once

#include <string>

#include "core/run_way.h"
#include "transport/transfer.h"

namespace quirepress {

class Files;
class Prompts;
struct GeneralOptions;

struct RunDownloadServices {
    Files& files;
    Prompts& prompts;
    TransferPlace place;
    const GeneralOptions& options;
    std::string workingFolder;
};

// Fetches the files that download entries name, into "Downloads" in the temporary folder.
class RunDownloads {
public:
    explicit RunDownloads(RunDownloadServices services) : m_services(std::move(services)) {}

    // `entry` is an address, "DL;" before it or not. The end is kPrinted when the file is at `path`. May
    // pump.
    WayResult Fetch(const std::string& entry, WayFeedback& feedback, std::string& path);

private:
    RunDownloadServices m_services;
};

}  // namespace quirepress
