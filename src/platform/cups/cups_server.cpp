#include "platform/cups/cups_server.h"

#include <cups/cups.h>

#include <algorithm>

#include "platform/event_loop.h"

namespace quirepress {

namespace {

constexpr int kLongestRestart = 5'000;
constexpr int kFirstPause = 50;
constexpr int kLongestPause = 1'000;
constexpr int kUsualPatience = 10'000;
constexpr int kShortPatience = 2'000;
constexpr int kMostTries = 3;
constexpr std::size_t kMostIdle = 4;

}  // namespace

IppMessage CupsServer::Ask(const IppRequest& request, CupsFailure& failure) {
    for (int i = 0; i < kMostTries; ++i) {
        std::unique_ptr<CupsConnection> connection = Take(failure);
        if (!connection) return nullptr;
        IppMessage answer = connection->Ask(request, failure);
        const bool isGood = Judge(answer.get(), failure);
        GiveBack(std::move(connection));
        if (isGood) return answer;
        if (failure.number != CupsFailure::kBroke) return nullptr;
    }
    return nullptr;
}

std::unique_ptr<CupsConnection> CupsServer::Take(CupsFailure& failure) {
    std::unique_ptr<CupsConnection> connection = TakeIdle();
    const long long giveUpAt = m_loop.MonotonicMilliseconds() + (m_isMissed ? 0 : kLongestRestart);
    for (int pause = kFirstPause; !connection; pause = std::min(2 * pause, kLongestPause)) {
        connection = CupsConnection::Connect(m_loop, failure);
        if (connection) break;
        if (m_loop.MonotonicMilliseconds() + pause > giveUpAt) {
            m_isMissed = true;
            return nullptr;
        }
        m_loop.Wait(pause);
    }
    connection->BePatientFor(m_isMissed ? kShortPatience : kUsualPatience);
    return connection;
}

std::unique_ptr<CupsConnection> CupsServer::TakeIdle() {
    while (!m_idle.empty()) {
        std::unique_ptr<CupsConnection> connection = std::move(m_idle.back());
        m_idle.pop_back();
        if (connection->IsUsable()) return connection;
    }
    return nullptr;
}

void CupsServer::GiveBack(std::unique_ptr<CupsConnection> connection) {
    if (connection->IsUsable() && m_idle.size() < kMostIdle) m_idle.push_back(std::move(connection));
}

bool CupsServer::Judge(ipp_t* answer, CupsFailure& failure) {
    const bool hasAnswered = answer != nullptr || failure.number >= IPP_STATUS_ERROR_BAD_REQUEST ||
                             failure.number == CupsFailure::kPassword;
    // A connection that ends is how a restart begins: the next call waits for it to be over.
    if (hasAnswered || failure.number != CupsFailure::kBroke) m_isMissed = !hasAnswered;
    if (answer == nullptr) return false;
    const ipp_status_t status = ippGetStatusCode(answer);
    if (status <= IPP_STATUS_OK_CONFLICTING) return true;
    const std::string_view words = IppText(ippFindAttribute(answer, "status-message", IPP_TAG_TEXT));
    failure = {static_cast<int>(status),
               "the print server says: " + std::string(words.empty() ? ippErrorString(status) : words)};
    return false;
}

}  // namespace quirepress
