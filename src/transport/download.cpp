#include "transport/download.h"

#include <curl/curl.h>

#include <memory>

#include "base/entry_names.h"
#include "base/path.h"
#include "base/text.h"
#include "platform/file_tools.h"
#include "transport/download_name.h"

namespace quirepress {

namespace {

constexpr long kMostRedirects = 10;
constexpr long kBufferSize = 256L << 10;
constexpr int kMostNumbers = 9999;

// The address as the library takes it, with what may not stand in one encoded. False when it is none.
bool ParseAddress(const std::string& text, std::string& address, std::string& failure) {
    const std::string start = ToLowerAscii(text.substr(0, text.find("://")));
    if (text.find("://") == std::string::npos || (start != "http" && start != "https" && start != "ftp")) {
        failure = "an address begins with http://, https:// or ftp://";
        return false;
    }
    const std::unique_ptr<CURLU, void (*)(CURLU*)> parts(curl_url(), curl_url_cleanup);
    char* whole = nullptr;
    const bool isParsed = text.find('\0') == std::string::npos &&
                          curl_url_set(parts.get(), CURLUPART_URL, text.c_str(),
                                       CURLU_URLENCODE | CURLU_ALLOW_SPACE) == CURLUE_OK &&
                          curl_url_get(parts.get(), CURLUPART_URL, &whole, 0) == CURLUE_OK;
    const std::unique_ptr<char, void (*)(void*)> holder(whole, curl_free);
    failure = "the address is not well-formed";
    if (!isParsed) return false;
    address = whole;
    failure = "the address names a folder";
    return start != "ftp" || !EndsWith(address, "/");
}

class Download {
public:
    Download(Files& files, const TransferPlace& place, const DownloadRequest& request)
        : m_files(files), m_request(request), m_transfer(place) {}

    DownloadResult Run();

private:
    static std::size_t TakeBytes(char* bytes, std::size_t size, std::size_t count, void* download);
    bool SetUp(const std::string& address);
    bool Keep(const char* bytes, std::size_t size);
    void OpenFile();
    std::string NameOfFile();
    std::string FreePath(const std::string& name);
    bool KeepGoing();
    DownloadResult Finish();
    static DownloadResult Fail(std::string failure) { return {TransferEnd::kFailed, {}, std::move(failure)}; }

    Files& m_files;
    const DownloadRequest& m_request;
    Transfer m_transfer;
    void* m_exchange = nullptr;
    std::string m_path;
    std::unique_ptr<ReplacementFile> m_file;
    std::int64_t m_size = 0;
    std::string m_failure;  // of ours
};

DownloadResult Download::Run() {
    std::string address;
    std::string failure;
    if (!ParseAddress(m_request.address, address, failure)) return Fail(failure);
    const FileResult made = m_files.MakeFolders(m_request.folder);
    if (made != FileResult::kDone)
        return Fail("the folder " + m_request.folder + " can't be made: " + DescribeFileResult(made));
    if (!SetUp(address)) return Fail("there is not enough memory");
    const TransferEnd end = m_transfer.RunExchange([this] { return KeepGoing(); });
    if (end == TransferEnd::kStopped) return {end, {}, "it was stopped"};
    if (end == TransferEnd::kDone) return Finish();
    return Fail(m_failure.empty() ? m_transfer.FailureText() : m_failure);
}

bool Download::SetUp(const std::string& address) {
    m_exchange = m_transfer.BeginExchange(m_request.limits);
    if (m_exchange == nullptr) return false;
    curl_easy_setopt(m_exchange, CURLOPT_URL, address.c_str());
    curl_easy_setopt(m_exchange, CURLOPT_PROTOCOLS_STR, "http,https,ftp");
    curl_easy_setopt(m_exchange, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(m_exchange, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(m_exchange, CURLOPT_MAXREDIRS, kMostRedirects);
    curl_easy_setopt(m_exchange, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(m_exchange, CURLOPT_USERAGENT, "Quirepress/6.04");
    curl_easy_setopt(m_exchange, CURLOPT_BUFFERSIZE, kBufferSize);
    curl_easy_setopt(m_exchange, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(m_request.largestFile));
    // Leave is taken of the server within our limits.
    curl_easy_setopt(m_exchange, CURLOPT_FORBID_REUSE, 1L);
    curl_easy_setopt(m_exchange, CURLOPT_WRITEFUNCTION, &TakeBytes);
    curl_easy_setopt(m_exchange, CURLOPT_WRITEDATA, this);
    return true;
}

std::size_t Download::TakeBytes(char* bytes, std::size_t size, std::size_t count, void* download) {
    const bool isKept = static_cast<Download*>(download)->Keep(bytes, size * count);
    return isKept ? size * count : CURL_WRITEFUNC_ERROR;
}

bool Download::Keep(const char* bytes, std::size_t size) {
    if (!m_file) OpenFile();
    m_size += static_cast<std::int64_t>(size);
    if (m_size > m_request.largestFile) {
        m_failure = "the file is larger than allowed";
        return false;
    }
    const FileResult result = m_file->Write(bytes, size);
    if (result != FileResult::kDone) m_failure = m_path + " can't be written: " + DescribeFileResult(result);
    return result == FileResult::kDone;
}

// Not before the first bytes are there: only then the server has said what it calls the file.
void Download::OpenFile() {
    m_path = FreePath(NameOfFile());
    m_file = std::make_unique<ReplacementFile>(m_files, m_path);
}

std::string Download::NameOfFile() {
    const char* address = nullptr;
    const char* mediaType = nullptr;
    curl_header* disposition = nullptr;
    curl_easy_getinfo(m_exchange, CURLINFO_EFFECTIVE_URL, &address);
    curl_easy_getinfo(m_exchange, CURLINFO_CONTENT_TYPE, &mediaType);
    const bool hasDisposition =
        curl_easy_header(m_exchange, "Content-Disposition", 0, CURLH_HEADER, -1, &disposition) == CURLHE_OK;
    return NameDownload({address != nullptr ? address : "", hasDisposition ? disposition->value : "",
                         mediaType != nullptr ? mediaType : ""});
}

std::string Download::FreePath(const std::string& name) {
    std::string path = JoinPath(m_request.folder, name);
    for (int number = 2; number <= kMostNumbers && m_files.Inspect(path).kind != FileKind::kMissing; ++number)
        path = JoinPath(m_request.folder, NumberedName(name, number));
    return path;
}

bool Download::KeepGoing() {
    curl_off_t total = 0;
    curl_easy_getinfo(m_exchange, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &total);
    if (m_request.showBytes) m_request.showBytes(m_size, total > 0 ? total : 0);
    return !m_request.keepGoing || m_request.keepGoing();
}

DownloadResult Download::Finish() {
    if (!m_file) OpenFile();
    const FileResult result = m_file->Finish(false);
    if (result != FileResult::kDone) return Fail(m_path + " can't be written: " + DescribeFileResult(result));
    if (m_request.showBytes) m_request.showBytes(m_size, m_size);
    return {TransferEnd::kDone, m_path, {}};
}

}  // namespace

DownloadResult FetchDownload(Files& files, const TransferPlace& place, const DownloadRequest& request) {
    return Download(files, place, request).Run();
}

}  // namespace quirepress
