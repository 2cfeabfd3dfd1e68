#include "platform/cups/cups_connection.h"

#include <cups/cups.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <future>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "platform/event_loop.h"

namespace quirepress {

namespace {

constexpr int kConnectPatience = 5'000;
constexpr int kAnswerPatience = 10'000;
constexpr double kSlice = 0.05;  // seconds
constexpr auto kConnectSlice = std::chrono::milliseconds(10);
constexpr int kMostAuthentications = 3;
constexpr std::size_t kPiece = std::size_t{16} * 1024;
constexpr std::size_t kMostAnswered = std::size_t{256} << 20;
constexpr const char* kNoPrintServer = "what answers is no print server";

// What a connecting thread leaves behind. It may outlive whoever waits for it.
struct Attempt {
    ~Attempt() { httpClose(http); }
    http_t* http = nullptr;
    std::string error;
};

std::string ServersWords() {
    const char* text = cupsLastErrorString();
    return text != nullptr ? text : "";
}

std::shared_ptr<Attempt> ConnectNow() {
    auto attempt = std::make_shared<Attempt>();
    attempt->http = httpConnect2(cupsServer(), ippPort(), nullptr, AF_UNSPEC, cupsEncryption(), 1,
                                 kConnectPatience, nullptr);
    if (attempt->http == nullptr) attempt->error = ServersWords();
    return attempt;
}

ssize_t TakeBytes(void* from, ipp_uchar_t* bytes, std::size_t size) {
    auto* rest = static_cast<std::string_view*>(from);
    const std::size_t taken = std::min(size, rest->size());
    std::copy_n(rest->begin(), taken, bytes);
    rest->remove_prefix(taken);
    return static_cast<ssize_t>(taken);
}

// A program without a user at hand must never ask for a password.
const char* RefusePassword(const char*, http_t*, const char*, const char*, void*) {
    return nullptr;
}

}  // namespace

std::unique_ptr<CupsConnection> CupsConnection::Connect(EventLoop& loop, CupsFailure& failure) {
    failure = {CupsFailure::kAway, "the print server can't be reached"};
    std::packaged_task<std::shared_ptr<Attempt>()> task(ConnectNow);
    std::future<std::shared_ptr<Attempt>> result = task.get_future();
    try {
        std::thread(std::move(task)).detach();
    } catch (const std::system_error&) {
        return nullptr;
    }
    const long long giveUpAt = loop.MonotonicMilliseconds() + kConnectPatience;
    while (result.wait_for(kConnectSlice) != std::future_status::ready) {
        if (loop.MonotonicMilliseconds() > giveUpAt) return nullptr;
        loop.Pump();
    }
    const std::shared_ptr<Attempt> attempt = result.get();
    if (attempt->http == nullptr) {
        if (!attempt->error.empty()) failure.text += ": " + attempt->error;
        return nullptr;
    }
    failure = {};
    return std::unique_ptr<CupsConnection>(new CupsConnection(loop, std::exchange(attempt->http, nullptr)));
}

CupsConnection::CupsConnection(EventLoop& loop, http_t* http)
    : m_loop(loop), m_http(http), m_patience(kAnswerPatience) {
    cupsSetPasswordCB2(RefusePassword, nullptr);
    httpSetTimeout(m_http, kSlice, OnQuiet, this);
}

CupsConnection::~CupsConnection() {
    httpClose(m_http);  // in the middle of a document the server sees it break off, and drops it
}

int CupsConnection::OnQuiet(http_t*, void* self) {
    auto* connection = static_cast<CupsConnection*>(self);
    connection->m_loop.Pump();
    connection->m_gaveUp = connection->m_loop.MonotonicMilliseconds() > connection->m_giveUpAt;
    return connection->m_gaveUp ? 0 : 1;
}

bool CupsConnection::IsUsable() {
    // Nothing is due on an idle connection: what there is to read is its end.
    return !m_isBroken && httpGetState(m_http) == HTTP_STATE_WAITING &&
           std::string_view(httpGetField(m_http, HTTP_FIELD_CONNECTION)) != "close" &&
           httpWait(m_http, 0) == 0;
}

http_t* CupsConnection::Handle() {
    m_giveUpAt = m_loop.MonotonicMilliseconds() + m_patience;
    return m_http;
}

// libcups' own cupsSendRequest waits a second for a server to say that it wants the rest, and reconnects by
// itself for up to thirty; neither pumps.
int CupsConnection::SendHead(const IppRequest& request, std::size_t length, CupsFailure& failure) {
    m_giveUpAt = m_loop.MonotonicMilliseconds() + m_patience;
    m_gaveUp = false;
    httpClearFields(m_http);
    httpSetExpect(m_http, HTTP_STATUS_NONE);
    httpSetField(m_http, HTTP_FIELD_CONTENT_TYPE, "application/ipp");
    httpSetField(m_http, HTTP_FIELD_AUTHORIZATION, httpGetAuthString(m_http));
    httpSetLength(m_http, length);
    if (httpPost(m_http, request.resource.c_str()) != 0) return Break(failure);
    ippSetState(request.message.get(), IPP_STATE_IDLE);
    ipp_state_t state = IPP_STATE_IDLE;
    do {
        state = ippWrite(m_http, request.message.get());
    } while (state != IPP_STATE_DATA && state != IPP_STATE_ERROR);
    return state == IPP_STATE_DATA ? 0 : Break(failure);
}

IppMessage CupsConnection::Ask(const IppRequest& request, CupsFailure& failure) {
    for (int i = 0; i < kMostAuthentications; ++i) {
        failure = {};
        if (SendHead(request, ippLength(request.message.get()), failure) != 0) return nullptr;
        IppMessage answer = ReadAnswer(failure);
        if (answer || failure.number != CupsFailure::kPassword || !Authenticate(request)) return answer;
    }
    return nullptr;
}

// Who comes over a local socket may be known to the server without a password.
bool CupsConnection::Authenticate(const IppRequest& request) {
    if (cupsDoAuthentication(m_http, "POST", request.resource.c_str()) != 0 ||
        httpReconnect2(m_http, kConnectPatience, nullptr) != 0)
        return false;
    m_isBroken = false;
    return true;
}

int CupsConnection::BeginDocument(const IppRequest& request, std::int64_t size, CupsFailure& failure) {
    failure = {};
    const std::size_t length =
        size < 0 ? CUPS_LENGTH_VARIABLE : ippLength(request.message.get()) + static_cast<std::size_t>(size);
    return SendHead(request, length, failure);
}

int CupsConnection::SendBytes(const void* data, std::size_t size, CupsFailure& failure) {
    if (m_isBroken) return -1;
    if (size == 0) return 0;  // would be the end of the document
    m_giveUpAt = m_loop.MonotonicMilliseconds() + m_patience;
    // Not cupsWriteRequestData: it takes in the head of an answer that comes at once, behind which nobody
    // could tell any more whether there is a job.
    if (httpWrite2(m_http, static_cast<const char*>(data), size) >= 0) return 0;
    if (httpWait(m_http, 0) != 0) httpUpdate(m_http);  // the server may have said why it takes no more
    return Break(failure);
}

int CupsConnection::EndDocument(CupsFailure& failure) {
    if (m_isBroken) return -1;
    m_giveUpAt = m_loop.MonotonicMilliseconds() + m_patience;
    const bool isSent =
        httpIsChunked(m_http) != 0 ? httpWrite2(m_http, "", 0) >= 0 : httpFlushWrite(m_http) >= 0;
    return isSent ? 0 : Break(failure);
}

IppMessage CupsConnection::ReadAnswer(CupsFailure& failure) {
    m_giveUpAt = m_loop.MonotonicMilliseconds() + m_patience;
    http_status_t status = HTTP_STATUS_CONTINUE;
    while (status == HTTP_STATUS_CONTINUE) status = httpUpdate(m_http);
    std::string body;
    const bool isWhole = status != HTTP_STATUS_ERROR && ReadBody(body);
    if (status != HTTP_STATUS_OK || !isWhole) {
        Break(failure);
        return nullptr;
    }
    // Read by libcups from the connection, each of its many small values would cost calls of the system.
    std::string_view rest = body;
    IppMessage answer(ippNew());
    ipp_state_t state = IPP_STATE_IDLE;
    do {
        state = ippReadIO(&rest, TakeBytes, 1, nullptr, answer.get());
    } while (state != IPP_STATE_DATA && state != IPP_STATE_ERROR);
    if (state == IPP_STATE_DATA) return answer;
    m_isBroken = true;
    failure = {CupsFailure::kUnreadable, kNoPrintServer};
    return nullptr;
}

bool CupsConnection::ReadBody(std::string& body) {
    std::vector<char> piece(kPiece);
    ssize_t count = 0;
    while (body.size() < kMostAnswered && (count = httpRead2(m_http, piece.data(), piece.size())) > 0)
        body.append(piece.data(), static_cast<std::size_t>(count));
    return count == 0 && httpGetState(m_http) == HTTP_STATE_WAITING;  // else it was cut short
}

int CupsConnection::Break(CupsFailure& failure) {
    m_isBroken = true;
    DescribeFailure(failure);
    return -1;
}

void CupsConnection::DescribeFailure(CupsFailure& failure) {
    const http_status_t status = httpGetStatus(m_http);
    const int error = httpError(m_http);
    if (m_gaveUp) {
        failure = {CupsFailure::kNoAnswer, "the print server does not answer"};
    } else if (status == HTTP_STATUS_UNAUTHORIZED || status == HTTP_STATUS_CUPS_AUTHORIZATION_CANCELED) {
        failure = {CupsFailure::kPassword, "the print server asks for a password"};
    } else if (status >= HTTP_STATUS_MULTIPLE_CHOICES) {
        failure = {static_cast<int>(cupsLastError()),
                   "the print server refuses: " + std::string(httpStatus(status))};
    } else if (error == EINVAL) {
        failure = {CupsFailure::kUnreadable, kNoPrintServer};
    } else {
        failure = {CupsFailure::kBroke, "the print server ended the connection"};
    }
}

}  // namespace quirepress
