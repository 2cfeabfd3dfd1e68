#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quirepress {

class Application;
class Context;
class ProgressLine;

// A job of which nobody knows whether it came out, until somebody has looked at the printer and decided.
struct UnknownJob {
    std::string printer;
    std::int64_t id;
    std::string document;
    std::string statusText;  // what is known
    bool isTold;             // by an earlier program
};

struct DeliveryReport {
    int jobsLeft = 0;                 // still in the queues
    bool wasStopped = false;          // by Ctrl-C
    bool hasStalled = false;          // given up, since nothing moved any more
    std::vector<UnknownJob> unknown;  // of those left
    std::vector<std::string> lines;   // for people: what waits, and why
};

// The embedded spooler delivers while its program runs: pumps until its queues are empty, or only hold jobs
// that wait for a printer. A printer that takes nothing for as long as --stall-limit says ends the waiting,
// and all delivering, too. Nothing to do for a print system with a server of its own.
DeliveryReport DeliverJobs(Context& context, Application& application, ProgressLine& progress);

// Those of which nobody was told yet: into the error log and the mail about errors, as far as these are on.
// How many they are.
int RecordUnknownJobs(Application& application, const std::vector<UnknownJob>& jobs);

// The folder into which a printer of the embedded spooler has put all its jobs; empty for any other printer,
// and while jobs wait.
std::string OutputFolderOf(Application& application, const std::string& printer);

}  // namespace quirepress
