#include "platform/network.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <system_error>
#include <thread>

#include "platform/windows/make_services.h"
#include "platform/windows/system_text.h"

namespace quirepress {
namespace {

struct AddressFreer {
    void operator()(ADDRINFOW* addresses) const { FreeAddrInfoW(addresses); }
};
using Addresses = std::unique_ptr<ADDRINFOW, AddressFreer>;

// Written by the thread that looks up, read by ours once `isDone`.
struct Lookup {
    std::wstring host;
    std::wstring port;
    Addresses addresses;
    int error = 0;
    std::atomic<bool> isDone = false;
};

void LookUp(const std::shared_ptr<Lookup>& lookup) {
    ADDRINFOW wanted = {};
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_protocol = IPPROTO_TCP;
    ADDRINFOW* found = nullptr;
    lookup->error = GetAddrInfoW(lookup->host.c_str(), lookup->port.c_str(), &wanted, &found);
    lookup->addresses.reset(found);
    lookup->isDone = true;
}

class Socket {
public:
    Socket() = default;
    explicit Socket(SOCKET value) : m_value(value) {}
    ~Socket() { Close(); }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    SOCKET Get() const { return m_value; }
    bool IsOpen() const { return m_value != INVALID_SOCKET; }
    void Open(SOCKET value) {
        Close();
        m_value = value;
    }
    void Close() {
        if (IsOpen()) closesocket(m_value);
        m_value = INVALID_SOCKET;
    }

private:
    SOCKET m_value = INVALID_SOCKET;
};

const char* DescribeCommonError(int error) {
    switch (error) {
        case WSAECONNREFUSED:
            return "connection refused";
        case WSAECONNRESET:
        case WSAECONNABORTED:
            return "connection reset by peer";
        case WSAETIMEDOUT:
            return "connection timed out";
        case WSAEHOSTUNREACH:
        case WSAENETUNREACH:
            return "no route to host";
        case WSAHOST_NOT_FOUND:
        case WSANO_DATA:
            return "unknown host";
        default:
            return nullptr;
    }
}

class WindowsConnection : public Connection {
public:
    WindowsConnection(const std::string& host, int port) : m_lookup(std::make_shared<Lookup>()) {
        m_lookup->host = Widen(host);
        m_lookup->port = std::to_wstring(port);
        try {
            std::thread(LookUp, m_lookup).detach();  // a look-up cannot be ended; it keeps its own data
        } catch (const std::system_error&) {
            Fail(WSAEPROCLIM);
        }
    }

    ConnectionState State() override {
        if (m_state == ConnectionState::kConnecting) LookAtConnecting();
        if (m_state == ConnectionState::kOpen) LookAtOpen();
        return m_state;
    }

    std::int64_t Send(const void* data, std::size_t size) override {
        if (m_state == ConnectionState::kConnecting) return State() == ConnectionState::kFailed ? -1 : 0;
        if (m_state == ConnectionState::kFailed) return -1;
        constexpr std::size_t kLargestPiece = 1 << 20;
        const int sent = send(m_socket.Get(), static_cast<const char*>(data),
                              static_cast<int>(std::min(size, kLargestPiece)), 0);
        if (sent != SOCKET_ERROR) return sent;
        if (WSAGetLastError() == WSAEWOULDBLOCK) return 0;
        Fail(WSAGetLastError());
        return -1;
    }

    std::int64_t Receive(std::string& data) override {
        if (State() == ConnectionState::kConnecting) return 0;
        if (m_state == ConnectionState::kFailed) return -1;
        std::array<char, 65536> buffer;
        const int count = recv(m_socket.Get(), buffer.data(), buffer.size(), 0);
        if (count > 0) data.append(buffer.data(), static_cast<std::size_t>(count));
        if (count > 0) return count;
        if (count == 0) return -1;
        if (WSAGetLastError() == WSAEWOULDBLOCK) return 0;
        Fail(WSAGetLastError());
        return -1;
    }

    void EndSending() override {
        if (m_socket.IsOpen()) shutdown(m_socket.Get(), SD_SEND);
    }

    // The system tells what is on its way, not what it has yet to send.
    std::int64_t UnacknowledgedBytes() override { return -1; }

    std::string ErrorText() override {
        if (m_error == 0) return {};
        const char* const common = DescribeCommonError(m_error);
        return common != nullptr ? common : DescribeSystemError(static_cast<unsigned long>(m_error));
    }

private:
    void Fail(int error) {
        m_state = ConnectionState::kFailed;
        m_error = error;
        m_socket.Close();
    }

    void LookAtConnecting() {
        if (!m_lookup->isDone) return;
        if (!m_socket.IsOpen()) {
            if (m_lookup->error != 0) return Fail(m_lookup->error);
            m_next = m_lookup->addresses.get();
            return TryNextAddress(WSAHOST_NOT_FOUND);
        }
        // Older systems tell a poll nothing of a connection that failed; they do tell this.
        fd_set connected = {1, {m_socket.Get()}};
        fd_set failed = connected;
        timeval noTime = {};
        if (select(0, nullptr, &connected, &failed, &noTime) <= 0) return;
        int error = 0;
        int size = sizeof error;
        getsockopt(m_socket.Get(), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size);
        if (connected.fd_count == 0 || error != 0)
            return TryNextAddress(error != 0 ? error : WSAECONNREFUSED);
        m_state = ConnectionState::kOpen;
    }

    // Begins to connect to the first of the remaining addresses that lets it; `error` is why the last did
    // not.
    void TryNextAddress(int error) {
        for (; m_next != nullptr; error = WSAGetLastError()) {
            const ADDRINFOW& address = *m_next;
            m_next = m_next->ai_next;
            m_socket.Open(socket(address.ai_family, address.ai_socktype, address.ai_protocol));
            u_long withoutWaiting = 1;
            if (!m_socket.IsOpen() || ioctlsocket(m_socket.Get(), FIONBIO, &withoutWaiting) != 0) continue;
            if (connect(m_socket.Get(), address.ai_addr, static_cast<int>(address.ai_addrlen)) == 0) return;
            if (WSAGetLastError() == WSAEWOULDBLOCK) return;
        }
        Fail(error);
    }

    void LookAtOpen() {
        char byte = 0;
        const int count = recv(m_socket.Get(), &byte, 1, MSG_PEEK);
        if (count == SOCKET_ERROR && WSAGetLastError() != WSAEWOULDBLOCK) return Fail(WSAGetLastError());
        if (count != 0) return;
        // Under Wine reading takes a connection that was dropped for one that was ended; sending does not.
        if (send(m_socket.Get(), "", 0, 0) == SOCKET_ERROR && WSAGetLastError() == WSAECONNRESET)
            return Fail(WSAECONNRESET);
        m_state = ConnectionState::kEndedByPeer;
    }

    std::shared_ptr<Lookup> m_lookup;
    const ADDRINFOW* m_next = nullptr;  // in m_lookup
    Socket m_socket;
    ConnectionState m_state = ConnectionState::kConnecting;
    int m_error = 0;
};

class WindowsNetwork : public Network {
public:
    WindowsNetwork() {
        WSADATA data;
        m_started = WSAStartup(MAKEWORD(2, 2), &data) == 0;
    }
    ~WindowsNetwork() override {
        if (m_started) WSACleanup();
    }
    WindowsNetwork(const WindowsNetwork&) = delete;
    WindowsNetwork& operator=(const WindowsNetwork&) = delete;

    std::unique_ptr<Connection> Connect(const std::string& host, int port) override {
        return std::make_unique<WindowsConnection>(host, port);
    }

private:
    bool m_started;
};

}  // namespace

std::unique_ptr<Network> MakeNetwork() {
    return std::make_unique<WindowsNetwork>();
}

}  // namespace quirepress
