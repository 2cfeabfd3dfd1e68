#include "rig/loopback_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>

namespace quirepress {

namespace {

// False at the end of either.
bool PassOnce(int from, int to) {
    std::array<char, 65536> bytes = {};
    const ssize_t count = recv(from, bytes.data(), bytes.size(), 0);
    if (count <= 0) return false;
    return send(to, bytes.data(), static_cast<std::size_t>(count), MSG_NOSIGNAL) == count;
}

}  // namespace

LoopbackServer::LoopbackServer(Serve serve) : m_serve(std::move(serve)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    bind(m_listener, reinterpret_cast<sockaddr*>(&address), size);
    listen(m_listener, 16);
    getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size);
    m_port = ntohs(address.sin_port);
    m_acceptor = std::thread([this] { Accept(); });
}

LoopbackServer::~LoopbackServer() {
    m_isEnding = true;
    shutdown(m_listener, SHUT_RDWR);
    m_acceptor.join();
    for (const int socket : m_sockets) shutdown(socket, SHUT_RDWR);
    for (std::thread& servant : m_servants) servant.join();
    for (const int socket : m_sockets) close(socket);
    close(m_listener);
}

void LoopbackServer::Accept() {
    while (!m_isEnding) {
        const int socket = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0) continue;
        ++m_connections;
        m_sockets.push_back(socket);
        m_servants.emplace_back([this, socket] {
            m_serve(socket);
            shutdown(socket, SHUT_RDWR);
        });
    }
}

void LoopbackServer::Swallow(int socket) {
    ReadAll(socket);
}

void LoopbackServer::Stall(int socket) {
    pollfd end = {socket, POLLRDHUP, 0};
    poll(&end, 1, -1);
}

void LoopbackServer::Reset(int socket) {
    const linger atOnce = {1, 0};
    setsockopt(socket, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    // Unlinks the socket from its connection, which closing it later would do as softly as any other.
    sockaddr nowhere = {};
    nowhere.sa_family = AF_UNSPEC;
    connect(socket, &nowhere, sizeof nowhere);
}

std::string LoopbackServer::ReadAll(int socket) {
    std::string all;
    std::array<char, 65536> bytes = {};
    for (ssize_t count = 0; (count = recv(socket, bytes.data(), bytes.size(), 0)) > 0;)
        all.append(bytes.data(), static_cast<std::size_t>(count));
    return all;
}

std::string LoopbackServer::ReadHead(int socket) {
    std::string head;
    char byte = 0;
    while (head.find("\r\n\r\n") == std::string::npos && recv(socket, &byte, 1, 0) == 1) head += byte;
    return head;
}

void LoopbackServer::Say(int socket, const std::string& bytes) {
    send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

void LoopbackServer::PassOn(int socket, const std::string& path, const std::atomic<bool>& loseAnswers) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), std::min(path.size(), sizeof address.sun_path - 1));
    const int server = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    bool isOpen = connect(server, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    while (isOpen) {
        std::array<pollfd, 2> ends = {{{socket, POLLIN, 0}, {server, POLLIN, 0}}};
        poll(ends.data(), ends.size(), -1);
        if (ends[0].revents != 0) isOpen = PassOnce(socket, server);
        if (ends[1].revents != 0) isOpen = isOpen && !loseAnswers && PassOnce(server, socket);
    }
    close(server);
}

}  // namespace quirepress
