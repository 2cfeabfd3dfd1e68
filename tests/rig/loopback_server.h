#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace quirepress {

// A server on a loopback port that does with each connection what the test says, in a thread of its own. All
// are closed and over when this is destroyed; `serve` returns when its socket is shut down.
class LoopbackServer {
public:
    using Serve = std::function<void(int socket)>;
    explicit LoopbackServer(Serve serve);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    int Port() const { return m_port; }
    std::string Address() const { return "127.0.0.1:" + std::to_string(m_port); }
    int Connections() const { return m_connections; }

    // What `serve` may do.
    static void Swallow(int socket);          // reads until the end, answers nothing
    static void Stall(int socket);            // takes nothing, until the other side is gone
    static void Reset(int socket);            // the connection ends hard
    static std::string ReadAll(int socket);   // up to the end
    static std::string ReadHead(int socket);  // of an HTTP request, up to its empty line
    static void Say(int socket, const std::string& bytes);
    // Passes everything on between it and a server's socket. `loseAnswers`: while it is true, what that
    // server says is lost and the connection ends.
    static void PassOn(int socket, const std::string& path, const std::atomic<bool>& loseAnswers);

private:
    void Accept();

    Serve m_serve;
    int m_listener = -1;
    int m_port = 0;
    std::atomic<int> m_connections = 0;
    std::atomic<bool> m_isEnding = false;
    std::vector<int> m_sockets;
    std::vector<std::thread> m_servants;
    std::thread m_acceptor;
};

}  // namespace quirepress
