#include "transport/transfer.h"

#include <curl/curl.h>

#include <algorithm>
#include <string_view>
#include <type_traits>
#include <utility>

#include "base/credentials.h"
#include "base/text.h"
#include "platform/event_loop.h"

namespace quirepress {

namespace {

constexpr int kPassMilliseconds = 10;  // the longest sleep between two passes of the pump
constexpr std::size_t kLongestReply = 300;

static_assert(CURL_ERROR_SIZE == 256);
static_assert(std::is_same_v<curl_off_t, std::int64_t>);

// The library is set up once for the program.
class Library {
public:
    Library() : m_isReady(curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK) {}
    ~Library() {
        if (m_isReady) curl_global_cleanup();
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    bool IsReady() const { return m_isReady; }

private:
    bool m_isReady;
};

bool IsLibraryReady() {
    static const Library library;
    return library.IsReady();
}

struct CodeText {
    CURLcode code;
    const char* text;
};
constexpr std::array<CodeText, 20> kCodeTexts = {{
    {CURLE_UNSUPPORTED_PROTOCOL, "there is no way to reach an address of this kind"},
    {CURLE_URL_MALFORMAT, "the address is not well-formed"},
    {CURLE_COULDNT_RESOLVE_PROXY, "the proxy's name can't be found"},
    {CURLE_COULDNT_RESOLVE_HOST, "the server's name can't be found"},
    {CURLE_COULDNT_CONNECT, "the server can't be reached"},
    {CURLE_WEIRD_SERVER_REPLY, "the server answers something else than expected"},
    {CURLE_REMOTE_ACCESS_DENIED, "the server denies access"},
    {CURLE_PARTIAL_FILE, "the connection ended before everything had come"},
    {CURLE_HTTP_RETURNED_ERROR, "the server refuses the file"},
    {CURLE_OPERATION_TIMEDOUT, "the server took too long"},
    {CURLE_SSL_CONNECT_ERROR, "no encrypted connection could be made"},
    {CURLE_TOO_MANY_REDIRECTS, "the server sends from one address to the next without end"},
    {CURLE_GOT_NOTHING, "the server ended the connection without an answer"},
    {CURLE_SEND_ERROR, "the connection broke"},
    {CURLE_RECV_ERROR, "the connection broke"},
    {CURLE_PEER_FAILED_VERIFICATION, "the server's certificate is not trusted"},
    {CURLE_USE_SSL_FAILED, "the server offers no encryption"},
    {CURLE_LOGIN_DENIED, "the server refuses the user name or the password"},
    {CURLE_REMOTE_FILE_NOT_FOUND, "the server has no such file"},
    {CURLE_FILESIZE_EXCEEDED, "the file is larger than allowed"},
}};

std::string DescribeCode(int code) {
    const auto found = std::find_if(kCodeTexts.begin(), kCodeTexts.end(),
                                    [code](const CodeText& entry) { return entry.code == code; });
    return found != kCodeTexts.end() ? found->text : curl_easy_strerror(static_cast<CURLcode>(code));
}

bool IsRefusal(std::string_view reply) {
    return !reply.empty() && (reply[0] == '4' || reply[0] == '5');
}

}  // namespace

bool Transfer::IsAvailable() {
    if (!IsLibraryReady()) return false;
    return (curl_version_info(CURLVERSION_NOW)->features & CURL_VERSION_SSL) != 0;
}

Transfer::Transfer(const TransferPlace& place) : m_place(place) {
    if (!IsLibraryReady()) return;
    m_exchanges = curl_multi_init();
    m_exchange = curl_easy_init();
}

Transfer::~Transfer() {
    if (m_exchange != nullptr) curl_easy_cleanup(m_exchange);
    if (m_exchanges != nullptr) curl_multi_cleanup(m_exchanges);
}

void* Transfer::BeginExchange(const TransferLimits& limits) {
    m_lastReply.clear();
    m_errorText.fill('\0');
    m_code = CURLE_FAILED_INIT;
    // Until the connection stands nothing comes.
    m_silentMilliseconds = std::max(1000LL * limits.silentSeconds, 1LL * limits.connectMilliseconds);
    if (m_exchange == nullptr || m_exchanges == nullptr) return nullptr;
    curl_easy_reset(m_exchange);
    curl_easy_setopt(m_exchange, CURLOPT_NOSIGNAL, 1L);
    // A name server that does not answer must not hold the thread when the exchange is given up.
    curl_easy_setopt(m_exchange, CURLOPT_QUICK_EXIT, 1L);
    curl_easy_setopt(m_exchange, CURLOPT_ERRORBUFFER, m_errorText.data());
    curl_easy_setopt(m_exchange, CURLOPT_HEADERFUNCTION, &TakeReply);
    curl_easy_setopt(m_exchange, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(m_exchange, CURLOPT_XFERINFOFUNCTION, &OnProgress);
    curl_easy_setopt(m_exchange, CURLOPT_XFERINFODATA, this);
    curl_easy_setopt(m_exchange, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(m_exchange, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limits.connectMilliseconds));
    const long silentSeconds = limits.silentSeconds + 1L;  // our own limit comes first
    curl_easy_setopt(m_exchange, CURLOPT_SERVER_RESPONSE_TIMEOUT, silentSeconds);
    curl_easy_setopt(m_exchange, CURLOPT_LOW_SPEED_LIMIT, 1L);
    curl_easy_setopt(m_exchange, CURLOPT_LOW_SPEED_TIME, silentSeconds);
    curl_easy_setopt(m_exchange, CURLOPT_TIMEOUT_MS, static_cast<long>(limits.overallMilliseconds));
    // Where the system asks for revoked certificates, a list that cannot be had is no obstacle.
    curl_easy_setopt(m_exchange, CURLOPT_SSL_OPTIONS, static_cast<long>(CURLSSLOPT_REVOKE_BEST_EFFORT));
    if (!m_place.certificates.empty())
        curl_easy_setopt(m_exchange, CURLOPT_CAINFO, m_place.certificates.c_str());
    return m_exchange;
}

TransferEnd Transfer::RunExchange(const std::function<bool()>& keepGoing) {
    if (m_exchange == nullptr || m_exchanges == nullptr) return TransferEnd::kFailed;
    if (curl_multi_add_handle(m_exchanges, m_exchange) != CURLM_OK) return TransferEnd::kFailed;
    m_keepGoing = keepGoing;
    m_isStopped = false;
    m_isSilent = false;
    m_bytes = 0;
    m_lastPass = m_lastSign = m_place.loop.MonotonicMilliseconds();
    m_code = Drive();
    if (m_isSilent && m_code == CURLE_ABORTED_BY_CALLBACK) {
        m_code = CURLE_OPERATION_TIMEDOUT;
        m_errorText.fill('\0');  // that we have ended it
    }
    curl_multi_remove_handle(m_exchanges, m_exchange);
    m_keepGoing = nullptr;
    if (m_isStopped) return TransferEnd::kStopped;
    return m_code == CURLE_OK ? TransferEnd::kDone : TransferEnd::kFailed;
}

int Transfer::Drive() {
    for (;;) {
        int running = 0;
        int code = CURLE_OK;
        if (curl_multi_perform(m_exchanges, &running) != CURLM_OK) return CURLE_FAILED_INIT;
        if (TakeResult(code)) return code;
        if (m_isStopped) return CURLE_ABORTED_BY_CALLBACK;
        curl_multi_poll(m_exchanges, nullptr, 0, kPassMilliseconds, nullptr);
        PumpAndAsk();  // once stopped, the library ends the exchange in its next step
    }
}

bool Transfer::TakeResult(int& code) {
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(m_exchanges, &left)) {
        if (message->msg != CURLMSG_DONE) continue;
        code = message->data.result;
        return true;
    }
    return false;
}

bool Transfer::PumpAndAsk() {
    const long long now = m_place.loop.MonotonicMilliseconds();
    if (m_isStopped || now - m_lastPass < kPassMilliseconds) return !m_isStopped;
    m_place.loop.Pump();
    m_lastPass = now;
    m_isStopped = m_keepGoing && !m_keepGoing();
    return !m_isStopped;
}

// At the end of an exchange, and where it goes on to another server, the library begins to count anew.
void Transfer::NoteBytes(std::int64_t bytes) {
    if (bytes > std::exchange(m_bytes, bytes)) m_lastSign = m_place.loop.MonotonicMilliseconds();
}

// Sooner than the library, which takes leave of a server after a step that has failed by its own limit, and
// waits as long once more for an answer to that.
bool Transfer::IsSilentTooLong() {
    const long long silence = m_place.loop.MonotonicMilliseconds() - m_lastSign;
    m_isSilent = m_isSilent || silence >= m_silentMilliseconds;
    return m_isSilent;
}

// Some steps of mail and FTP wait inside the library, which asks here once a second. And a message is given
// up by this answer only: one whose exchange is just taken away is ended as if it were whole.
int Transfer::OnProgress(void* transfer, std::int64_t, std::int64_t received, std::int64_t,
                         std::int64_t sent) {
    auto& self = *static_cast<Transfer*>(transfer);
    self.NoteBytes(received + sent);
    if (self.PumpAndAsk() && !self.IsSilentTooLong()) return 0;
    // A connection that was kept would be taken leave of later, where nobody is asked.
    curl_easy_setopt(self.m_exchange, CURLOPT_FORBID_REUSE, 1L);
    return 1;
}

std::size_t Transfer::TakeReply(char* bytes, std::size_t size, std::size_t count, void* transfer) {
    constexpr std::string_view kGoodbye = "221";
    const std::string_view line(bytes, size * count);
    auto& self = *static_cast<Transfer*>(transfer);
    self.m_lastSign = self.m_place.loop.MonotonicMilliseconds();
    if (!StartsWith(line, kGoodbye)) self.m_lastReply = line.substr(0, line.find_first_of("\r\n"));
    return size * count;
}

std::string Transfer::FailureText() const {
    // Where a refusal was answered, some codes say no more than that something went wrong.
    const bool isRefused = IsRefusal(m_lastReply);
    const bool isVague = m_code == CURLE_SEND_ERROR || m_code == CURLE_WEIRD_SERVER_REPLY;
    std::string text = isRefused && isVague ? "the server refuses it" : DescribeCode(m_code);
    const std::string detail = ToPrintableLine(HideCredentials(m_errorText.data()));
    if (!detail.empty()) text += " (" + detail + ")";
    if (isRefused) text += ": \"" + ToPrintableLine(CutToSize(m_lastReply, kLongestReply)) + "\"";
    return text;
}

}  // namespace quirepress
