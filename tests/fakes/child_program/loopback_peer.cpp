#include "fakes/child_program/loopback_peer.h"

#include <chrono>
#include <cstdio>
#include <thread>

#ifdef _WIN32
#include <winsock2.h>
#else
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace quirepress {

namespace {

#ifdef _WIN32
using Socket = SOCKET;
using SizeOfAddress = int;
void CloseSocket(Socket socket) {
    closesocket(socket);
}
void StartSockets() {
    WSADATA data;
    WSAStartup(MAKEWORD(2, 2), &data);
}
#else
using Socket = int;
using SizeOfAddress = socklen_t;
void CloseSocket(Socket socket) {
    close(socket);
}
void StartSockets() {}
#endif

Socket AcceptOne() {
    const Socket listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    SizeOfAddress size = sizeof address;
    bind(listener, reinterpret_cast<sockaddr*>(&address), size);
    listen(listener, 1);
    getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    std::printf("%d\n", ntohs(address.sin_port));
    std::fflush(stdout);
    const Socket peer = accept(listener, nullptr, nullptr);
    CloseSocket(listener);
    return peer;
}

void ReadToEnd(Socket peer, bool echo) {
    char bytes[4096];
    long long total = 0;
    for (;;) {
        const int count = static_cast<int>(recv(peer, bytes, sizeof bytes, 0));
        if (count <= 0) break;
        total += count;
        if (echo) send(peer, bytes, static_cast<unsigned>(count), 0);
    }
    if (!echo) {
        const std::string text = std::to_string(total);
        send(peer, text.data(), static_cast<unsigned>(text.size()), 0);
    }
}

}  // namespace

int RunLoopbackPeer(const std::vector<std::string>& words) {
    StartSockets();
    const std::string what = words.at(0);
    const Socket peer = AcceptOne();
    if (what == "echo" || what == "count") ReadToEnd(peer, what == "echo");
    if (what == "greet") send(peer, "hello", 5, 0);
    if (what == "hold") std::this_thread::sleep_for(std::chrono::minutes(1));
    if (what == "reset") {
        const linger atOnce = {1, 0};
        setsockopt(peer, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&atOnce), sizeof atOnce);
    }
    CloseSocket(peer);
    return 0;
}

}  // namespace quirepress
