#pragma once

namespace quirepress {

class TransferLogs;
struct DownloadRequest;
struct DownloadResult;

// Writes what became of a download by FTP to "ftp.log" or "ftp-error.log". One that was stopped, or went by
// another way, is in neither.
void LogFtpDownload(TransferLogs& logs, const DownloadRequest& request, const DownloadResult& result);

}  // namespace quirepress
