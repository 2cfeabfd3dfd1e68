#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/files.h"

namespace quirepress {

class Clock;
class DebugLog;
class PdfPages;
class PrintList;
struct GeneralOptions;

struct AppendServices {
    PrintList& list;
    Files& files;
    Clock& clock;
    DebugLog& debugLog;
    PdfPages& pdfPages;
    const GeneralOptions& options;
    std::string workingFolder;
};

struct AppendOutcome {
    enum class End {
        kNothing,     // there are no two PDFs to merge
        kMerged,      // the merged file is a row
        kNotWritten,  // the list is as it was, and prints as it is
        kStopped      // likewise
    };
    // A row that could not be merged; its status says so.
    struct Failure {
        std::string path;
        std::string error;
    };

    End end = End::kNothing;
    std::vector<Failure> failures;
    std::string path;                // of the merged file
    std::unique_ptr<FileLock> lock;  // on the merged file, against other programs; for as long as it is used
};

// Merges the ticked PDFs of the list, in its order, into "QPRMerged_..." in the temporary folder. That file
// becomes a ticked row where the first of them stands, to be deleted once it is printed. The others keep
// their places, unticked, their status "Done Append"; a row with a page range gives only these pages. One
// that can't be merged gets a status that begins with "Error appending file:", is unticked too, and its mark
// says that it failed. The list may change meanwhile.
//
// `keepGoing` is asked before each file. May pump.
AppendOutcome AppendPdfs(const AppendServices& services, const std::function<bool()>& keepGoing);

// The merged file of a run that is taken up; empty when it had none.
AppendOutcome TakeUpMergedFile(const AppendServices& services, const std::string& path);

// At the end of a run; a file that is still there waits for the next run, or for "qpr restore".
void ReleaseMergedFile(Files& files, AppendOutcome& outcome);

// At the end of a run: the rows that AppendPdfs has unticked are ticked again, for the next run.
// The row of the merged file; -1: there is none.
int FindMergedRow(const PrintList& list, std::string_view mergedFile);
// Of a run that was stopped before the last copy of its merged file: the documents in it came out as often as
// it did. Answers how many they are.
struct AppendedCount {
    int done = 0;
    int failed = 0;
};
AppendedCount ShareMergedCopies(PrintList& list, std::string_view mergedFile);
void TickAppendedRows(PrintList& list);

// At the begin of a run: the rows that were merged files of earlier runs leave the list, with their files.
// What programs that died have left in the temporary folder is gone after a day; until then a cut-off run
// may be finished with it.
void DropMergedRows(const AppendServices& services);

}  // namespace quirepress
