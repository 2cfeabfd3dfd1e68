#include "fakes/fake_network.h"

#include <algorithm>
#include <utility>

namespace quirepress {

namespace {

class FakeConnection : public Connection {
public:
    explicit FakeConnection(std::shared_ptr<FakePeer> peer) : m_peer(std::move(peer)) {}
    ~FakeConnection() override { m_peer->dropped = true; }

    ConnectionState State() override {
        if (m_peer->refuses || IsBroken()) return ConnectionState::kFailed;
        if (!m_peer->answers) return ConnectionState::kConnecting;
        return IsEnded() ? ConnectionState::kEndedByPeer : ConnectionState::kOpen;
    }

    std::int64_t Send(const void* data, std::size_t size) override {
        if (State() == ConnectionState::kFailed) return -1;
        auto room = static_cast<std::int64_t>(size);
        const auto limit = [&](std::int64_t bytes) {
            if (bytes >= 0) room = std::min(room, bytes - Received());
        };
        limit(m_peer->takes);
        limit(m_peer->breaksAfter);
        if (Received() < m_peer->endsAfter) limit(m_peer->endsAfter);
        room = std::max<std::int64_t>(room, 0);
        const std::string_view taken(static_cast<const char*>(data), static_cast<std::size_t>(room));
        m_peer->received += taken;
        if (m_peer->answer && !IsBroken()) m_peer->replies += m_peer->answer(taken);
        return room;
    }

    std::int64_t Receive(std::string& data) override {
        if (State() == ConnectionState::kFailed) return -1;
        const std::string replies = std::exchange(m_peer->replies, {});
        data += replies;
        if (replies.empty() && IsEnded()) return -1;
        return static_cast<std::int64_t>(replies.size());
    }

    void EndSending() override { m_peer->sawEnd = true; }

    std::int64_t UnacknowledgedBytes() override {
        if (!m_peer->tellsAcknowledged) return -1;
        return m_peer->acknowledges ? 0 : Received();
    }

    std::string ErrorText() override {
        return m_peer->refuses ? "connection refused" : "connection reset by peer";
    }

private:
    std::int64_t Received() const { return static_cast<std::int64_t>(m_peer->received.size()); }
    bool IsBroken() const { return m_peer->breaksAfter >= 0 && Received() >= m_peer->breaksAfter; }
    bool IsEnded() const {
        return (m_peer->endsAfter >= 0 && Received() >= m_peer->endsAfter) ||
               (m_peer->sawEnd && m_peer->endsAtEnd);
    }

    std::shared_ptr<FakePeer> m_peer;
};

}  // namespace

std::unique_ptr<Connection> FakeNetwork::Connect(const std::string& host, int port) {
    addresses.push_back(host + ":" + std::to_string(port));
    peers.push_back(std::make_shared<FakePeer>(nextPeer));
    onConnect();
    return std::make_unique<FakeConnection>(peers.back());
}

}  // namespace quirepress
