#include "transport/download_log.h"

#include <curl/curl.h>

#include <memory>

#include "base/path.h"
#include "base/text.h"
#include "logs/transfer_logs.h"
#include "transport/download.h"
#include "transport/download_name.h"

namespace quirepress {

namespace {

// A part of the address, empty where it has none.
std::string PartOf(CURLU* address, CURLUPart which, unsigned flags = 0) {
    char* part = nullptr;
    const bool isThere = curl_url_get(address, which, &part, flags) == CURLUE_OK;
    const std::unique_ptr<char, void (*)(void*)> holder(part, curl_free);
    return isThere ? std::string(part) : std::string();
}

// Of an address that is not well-formed only the name of its file is known.
FtpRecord RecordOf(const std::string& address) {
    FtpRecord record;
    record.file = NameDownload({address, {}, {}});
    const std::unique_ptr<CURLU, void (*)(CURLU*)> parts(curl_url(), curl_url_cleanup);
    if (curl_url_set(parts.get(), CURLUPART_URL, address.c_str(), CURLU_URLENCODE | CURLU_ALLOW_SPACE) !=
        CURLUE_OK)
        return record;
    const std::string port = PartOf(parts.get(), CURLUPART_PORT);
    record.server = PartOf(parts.get(), CURLUPART_HOST) + (port.empty() ? "" : ":" + port);
    const std::string path = PartOf(parts.get(), CURLUPART_PATH, CURLU_URLDECODE);
    record.folder = path.substr(0, path.rfind('/') == 0 ? 1 : path.rfind('/'));
    return record;
}

}  // namespace

void LogFtpDownload(TransferLogs& logs, const DownloadRequest& request, const DownloadResult& result) {
    const bool isFtp = StartsWith(ToLowerAscii(request.address), "ftp:");
    if (!isFtp || result.end == TransferEnd::kStopped) return;
    FtpRecord record = RecordOf(request.address);
    if (result.end != TransferEnd::kDone) {
        logs.WriteFtpErrorRecord(record, result.failure);
        return;
    }
    record.file = result.path;
    logs.WriteFtpRecord(record);
}

}  // namespace quirepress
