#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/list_item.h"

namespace quirepress {

class FileLock;
class Files;
class OutputFile;
class PrintList;

// What a run was asked for.
struct RunHead {
    std::string printer;
    int copies = 1;  // walks over the whole list
    bool isBalanced = false;
    std::string mergedFile = {};  // of the PDFs that were appended; empty: none
};

// A run that was cut off.
struct CutOffRun : RunHead {
    struct Row {
        std::array<std::string, kColumnCount> texts;
        RunMark mark;
        std::string jobFile;
        bool isEndLost = false;  // it has ended, and the disk has lost how
    };
    int copy = 1;               // the walk that was under way
    std::vector<Row> rows;      // those that were finished in this walk have its number as their mark's pass
    int rowAtWork = -1;         // begun and not finished: nobody can tell whether it came out
    std::string printerAtWork;  // that it went to; empty: it had not come so far
};

constexpr std::string_view kSnapshotFailed = "Can't write to SnapshotRestore.List file.";
constexpr std::string_view kSnapshotInUse =
    "Another run is under way in this working folder; this one can't be restored if it is cut off.";

// Nobody can tell whether this row came out. A setting that was at work just gets its turn again, one whose
// end was lost is applied again.
bool IsOfUnknownOutcome(const CutOffRun& cutOff, int row);

// The rows of the list are those of the run, from here on. What is of unknown outcome is said to be so, and
// has had its turn: a snapshot of this list keeps it, however often the run is cut off.
void PutRowsBack(PrintList& list, const CutOffRun& cutOff);

enum class SnapshotResult { kLoaded, kNone, kInUse, kDamaged };

// What a run leaves on the disk while it is under way, for the case that it is cut off:
// "SnapshotRestore.List" and "SnapshotRestore.Checkpoint" in the working folder, whose layouts stand in
// docs/formats-jobs.md.
class RunSnapshot {
public:
    RunSnapshot(Files& files, std::string_view workingFolder);
    ~RunSnapshot();
    RunSnapshot(const RunSnapshot&) = delete;
    RunSnapshot& operator=(const RunSnapshot&) = delete;

    // Starts anew, with the list as it is. Empty; else why this run goes without: it can't be written, or
    // another program's run in this folder has one.
    // Where it takes up one that was loaded, that one stays when this fails.
    std::string_view Create(PrintList& list, const RunHead& head, int copy);
    bool IsOn() const { return m_journal != nullptr; }
    // On the disk for good when it returns; `row` is an index of the list now. False when it can't be
    // written, which ends the snapshot: nothing of it stays.
    bool NoteBegun(PrintList& list, int row, int copy);
    // On the disk for good when the next row begins; before that, lost with the machine, not with the
    // program: the row then counts as begun.
    bool NoteFinished(PrintList& list, int row);
    // What the row that has begun names now, a file that was fetched for it. Likewise.
    void NoteFetched(PrintList& list, int row);
    // The printer that the row which has begun goes to. Likewise.
    void NotePrinter(PrintList& list, int row, std::string_view printer);
    // The row's file is where it is to be, or stays. Likewise: it is then looked for once more.
    void NoteFiled(PrintList& list, int row);
    // The row that has begun was stopped before anything came out: it waits again. The snapshot follows the
    // run no further.
    void PutBack(PrintList& list, int row, int copy);
    // The run has come to its end, so that there is nothing to restore.
    void Remove();

    // What the last run has left; `run` stays untouched unless it is loaded. From then on it is this
    // program's alone, until it is created anew, removed, discarded or left.
    SnapshotResult Load(CutOffRun& run);
    // It stays on the disk for another time.
    void Leave();
    // Forgets what the last run has left. False when it is in use, or can't be erased.
    bool Discard();

private:
    struct Checkpoint;

    bool TakeLock();
    bool WriteList(PrintList& list, int copy);
    bool WriteListBefore(PrintList& list, int row, int copy);
    bool WriteJournal(const std::string& line);
    void NoteText(PrintList& list, int row, std::string_view word, std::string_view text);
    bool FlushJournal();
    bool WriteCheckpoint(const Checkpoint& checkpoint);
    bool ReadCheckpoint(std::string_view name, Checkpoint& checkpoint) const;
    bool GiveUp();
    void EraseFiles();
    std::string PathOf(std::string_view name) const { return m_folder + std::string(name); }

    Files& m_files;
    std::string m_folder;
    RunHead m_head;
    bool m_isLoaded = false;
    std::unique_ptr<FileLock> m_lock;       // while the files are this program's
    std::unique_ptr<OutputFile> m_journal;  // the list's file, for what becomes of its rows
    std::uint64_t m_generation = 0;         // of the list that was written last
    std::uint64_t m_listVersion = 0;        // of the print list at that time
    bool m_hasUnflushed = false;            // lines of the journal
    int m_copy = 1;                         // that was under way then
    int m_first = -1;                       // index of the first row that has begun since then
    int m_begun = -1;                       // index of the last row that has begun since then
    int m_finished = -1;                    // index of the last of them that is finished
};

}  // namespace quirepress
