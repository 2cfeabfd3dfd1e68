#pragma once

#include <string>
#include <vector>

namespace quirepress {

class Application;
class Context;
class ProgressLine;

struct DeliveryReport {
    int jobsLeft = 0;                // still in the queues
    bool wasStopped = false;         // by Ctrl-C
    bool hasStalled = false;         // given up, since nothing moved any more
    int unknown = 0;                 // of those left: jobs of which nobody knows whether they came out
    std::vector<std::string> lines;  // for people: what waits, and why
};

// The embedded spooler delivers while its program runs: pumps until its queues are empty, or only hold jobs
// that wait for a printer. A printer that takes nothing for as long as --stall-limit says ends the waiting,
// and all delivering, too. Nothing to do for a print system with a server of its own.
DeliveryReport DeliverJobs(Context& context, Application& application, ProgressLine& progress);

// Of all printers, and as long as nobody has decided about them.
int CountJobsOfUnknownOutcome(Application& application);

// The folder into which a printer of the embedded spooler has put all its jobs; empty for any other printer,
// and while jobs wait.
std::string OutputFolderOf(Application& application, const std::string& printer);

}  // namespace quirepress
