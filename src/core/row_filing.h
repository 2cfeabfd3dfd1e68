#pragma once

#include <vector>

#include "core/post_print.h"
#include "core/print_run.h"
#include "core/repeated_rows.h"

namespace quirepress {

class RowAtWork;

// The way of the file of a row that has come to its end: it is moved, copied or deleted as its row says.
class RowFiling {
public:
    // What could not be filed is counted in `summary`.
    RowFiling(const PrintRunServices& services, RowAtWork& row, RunSummary& summary);

    // Of the row at work, once, after its last copy. May pump.
    void FileRow();
    // The same of a row that a run which was cut off had printed: it may have filed it, too. May pump.
    void FileCutOffRow();

private:
    void File(bool mayBeCopied);
    void FileTogether(const std::vector<int>& rows, bool mayBeCopied);
    void FileAs(int row, PrintEnd end, bool mayBeCopied);

    const PrintRunServices& m_services;
    RowAtWork& m_row;
    RunSummary& m_summary;
    RepeatedRows m_repeated;
};

}  // namespace quirepress
