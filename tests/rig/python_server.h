#pragma once

#include <memory>
#include <string>
#include <vector>

#include "fakes/temporary_folder.h"
#include "platform/processes.h"
#include "platform/services.h"

namespace quirepress {

// A server of this folder that runs as a program of its own, until this is destroyed.
class PythonServer {
public:
    PythonServer(Services& services, const std::string& script, const std::vector<std::string>& arguments);
    int Port() const { return m_port; }
    std::string Address() const { return "127.0.0.1:" + std::to_string(m_port); }

private:
    std::unique_ptr<ChildProcess> m_process;
    int m_port = 0;
};

// A mail server and what it has got.
class TestMailServer {
public:
    TestMailServer(Services& services, std::vector<std::string> options = {});
    int Port() const { return m_server.Port(); }
    std::string Message(int number) const { return m_folder.Read(std::to_string(number) + ".json"); }

private:
    static std::vector<std::string> WithFolder(const TemporaryFolder& folder,
                                               std::vector<std::string> options);
    TemporaryFolder m_folder;
    PythonServer m_server;
};

// The path of a certificate for "localhost" with its key, made anew in `folder`.
std::string MakeCertificate(Services& services, const TemporaryFolder& folder);

}  // namespace quirepress
