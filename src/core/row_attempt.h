#pragma once

#include <memory>
#include <optional>
#include <string>

#include "backends/printer_selection.h"
#include "core/job_wait.h"
#include "core/row_at_work.h"
#include "core/run_separators.h"
#include "core/run_way.h"

namespace quirepress {

// Prints the row at work, with the separators around it: fetches it where it is a download, chooses a
// balanced printer, offers it to the ways in their order, and waits for its job.
class RowAttempt {
public:
    RowAttempt(const PrintRunServices& services, const RunWays& ways, RowAtWork& row, bool isBalanced);

    // Once more where nothing came out and the options say so. `item` becomes the document that a download
    // has brought. May pump.
    WayResult Print(RunItem& item);
    // The system's default printer is that of the run again.
    void ForgetMovedDefault() { m_movedDefault.clear(); }
    // What follows the row, which has ended so, however it did. May pump.
    void PrintSeparatorAfter(const WayResult& result);
    // Of what was chosen for the row nothing is left.
    void EndRow();

private:
    bool MayRetry(const RunItem& item, const WayResult& result) const;
    WayResult Attempt(RunItem& item);
    WayResult Download(RunItem& item);
    WayResult AttemptBalanced(RunItem item);
    WayResult AttemptDocument(const RunItem& item);
    WayResult PrintSeparator(RunSeparators::Place place);
    void PrintSeparatorBefore(const std::string& printer);
    void TellSeparator(const WayResult& result);
    WayResult OfferToWays(const RunItem& item);

    const PrintRunServices& m_services;
    const RunWays& m_ways;
    RowAtWork& m_row;
    bool m_isBalanced;
    JobWait m_jobWait;
    std::string m_separated;          // printer that has got the separator before the row
    bool m_hasToldSeparator = false;  // that one failed
    std::optional<PrinterSelection::Selected> m_listState;  // while a balanced printer is current
    // The system's default before a balanced printer became it; empty: it did not.
    std::string m_movedDefault;
};

}  // namespace quirepress
