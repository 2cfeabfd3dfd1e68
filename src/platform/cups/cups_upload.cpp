#include "platform/cups/cups_upload.h"

#include <cups/ipp.h>

#include <algorithm>
#include <utility>

#include "base/text.h"
#include "platform/cups/cups_connection.h"
#include "platform/cups/cups_server.h"
#include "platform/event_loop.h"

namespace quirepress {

namespace {

constexpr std::size_t kMostHeld = std::size_t{4} << 20;
constexpr int kLongestWaitForRoom = 30'000;
constexpr int kFirstPause = 100;
constexpr int kLongestPause = 1'000;
constexpr int kMostTries = 3;

// The server's limits of jobs, of which every finished job makes one more possible.
bool HasNoRoom(const CupsFailure& failure) {
    switch (failure.number) {
        case IPP_STATUS_ERROR_BUSY:
        case IPP_STATUS_ERROR_TEMPORARY:
        case IPP_STATUS_ERROR_TOO_MANY_JOBS:
            return true;
        case IPP_STATUS_ERROR_NOT_POSSIBLE:
            return Contains(failure.text, "Too many active jobs");
        default:
            return false;
    }
}

}  // namespace

CupsUpload::CupsUpload(CupsServer& server, EventLoop& loop, IppRequest request)
    : m_server(server), m_loop(loop), m_request(std::move(request)) {}

CupsUpload::~CupsUpload() = default;

int CupsUpload::Write(const void* data, std::size_t size) {
    if (m_failure.number != CupsFailure::kNone) return -1;
    if (!m_stream && m_held.size() + size <= kMostHeld) {
        m_held.append(static_cast<const char*>(data), size);
        return 0;
    }
    if (!m_stream && BeginStream() != 0) return -1;
    return m_stream->SendBytes(data, size, m_failure);
}

int CupsUpload::BeginStream() {
    m_stream = m_server.Take(m_failure);
    if (!m_stream || m_stream->BeginDocument(m_request, -1, m_failure) != 0) return -1;
    const std::string held = std::exchange(m_held, {});
    return m_stream->SendBytes(held.data(), held.size(), m_failure);
}

int CupsUpload::Finish() {
    if (m_failure.number != CupsFailure::kNone) return -1;
    return m_stream ? Close(std::move(m_stream)) : SendHeld();
}

int CupsUpload::SendHeld() {
    const long long giveUpAt = m_loop.MonotonicMilliseconds() + kLongestWaitForRoom;
    int tries = 0;
    for (int pause = kFirstPause;; pause = std::min(2 * pause, kLongestPause)) {
        const int result = SendHeldOnce();
        if (result != -1) return result;
        const bool isWorthATry = HasNoRoom(m_failure)
                                     ? m_loop.MonotonicMilliseconds() + pause < giveUpAt
                                     : m_failure.number == CupsFailure::kBroke && ++tries < kMostTries;
        if (!isWorthATry) return -1;
        m_loop.Wait(pause);
    }
}

int CupsUpload::SendHeldOnce() {
    std::unique_ptr<CupsConnection> connection = m_server.Take(m_failure);
    if (!connection) return -1;
    const auto size = static_cast<std::int64_t>(m_held.size());
    if (connection->BeginDocument(m_request, size, m_failure) != 0 ||
        connection->SendBytes(m_held.data(), m_held.size(), m_failure) != 0) {
        m_server.Judge(nullptr, m_failure);
        return -1;
    }
    return Close(std::move(connection));
}

int CupsUpload::Close(std::unique_ptr<CupsConnection> connection) {
    if (connection->EndDocument(m_failure) != 0) {
        m_server.Judge(nullptr, m_failure);
        return -1;
    }
    const IppMessage answer = connection->ReadAnswer(m_failure);
    const bool isTaken = m_server.Judge(answer.get(), m_failure);
    m_server.GiveBack(std::move(connection));
    if (isTaken) {
        m_failure = {};
        m_jobId = IppNumber(ippFindAttribute(answer.get(), "job-id", IPP_TAG_INTEGER));
        return 0;
    }
    switch (m_failure.number) {
        case CupsFailure::kBroke:
        case CupsFailure::kNoAnswer:
        case CupsFailure::kUnreadable:
            return 1;
        default:
            return -1;
    }
}

}  // namespace quirepress
