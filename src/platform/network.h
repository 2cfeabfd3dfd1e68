#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace quirepress {

enum class ConnectionState { kConnecting, kOpen, kEndedByPeer, kFailed };

// One TCP connection; no call ever waits. Destroying it drops the connection.
class Connection {
public:
    virtual ~Connection() = default;
    virtual ConnectionState State() = 0;  // looks at the system anew
    // Bytes taken, 0 when it must wait, -1 when the connection is gone.
    virtual std::int64_t Send(const void* data, std::size_t size) = 0;
    // Appends what has come; bytes read, 0 when nothing has, -1 at the end or when the connection is gone.
    virtual std::int64_t Receive(std::string& data) = 0;
    virtual void EndSending() = 0;  // tells the peer that no more comes
    // Bytes that the peer has not acknowledged yet; -1 when the system cannot tell.
    virtual std::int64_t UnacknowledgedBytes() = 0;
    virtual std::string ErrorText() = 0;  // why it failed: "connection refused"
};

class Network {
public:
    virtual ~Network() = default;
    // Begins to look up `host` and to connect; never null.
    virtual std::unique_ptr<Connection> Connect(const std::string& host, int port) = 0;
};

}  // namespace quirepress
