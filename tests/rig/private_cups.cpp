#include "rig/private_cups.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "base/numbers.h"
#include "base/path.h"
#include "platform/event_loop.h"
#include "platform/files.h"

namespace quirepress {

namespace fs = std::filesystem;

namespace {

constexpr int kPatience = 20'000;  // milliseconds, of the slowest machine
constexpr int kSlice = 5;
constexpr const char* kServerProgram = "/usr/sbin/cupsd";
constexpr const char* kServerParts = "/usr/lib/cups";

bool CanConnect(const sockaddr* address, socklen_t size) {
    const int probe = socket(address->sa_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool isTaken = connect(probe, address, size) == 0;
    close(probe);
    return isTaken;
}

sockaddr_in LoopbackAddress(int port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

int FreePort() {
    sockaddr_in address = LoopbackAddress(0);
    socklen_t size = sizeof address;
    const int probe = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    bind(probe, reinterpret_cast<sockaddr*>(&address), size);
    getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size);
    close(probe);
    return ntohs(address.sin_port);
}

// libcups looks for a program's home once, so there is one for all servers of a test program, from its start;
// nothing of the user's own printing is seen.
class OwnHome {
public:
    OwnHome() {
        setenv("HOME", m_folder.Path().c_str(), 1);
        for (const char* name : {"LPDEST", "PRINTER", "CUPS_SERVER"}) unsetenv(name);
    }
    const TemporaryFolder& Folder() const { return m_folder; }

private:
    TemporaryFolder m_folder;
};
const OwnHome g_ownHome;

void CopyExecutable(const fs::path& from, const fs::path& to) {
    fs::copy_file(from, to, fs::copy_options::overwrite_existing);
    fs::permissions(to, fs::perms(0755));
}

}  // namespace

PrivateCups::PrivateCups(Services& services, const PrivateCupsOptions& options) : m_services(services) {
    for (const char* folder :
         {"etc/ppd", "etc/ssl", "spool/tmp", "cache", "run/certs", "log", "out", "parts/backend"})
        fs::create_directories(m_folder.PathOf(folder));
    fs::permissions(m_folder.Path(), fs::perms(0755));
    // Started by root, the server lets an ordinary user run what it starts.
    for (const char* folder : {"spool", "spool/tmp", "cache", "out"})
        if (getuid() == 0) fs::permissions(m_folder.PathOf(folder), fs::perms(0777));
    fs::remove_all(g_ownHome.Folder().PathOf(".cups"));
    WriteConfiguration(options);
    PlaceBackends();
    EXPECT_TRUE(Start()) << m_folder.Read("log/error_log");
}

PrivateCups::~PrivateCups() {
    m_printers.clear();
    Kill();
}

void PrivateCups::WriteConfiguration(const PrivateCupsOptions& options) const {
    const auto path = [this](std::string_view name) { return m_folder.PathOf(name) + "\n"; };
    std::string places = "ServerRoot " + path("etc") + "RequestRoot " + path("spool") + "CacheDir " +
                         path("cache") + "StateDir " + path("run") + "TempDir " + path("spool/tmp") +
                         "ServerBin " + path("parts") + "ServerKeychain " + path("etc/ssl") + "AccessLog " +
                         path("log/access_log") + "ErrorLog " + path("log/error_log") + "PageLog " +
                         path("log/page_log") + "DataDir /usr/share/cups\nFileDevice Yes\nPrintcap\n";
    places += getuid() == 0 ? "User lp\nGroup lp\nSystemGroup root lpadmin\n"
                            : "User " + std::to_string(getuid()) + "\nGroup " + std::to_string(getgid()) +
                                  "\nSystemGroup sys\n";
    m_folder.Write("etc/cups-files.conf", places);
    m_folder.Write("etc/cupsd.conf",
                   "Listen " + path("run/cups.sock") + "MaxJobs " + std::to_string(options.maxJobs) +
                       "\nDirtyCleanInterval " + std::to_string(options.dirtyCleanInterval) +
                       "\nErrorPolicy " + std::string(options.errorPolicy) +
                       "\nLogLevel warn\nMaxLogSize 0\nBrowsing No\nWebInterface No\nDefaultAuthType None\n"
                       "DefaultEncryption Never\nPreserveJobFiles No\nJobKillDelay 1\nJobRetryInterval 1\n"
                       "<Location />\nOrder allow,deny\nAllow all\n</Location>\n<Policy default>\n"
                       "JobPrivateAccess all\nJobPrivateValues none\n"
                       "<Limit All>\nOrder deny,allow\nAllow all\n</Limit>\n</Policy>\n");
}

void PrivateCups::PlaceBackends() const {
    for (const char* part : {"cgi-bin", "daemon", "driver", "filter", "monitor", "notifier"})
        fs::create_symlink(fs::path(kServerParts) / part, m_folder.PathOf("parts") + "/" + part);
    for (const char* backend : {"ipp", "socket"})
        fs::create_symlink(fs::path(kServerParts) / "backend" / backend,
                           m_folder.PathOf("parts/backend") + "/" + backend);
    CopyExecutable(fs::path(QUIREPRESS_RIG) / "capture_backend.sh", m_folder.PathOf("parts/backend/capture"));
    CopyExecutable(fs::path(QUIREPRESS_RIG) / "record_document.sh", m_folder.PathOf("record"));
    // Security modules that confine the server know it by its path.
    CopyExecutable(kServerProgram, m_folder.PathOf("cupsd"));
}

std::string PrivateCups::ReadUserOptions() const {
    return g_ownHome.Folder().Read(".cups/lpoptions");
}

std::vector<std::pair<std::string, std::string>> PrivateCups::Environment() const {
    return {{"CUPS_SERVER", Address()}};
}

void PrivateCups::UseHere() const {
    setenv("CUPS_SERVER", Address().c_str(), 1);
}

std::unique_ptr<ChildProcess> PrivateCups::Launch(
    std::vector<std::string> arguments, std::vector<std::pair<std::string, std::string>> environment) {
    ProcessRequest request;
    request.arguments = std::move(arguments);
    request.environment = std::move(environment);
    request.pipes = true;
    int error = 0;
    auto process = m_services.processes->Start(request, error);
    EXPECT_NE(process, nullptr) << request.arguments[0] << ": error " << error;
    return process;
}

bool PrivateCups::Answers() const {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::string path = Address();
    if (path.size() >= sizeof address.sun_path) return false;
    std::memcpy(address.sun_path, path.c_str(), path.size());
    return CanConnect(reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

bool PrivateCups::Start() {
    m_server = Launch({m_folder.PathOf("cupsd"), "-f", "-c", m_folder.PathOf("etc/cupsd.conf"), "-s",
                       m_folder.PathOf("etc/cups-files.conf")},
                      {});
    for (int waited = 0; m_server && m_server->IsRunning() && waited < kPatience; waited += kSlice) {
        if (Answers()) return true;
        m_services.loop->Wait(kSlice);
    }
    return false;
}

void PrivateCups::Stop() {
    if (!m_server) return;
    kill(static_cast<pid_t>(m_server->Id()), SIGTERM);
    EXPECT_TRUE(WaitForProcess(*m_services.loop, *m_server, kPatience));
    m_server.reset();
}

void PrivateCups::Kill() {
    m_server.reset();
}

void PrivateCups::Freeze(bool isFrozen) {
    kill(static_cast<pid_t>(m_server->Id()), isFrozen ? SIGSTOP : SIGCONT);
}

int PrivateCups::RunTool(std::vector<std::string> arguments, std::string* output) {
    const std::string name = arguments[0];
    const auto process = Launch(std::move(arguments), Environment());
    if (!process) return -1;
    process->CloseInput();
    std::string text;
    std::string errors;
    for (bool isOpen = true; isOpen; m_services.loop->Wait(isOpen ? 1 : 0)) {
        const bool hasOutput = process->ReadOutput(text);
        isOpen = process->ReadErrors(errors) || hasOutput;
    }
    const bool hasEnded = WaitForProcess(*m_services.loop, *process, kPatience);
    const int code = hasEnded ? process->ExitCode() : -1;
    EXPECT_EQ(code, 0) << name << ": " << errors;
    if (output != nullptr) *output = text;
    return code;
}

void PrivateCups::AddRawQueue(const std::string& name) {
    AddQueue(name, "capture:" + m_folder.PathOf("out"));
}

void PrivateCups::AddQueue(const std::string& name, const std::string& device) {
    RunTool({"lpadmin", "-p", name, "-E", "-v", device});
}

void PrivateCups::AddDriverQueue(const std::string& name) {
    RunTool({"lpadmin", "-p", name, "-E", "-v", "file:/dev/null", "-P",
             std::string(QUIREPRESS_RIG) + "/driver.ppd"});
}

void PrivateCups::AddClass(const std::string& name, const std::vector<std::string>& members) {
    for (const std::string& member : members) RunTool({"lpadmin", "-p", member, "-c", name});
    RunTool({"cupsaccept", name});
    Resume(name);
}

void PrivateCups::AddNetworkPrinter(const std::string& name) {
    const std::string records = m_folder.PathOf("records-" + name);
    fs::create_directories(records);
    const int port = FreePort();
    m_printers.push_back(Launch({"ippeveprinter", "-r", "off", "-n", "localhost", "-p", std::to_string(port),
                                 "-K", m_folder.PathOf("etc/ssl"), "-2", "-s", "10,10", "-f",
                                 "application/pdf,image/jpeg,image/pwg-raster,image/urf", "-d", records, "-c",
                                 m_folder.PathOf("record"), name},
                                {{"LD_PRELOAD", QUIREPRESS_NO_DISCOVERY}, {"RECORD_FOLDER", records}}));
    const sockaddr_in address = LoopbackAddress(port);
    int waited = 0;
    for (; waited < kPatience; waited += kSlice) {
        if (CanConnect(reinterpret_cast<const sockaddr*>(&address), sizeof address)) break;
        m_services.loop->Wait(kSlice);
    }
    ASSERT_LT(waited, kPatience) << "ippeveprinter does not answer";
    RunTool({"lpadmin", "-p", name, "-E", "-v", "ipp://localhost:" + std::to_string(port) + "/ipp/print",
             "-m", "everywhere"});
    // The server goes on asking the printer what it can when the tool has ended.
    std::string options;
    for (waited = 0; waited < kPatience && options.find("IPP Everywhere") == std::string::npos;
         waited += kSlice) {
        m_services.loop->Wait(kSlice);
        RunTool({"lpoptions", "-p", name}, &options);
    }
    ASSERT_LT(waited, kPatience) << "the queue of " << name << " has no driver";
}

std::vector<CapturedJob> PrivateCups::Captured() const {
    std::vector<FolderEntry> entries;
    m_services.files->ListFolder(m_folder.PathOf("out"), entries);
    std::vector<CapturedJob> jobs;
    for (const FolderEntry& entry : entries) {
        if (FileExtension(entry.name) != ".data") continue;
        const std::string start = "out/" + std::string(TitleWithoutExtension(entry.name));
        jobs.push_back(
            {ParseLong(entry.name), m_folder.Read(start + ".title"), m_folder.Read(start + ".data")});
    }
    std::sort(jobs.begin(), jobs.end(),
              [](const CapturedJob& left, const CapturedJob& right) { return left.id < right.id; });
    return jobs;
}

bool PrivateCups::AwaitCaptured(std::size_t count) {
    for (int waited = 0; waited < kPatience; waited += kSlice) {
        std::vector<FolderEntry> entries;
        m_services.files->ListFolder(m_folder.PathOf("out"), entries);
        const auto isData = [](const FolderEntry& entry) { return FileExtension(entry.name) == ".data"; };
        if (static_cast<std::size_t>(std::count_if(entries.begin(), entries.end(), isData)) >= count)
            return true;
        m_services.loop->Wait(kSlice);
    }
    return false;
}

std::string PrivateCups::AwaitRecord(const std::string& printer, int number) {
    const std::string name = "records-" + printer + "/" + std::to_string(number) + ".values";
    for (int waited = 0; waited < kPatience && !m_folder.Has(name); waited += kSlice)
        m_services.loop->Wait(kSlice);
    return m_folder.Read(name);
}

}  // namespace quirepress
