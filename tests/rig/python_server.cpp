#include "rig/python_server.h"

#include <gtest/gtest.h>

#include "base/numbers.h"
#include "platform/event_loop.h"

namespace quirepress {

namespace {

constexpr int kPatience = 60'000;  // milliseconds, of the slowest machine

std::unique_ptr<ChildProcess> Launch(Services& services, std::vector<std::string> arguments) {
    ProcessRequest request;
    request.arguments = std::move(arguments);
    request.pipes = true;
    int error = 0;
    auto process = services.processes->Start(request, error);
    EXPECT_NE(process, nullptr) << request.arguments[0] << ": error " << error;
    return process;
}

}  // namespace

PythonServer::PythonServer(Services& services, const std::string& script,
                           const std::vector<std::string>& arguments) {
    std::vector<std::string> line = {"/usr/bin/python3", std::string(QUIREPRESS_RIG) + "/" + script};
    line.insert(line.end(), arguments.begin(), arguments.end());
    m_process = Launch(services, std::move(line));
    std::string output;
    const long long start = services.loop->MonotonicMilliseconds();
    while (m_process && m_process->ReadOutput(output) && output.find('\n') == std::string::npos &&
           services.loop->MonotonicMilliseconds() - start < kPatience)
        services.loop->Wait(5);
    m_port = ParseLong(output);
    std::string errors;
    if (m_port == 0 && m_process) m_process->ReadErrors(errors);
    EXPECT_NE(m_port, 0) << script << ": " << errors;
}

TestMailServer::TestMailServer(Services& services, std::vector<std::string> options)
    : m_server(services, "mail_server.py", WithFolder(m_folder, std::move(options))) {}

std::vector<std::string> TestMailServer::WithFolder(const TemporaryFolder& folder,
                                                    std::vector<std::string> options) {
    options.insert(options.begin(), folder.Path());
    return options;
}

std::string MakeCertificate(Services& services, const TemporaryFolder& folder) {
    const std::string path = folder.PathOf("certificate.pem");
    const auto process =
        Launch(services, {"/usr/bin/openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2",
                          "-subj", "/CN=localhost", "-addext", "subjectAltName=DNS:localhost", "-keyout",
                          path, "-out", folder.PathOf("public.pem")});
    if (!process) return {};
    process->CloseInput();
    EXPECT_TRUE(WaitForProcess(*services.loop, *process, kPatience));
    return folder.Write("certificate.pem", folder.Read("certificate.pem") + folder.Read("public.pem"));
}

}  // namespace quirepress
