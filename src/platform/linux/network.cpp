#include "platform/network.h"

#include <linux/sockios.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstring>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "base/text.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/make_services.h"

namespace quirepress {

namespace {

struct SocketAddress {
    sockaddr_storage bytes = {};
    socklen_t size = 0;
};

// A look-up of a host's addresses. The helper thread shares it and may outlive everybody else.
struct Lookup {
    std::string host;
    std::string port;
    std::vector<SocketAddress> addresses;
    int error = 0;
    std::atomic<bool> finished = false;  // the thread's last write
};

void LookUp(Lookup& lookup, int flags) {
    addrinfo hints = {};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = flags | AI_NUMERICSERV;
    addrinfo* list = nullptr;
    lookup.error = getaddrinfo(lookup.host.c_str(), lookup.port.c_str(), &hints, &list);
    if (lookup.error != 0) return;
    for (const addrinfo* item = list; item != nullptr; item = item->ai_next) {
        SocketAddress address;
        if (item->ai_addrlen > sizeof address.bytes) continue;
        std::memcpy(&address.bytes, item->ai_addr, item->ai_addrlen);
        address.size = item->ai_addrlen;
        lookup.addresses.push_back(address);
    }
    freeaddrinfo(list);
}

// The system's look-up of a name waits for servers, so it is done beside the program's one thread.
std::shared_ptr<Lookup> StartLookup(const std::string& host, int port) {
    auto lookup = std::make_shared<Lookup>();
    lookup->host = host;
    lookup->port = std::to_string(port);
    LookUp(*lookup, AI_NUMERICHOST);
    lookup->finished = lookup->error != EAI_NONAME;
    if (lookup->finished) return lookup;
    // Signals are the main thread's: a helper starts with all of them blocked.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    try {
        std::thread([lookup] {
            LookUp(*lookup, 0);
            lookup->finished = true;
        }).detach();
    } catch (const std::system_error&) {
        lookup->error = EAI_AGAIN;
        lookup->finished = true;
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return lookup;
}

// The system's words as a part of a sentence.
std::string SentencePart(const char* words) {
    std::string text = words;
    if (!text.empty()) text[0] = ToLowerAscii(text.substr(0, 1))[0];
    return text;
}

class TcpConnection : public Connection {
public:
    TcpConnection(const std::string& host, int port) {
        if (host.empty() || host.find('\0') != std::string::npos || port < 1 || port > 65535) {
            Fail("the address is none");
            return;
        }
        m_lookup = StartLookup(host, port);
    }

    ConnectionState State() override {
        if (m_state == ConnectionState::kConnecting && m_lookup && m_lookup->finished) TakeAddresses();
        if (m_state == ConnectionState::kConnecting && m_socket.IsOpen()) CheckConnected();
        if (m_state != ConnectionState::kConnecting && m_socket.IsOpen()) CheckPeer();
        return m_state;
    }

    std::int64_t Send(const void* data, std::size_t size) override {
        if (!IsUsable()) return WouldWait() ? 0 : -1;
        const ssize_t sent =
            RetryInterrupted([&] { return send(m_socket.Value(), data, size, MSG_NOSIGNAL | MSG_DONTWAIT); });
        return sent >= 0 ? sent : JudgeError();
    }

    std::int64_t Receive(std::string& data) override {
        if (!IsUsable()) return WouldWait() ? 0 : -1;
        std::array<char, 16'384> bytes;
        const ssize_t count = RetryInterrupted(
            [&] { return recv(m_socket.Value(), bytes.data(), bytes.size(), MSG_DONTWAIT); });
        if (count > 0) data.append(bytes.data(), static_cast<std::size_t>(count));
        if (count == 0) m_state = ConnectionState::kEndedByPeer;
        if (count == 0) return -1;
        return count > 0 ? count : JudgeError();
    }

    void EndSending() override {
        if (m_socket.IsOpen()) shutdown(m_socket.Value(), SHUT_WR);
    }

    std::int64_t UnacknowledgedBytes() override {
        int bytes = 0;
        return m_socket.IsOpen() && ioctl(m_socket.Value(), SIOCOUTQ, &bytes) == 0 ? bytes : -1;
    }

    std::string ErrorText() override { return m_error; }

private:
    // The peer that has ended its own sending may still read.
    bool IsUsable() {
        const ConnectionState state = State();
        return state == ConnectionState::kOpen || state == ConnectionState::kEndedByPeer;
    }
    bool WouldWait() const { return m_state == ConnectionState::kConnecting; }

    void TakeAddresses() {
        const std::shared_ptr<Lookup> lookup = std::exchange(m_lookup, nullptr);
        if (lookup->error != 0) {
            Fail(SentencePart(gai_strerror(lookup->error)));
            return;
        }
        m_addresses = std::move(lookup->addresses);
        TryNextAddress(0);
    }

    // `error` is that of the address before.
    void TryNextAddress(int error) {
        while (m_next < m_addresses.size()) {
            const SocketAddress& address = m_addresses[m_next++];
            m_socket =
                Descriptor(socket(address.bytes.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
            if (m_socket.IsOpen()) {
                const auto* const target = reinterpret_cast<const sockaddr*>(&address.bytes);
                if (connect(m_socket.Value(), target, address.size) == 0 || errno == EINPROGRESS) return;
            }
            error = errno;
        }
        Fail(error == 0 ? "the host has no address" : SentencePart(std::strerror(error)));
    }

    void CheckConnected() {
        pollfd ready = {m_socket.Value(), POLLOUT, 0};
        if (poll(&ready, 1, 0) <= 0) return;
        int error = 0;
        socklen_t size = sizeof error;
        getsockopt(m_socket.Value(), SOL_SOCKET, SO_ERROR, &error, &size);
        if (error == 0) {
            m_state = ConnectionState::kOpen;
        } else {
            TryNextAddress(error);
        }
    }

    // What the peer has sent before it ended is still to be read, and comes first.
    void CheckPeer() {
        char byte = 0;
        const ssize_t count =
            RetryInterrupted([&] { return recv(m_socket.Value(), &byte, 1, MSG_PEEK | MSG_DONTWAIT); });
        if (count == 0) m_state = ConnectionState::kEndedByPeer;
        if (count == 0) CheckReset();
        if (count < 0) JudgeError();
    }

    // Behind the peer's end, reading does not tell of a reset any more.
    void CheckReset() {
        int error = 0;
        socklen_t size = sizeof error;
        getsockopt(m_socket.Value(), SOL_SOCKET, SO_ERROR, &error, &size);
        if (error != 0) Fail(SentencePart(std::strerror(error)));
    }

    // After a failed call: 0 when it would only have waited, else -1 and the end of the connection.
    std::int64_t JudgeError() {
        if (errno == EAGAIN || errno == EWOULDBLOCK) return 0;
        Fail(SentencePart(std::strerror(errno)));
        return -1;
    }

    void Fail(std::string text) {
        m_state = ConnectionState::kFailed;
        m_error = std::move(text);
        m_socket.Close();
    }

    ConnectionState m_state = ConnectionState::kConnecting;
    std::shared_ptr<Lookup> m_lookup;
    std::vector<SocketAddress> m_addresses;
    std::size_t m_next = 0;
    Descriptor m_socket;
    std::string m_error;
};

class LinuxNetwork : public Network {
public:
    std::unique_ptr<Connection> Connect(const std::string& host, int port) override {
        return std::make_unique<TcpConnection>(host, port);
    }
};

}  // namespace

std::unique_ptr<Network> MakeNetwork() {
    return std::make_unique<LinuxNetwork>();
}

}  // namespace quirepress
