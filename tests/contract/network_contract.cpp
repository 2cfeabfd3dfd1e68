#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/numbers.h"
#include "fakes/running_child.h"
#include "platform/event_loop.h"
#include "platform/network.h"

namespace quirepress {
namespace {

constexpr int kMostWaits = 3'000;

class NetworkContract : public testing::Test {
protected:
    // A peer on the loopback that does as it is told; the port that it listens on.
    int StartPeer(const std::string& what) {
        m_peer = std::make_unique<RunningChild>(services, std::vector<std::string>{"accept", what});
        return *m_peer ? static_cast<int>(ParseLong(m_peer->ReadLine())) : 0;
    }
    void EndPeer() { m_peer->Destroy(); }

    // The first state other than `state`.
    ConnectionState AwaitAfter(Connection& connection, ConnectionState state) {
        for (int i = 0; i < kMostWaits && connection.State() == state; ++i) services.loop->Wait(5);
        return connection.State();
    }

    std::string ReceiveAll(Connection& connection) {
        std::string data;
        for (int i = 0; i < kMostWaits && connection.Receive(data) >= 0; ++i) services.loop->Wait(5);
        return data;
    }

    Services services = MakeSystemServices();

private:
    std::unique_ptr<RunningChild> m_peer;
};

TEST_F(NetworkContract, SendsAndReceives) {
    for (const std::string host : {"127.0.0.1", "localhost"}) {
        const auto connection = services.network->Connect(host, StartPeer("echo"));
        std::string data;
        ASSERT_EQ(AwaitAfter(*connection, ConnectionState::kConnecting), ConnectionState::kOpen);
        EXPECT_EQ(connection->Send("hello", 5), 5);
        for (int i = 0; i < kMostWaits && data.size() < 5; ++i) {
            ASSERT_GE(connection->Receive(data), 0);
            services.loop->Wait(5);
        }
        EXPECT_EQ(data, "hello");
        EXPECT_EQ(connection->Receive(data), 0);
        connection->EndSending();
        EXPECT_EQ(ReceiveAll(*connection), "");
        EXPECT_EQ(connection->State(), ConnectionState::kEndedByPeer);
    }
}

TEST_F(NetworkContract, SendsMoreThanFitsAtOnce) {
    const auto connection = services.network->Connect("127.0.0.1", StartPeer("count"));
    ASSERT_EQ(AwaitAfter(*connection, ConnectionState::kConnecting), ConnectionState::kOpen);
    const std::string data(1'000'000, 'd');
    std::int64_t total = 0;
    for (int i = 0; i < kMostWaits && total < 20'000'000; ++i) {
        const std::int64_t offset = total % 1'000'000;
        const std::int64_t sent =
            connection->Send(data.data() + offset, static_cast<std::size_t>(1'000'000 - offset));
        ASSERT_GE(sent, 0);
        if (sent == 0) services.loop->Wait(5);
        total += sent;
    }
    connection->EndSending();
    EXPECT_EQ(ReceiveAll(*connection), std::to_string(total));
    EXPECT_EQ(total, 20'000'000);
    EXPECT_LE(connection->UnacknowledgedBytes(), 0);
}

TEST_F(NetworkContract, NeverWaitsForAPeerThatDoesNotRead) {
    const auto connection = services.network->Connect("127.0.0.1", StartPeer("hold"));
    ASSERT_EQ(AwaitAfter(*connection, ConnectionState::kConnecting), ConnectionState::kOpen);
    const std::string data(1'000'000, 'd');
    std::int64_t sent = 1;
    for (int i = 0; i < kMostWaits && sent > 0; ++i) sent = connection->Send(data.data(), data.size());
    EXPECT_EQ(sent, 0);
    EXPECT_EQ(connection->State(), ConnectionState::kOpen);
    EXPECT_NE(connection->UnacknowledgedBytes(), 0);
    std::string received;
    EXPECT_EQ(connection->Receive(received), 0);
    EndPeer();
    EXPECT_NE(AwaitAfter(*connection, ConnectionState::kOpen), ConnectionState::kOpen);
}

TEST_F(NetworkContract, GivesWhatCameBeforeTheEnd) {
    const auto connection = services.network->Connect("127.0.0.1", StartPeer("greet"));
    ASSERT_NE(AwaitAfter(*connection, ConnectionState::kConnecting), ConnectionState::kFailed);
    EXPECT_EQ(ReceiveAll(*connection), "hello");
    EXPECT_EQ(connection->State(), ConnectionState::kEndedByPeer);
}

TEST_F(NetworkContract, NoticesAPeerThatDropsTheConnection) {
    const auto connection = services.network->Connect("127.0.0.1", StartPeer("reset"));
    ConnectionState state = AwaitAfter(*connection, ConnectionState::kConnecting);
    if (state == ConnectionState::kOpen) state = AwaitAfter(*connection, ConnectionState::kOpen);
    EXPECT_EQ(state, ConnectionState::kFailed);
    EXPECT_NE(connection->ErrorText(), "");
    EXPECT_EQ(connection->Send("x", 1), -1);
    std::string data;
    EXPECT_EQ(connection->Receive(data), -1);
    EXPECT_EQ(connection->UnacknowledgedBytes(), -1);
    connection->EndSending();
}

TEST_F(NetworkContract, SaysWhyItCannotConnect) {
    const int port = StartPeer("close");
    EndPeer();
    const std::string withNul("127.0.0.1\0x", 11);
    const std::vector<std::pair<std::string, int>> addresses = {{"127.0.0.1", port}, {"", 9100},
                                                                {"127.0.0.1", 0},    {"127.0.0.1", 70'000},
                                                                {"127.0.0.1", -1},   {withNul, 80}};
    for (const auto& [host, hostPort] : addresses) {
        const auto connection = services.network->Connect(host, hostPort);
        EXPECT_EQ(AwaitAfter(*connection, ConnectionState::kConnecting), ConnectionState::kFailed) << host;
        EXPECT_NE(connection->ErrorText(), "") << host;
    }
    // Given up while it is looked up and connected.
    for (int i = 0; i < 20; ++i) services.network->Connect("localhost", port);
}

}  // namespace
}  // namespace quirepress
