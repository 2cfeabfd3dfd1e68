#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "core/run_way.h"

namespace quirepress {

class Clock;
class DebugLog;
class EventLoop;
class Files;
class Machine;
class PrinterSelection;
class PrintList;
class ScratchFolder;
class Spooler;
struct GeneralOptions;
struct SeparatorOptions;

struct RunSeparatorServices {
    PrintList& list;
    Files& files;
    Clock& clock;
    Machine& machine;
    EventLoop& loop;
    DebugLog& debugLog;
    Spooler& spooler;
    const PrinterSelection& selection;
    const GeneralOptions& options;
    const SeparatorOptions& separators;
    std::string workingFolder;
};

// The separators of a run: when one is due, and what it is.
class RunSeparators {
public:
    enum class Place { kBefore, kAfter };

    explicit RunSeparators(RunSeparatorServices services);
    ~RunSeparators();

    // Each walk over the list begins with a folder that nothing was printed from.
    void BeginWalk() { m_folder.clear(), m_hasFolder = false, m_headed = {}; }
    // Whether the options want one there without a row that asks for it; `row` is a document of the list that
    // has its turn on this printer, and afterwards has had it. The folder's last document may have failed:
    // what came before it still gets its separator.
    bool IsDueBefore(int row, const std::string& printer) const;
    bool IsDueAfter(int row, bool isPrinted) const;
    // A separator came out there, for the document behind it; until that is printed, too, others of its
    // folder may stand behind it.
    void NotePrintedBefore(int row, const std::string& printer);
    void NotePrinted(int row);

    // Makes `item` the document of the separator of this row, which is a document or a separator row; its
    // printer and its ticket may be others. False when there is none, with the reason.
    bool Prepare(Place place, int row, WayFeedback& feedback, RunItem& item, std::string& message);
    // Until the separator's job has left the queue, so that nothing overtakes it; where the options want it,
    // and not longer than they allow. May pump.
    void AwaitClear(const RunItem& item, std::int64_t jobId, const WayFeedback& feedback);

private:
    struct Set;

    Set SetOf(Place place) const;
    bool IsWanted(const Set& set, int row) const;
    std::string FolderOfRow(int row) const;
    std::string SeparatorPath(const Set& set);
    std::vector<int> RowsOfSet(Place place, int row, const Set& set) const;
    int NextDocument(int row, int step) const;
    bool IsQueued(const std::string& printer, std::int64_t jobId);

    RunSeparatorServices m_services;
    std::string m_folder;  // of the document that was printed last
    bool m_hasFolder = false;
    // A folder that has its separator, and of which nothing has come out behind it.
    struct Headed {
        std::string folder;
        std::set<std::string> printers;  // that have printed the separator; none: there is no such folder
    };
    Headed m_headed;
    std::unique_ptr<ScratchFolder> m_scratch;  // of generated files without a name: another run has its own
    std::set<std::string> m_slowPrinters;  // that a separator did not leave in time: nobody waits there again
};

constexpr std::string_view kSeparatorFailed = "Error spooling seperator page file:";

}  // namespace quirepress
