#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "transport/transfer.h"

namespace quirepress {

class Files;

struct DownloadRequest {
    std::string address;                               // http://, https:// or ftp://
    std::string folder;                                // where the file goes; made when missing
    std::int64_t largestFile = std::int64_t{8} << 30;  // bytes; more is refused
    TransferLimits limits = {30'000, 60, 4 * 3'600'000};
    std::function<void(std::int64_t done, std::int64_t total)> showBytes;  // total 0: not known; may be none
    std::function<bool()> keepGoing;  // false ends the download; may be none
};

struct DownloadResult {
    TransferEnd end = TransferEnd::kFailed;
    std::string path;     // of the file, once it is done
    std::string failure;  // for the user
};

// Fetches one file. It comes to be under its name when all of it is there, and for good; else nothing does.
// A file of that name stays: the new one gets a number. May pump.
DownloadResult FetchDownload(Files& files, const TransferPlace& place, const DownloadRequest& request);

}  // namespace quirepress
