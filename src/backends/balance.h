#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "backends/balance_check.h"
#include "backends/unseen_jobs.h"
#include "settings/balance_options.h"

namespace quirepress {

class DebugLog;
class EventLoop;
class Files;
class PrinterSelection;
class Prompts;
class Spooler;
struct PrinterInfo;

struct BalanceChoice {
    int index = 0;        // 1 to 10; 0: no printer has room, and what is current stays
    std::string printer;  // where the document goes: with a settings file, as that says; empty for index 0
    std::string prs;      // printer settings file; empty: make the printer the default one
    bool isNoneThere = false;  // none of the printers can be used at all
};

// Spreads the documents of a run over the printers of the options.
class PrinterBalance {
public:
    PrinterBalance(Spooler& spooler, Files& files, EventLoop& loop, Prompts& prompts, DebugLog& debugLog,
                   const BalanceOptions& options);

    // The printer for the next document: the first of the allowed ones whose queue has room, or in turn. The
    // limit is that of the queue before the document; one that becomes several jobs stays together. A
    // printer that is paused, stopped or offline is taken only where all are; one whose queue cannot be read
    // never. One that does not exist, or whose settings file can't be used, is told once. Changes nothing.
    // May pump.
    BalanceChoice Choose(BalancedSet allowed = BalancedSet().set());
    // Where none has room: the one used last if it is allowed, else the first of them. Index 0 where all are
    // allowed and none was used. May pump.
    BalanceChoice ChooseWithoutRoom(BalancedSet allowed);

    // A document was accepted as this job (0: its id is not known). Until a listing shows the job, or has
    // had time to, it counts as one of the printer's queue.
    void NoteSent(const BalanceChoice& choice, std::int64_t jobId);
    // A document could not be printed there: where they take turns, the next one gets the next.
    void NoteFailed(const BalanceChoice& choice);
    // The job was seen in the queue, or is known to have left it.
    void NoteSeen(const BalanceChoice& choice, std::int64_t jobId);

private:
    BalanceChoice ChoiceOf(std::size_t at, const BalancedPrinter& printer);
    bool IsThere(const std::vector<PrinterInfo>& printers, const BalanceChoice& choice);
    void TellUnusable(const BalanceChoice& choice, const std::string& why);
    bool HasRoom(const std::string& printer, int limit);
    bool IsReady(const std::vector<PrinterInfo>& printers, const std::string& name);

    Spooler& m_spooler;
    Files& m_files;
    EventLoop& m_loop;
    Prompts& m_prompts;
    DebugLog& m_debugLog;
    const BalanceOptions& m_options;
    UnseenJobs m_unseen;
    int m_lastUsed = 0;    // index
    std::set<int> m_told;  // indexes of printers that can't be used
};

// Loads the settings file of the choice, or makes its printer the default one; nothing for index 0. 0, or -1
// with `message`. May pump.
int UseBalancedPrinter(const BalanceChoice& choice, PrinterSelection& selection, Prompts& prompts,
                       std::string& message);

}  // namespace quirepress
