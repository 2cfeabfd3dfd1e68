#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fakes/temporary_folder.h"
#include "platform/processes.h"
#include "platform/services.h"

namespace quirepress {

struct PrivateCupsOptions {
    int maxJobs = 0;                             // 0: any number
    int dirtyCleanInterval = 30;                 // seconds until the server's state is written; 0: at once
    std::string_view errorPolicy = "abort-job";  // what becomes of a job whose backend fails
};

// A job that came out of a captured queue.
struct CapturedJob {
    int id = 0;
    std::string title;
    std::string bytes;  // all copies, one behind the other
};

// A CUPS server of our own, reached by a socket in a folder of its own: any number of them run beside each
// other and beside the system's. Its state outlives a stop or a kill, and ends with this object.
class PrivateCups {
public:
    explicit PrivateCups(Services& services, const PrivateCupsOptions& options = {});
    ~PrivateCups();
    PrivateCups(const PrivateCups&) = delete;
    PrivateCups& operator=(const PrivateCups&) = delete;

    bool Start();                // true once it answers
    void Stop();                 // as the system does it: it writes its state
    void Kill();                 // with all that it has started, from one moment to the next
    void Freeze(bool isFrozen);  // it takes connections and does nothing

    std::string Address() const { return m_folder.PathOf("run/cups.sock"); }
    // What programs need in their environment to use it, and no other.
    std::vector<std::pair<std::string, std::string>> Environment() const;
    void UseHere() const;                 // this program itself, for good
    std::string ReadUserOptions() const;  // what lpoptions has saved

    // Printers. What fails ends the test that asked.
    void AddRawQueue(const std::string& name);  // captured
    void AddQueue(const std::string& name, const std::string& device);
    // One with a driver, trays "Upper" and "Photo" among it; what it prints is thrown away.
    void AddDriverQueue(const std::string& name);
    void AddClass(const std::string& name, const std::vector<std::string>& members);
    // A network printer (a program of its own) and its queue; RecordOf tells what reached it.
    void AddNetworkPrinter(const std::string& name);
    void Pause(const std::string& name) { RunTool({"cupsdisable", "-r", "Paused by the test", name}); }
    void Resume(const std::string& name) { RunTool({"cupsenable", name}); }
    void Reject(const std::string& name) { RunTool({"cupsreject", name}); }
    void Remove(const std::string& name) { RunTool({"lpadmin", "-x", name}); }
    int RunTool(std::vector<std::string> arguments, std::string* output = nullptr);

    // How the capturing backend ends from the next job on: "code=1", as the shell assigns it.
    void SetBehaviour(std::string_view assignment) { m_folder.Write("out/behaviour", assignment); }
    std::vector<CapturedJob> Captured() const;  // by their ids
    bool AwaitCaptured(std::size_t count);
    // Of the n-th document that a network printer got: the values that it was printed with
    // ("IPP_COPIES=2"...), waited for.
    std::string AwaitRecord(const std::string& printer, int number = 1);
    std::string ErrorLog() const { return m_folder.Read("log/error_log"); }
    const TemporaryFolder& Folder() const { return m_folder; }

private:
    void WriteConfiguration(const PrivateCupsOptions& options) const;
    void PlaceBackends() const;
    bool Answers() const;
    std::unique_ptr<ChildProcess> Launch(std::vector<std::string> arguments,
                                         std::vector<std::pair<std::string, std::string>> environment);

    Services& m_services;
    TemporaryFolder m_folder;
    std::unique_ptr<ChildProcess> m_server;
    std::vector<std::unique_ptr<ChildProcess>> m_printers;
};

}  // namespace quirepress
