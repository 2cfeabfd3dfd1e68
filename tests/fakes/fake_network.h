#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/network.h"

namespace quirepress {

// The other end of a connection, as the test wants it to behave.
struct FakePeer {
    bool refuses = false;
    bool answers = true;            // false: connecting never ends
    std::int64_t takes = -1;        // bytes until it stalls; -1: all
    std::int64_t breaksAfter = -1;  // bytes until the connection is reset; -1: never
    bool acknowledges = true;       // false: what was sent stays unacknowledged
    bool tellsAcknowledged = true;  // false: the system cannot tell
    bool endsAtEnd = true;          // ends its side when it has everything
    std::int64_t endsAfter = -1;    // bytes until it ends its side in any case; -1: never
    std::function<std::string(std::string_view)> answer = {};  // to the bytes of one call; none: nothing
    std::string received = {};
    std::string replies = {};  // on their way to the program
    bool sawEnd = false;
    bool dropped = false;  // the program closed the connection
};

// A network in memory. Every connection gets a peer that behaves as `nextPeer` says then.
class FakeNetwork : public Network {
public:
    std::unique_ptr<Connection> Connect(const std::string& host, int port) override;

    FakePeer nextPeer;
    std::function<void()> onConnect = [] {};
    std::vector<std::shared_ptr<FakePeer>> peers;  // of all connections, in their order
    std::vector<std::string> addresses;            // "HOST:PORT" of them
};

}  // namespace quirepress
