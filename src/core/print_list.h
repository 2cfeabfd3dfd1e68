#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "core/list_item.h"
#include "core/list_pages.h"

namespace quirepress {

class Clock;
class DebugLog;
class EventLoop;
class Files;
class Machine;
class PdfCounter;
class Prompts;
class Shell;
struct GeneralOptions;

// The nine further texts of an insertion, in the order of the exported call.
struct ItemTexts {
    std::string addonParameters;
    std::string fromDirectory;
    std::string processingParameters;
    std::string moveToOnError;
    std::string fileTitle;
    std::string extraOptions;
    std::string profiling;
    std::string balancedPrinters;
    std::string priority;
};

// Colours by meaning; the window chooses the shades.
enum class RowColour { kNormal, kError, kCommand, kSeparator };

// What the list needs of the program around it; all outlive it.
struct PrintListServices {
    Files& files;
    Shell& shell;
    Clock& clock;
    Machine& machine;
    EventLoop& loop;
    Prompts& prompts;
    DebugLog& debugLog;
    PdfCounter& pdfCounter;
    const GeneralOptions& options;
    std::string workingFolder;
    // Asked now and then while the list loads; false ends the loading, what has come in stays.
    std::function<bool()> keepGoing = [] { return true; };
    bool fullPdfCount = false;  // count the pages that are really there
};

constexpr int kReplaceCurrentRow = 9999;  // selectMode: the running row's file name is overwritten

// The one ordered list of work. Rows are named by index; an index is good until the list changes. A row that
// is not there has empty texts, and ignores what is set.
class PrintList {
public:
    explicit PrintList(PrintListServices services);

    int RowCount() const { return static_cast<int>(m_rows.size()); }
    std::string_view Text(int row, int column) const;
    void SetText(int row, int column, std::string_view text);
    RunMark& MarkOf(int row) { return m_rows[row].Mark(); }  // good until the list changes
    // The path of the job file that brought the row, the innermost of several; empty when it came another
    // way, or the job file was not taken in to its end. Good until the list changes.
    std::string_view JobFileOf(int row) const { return m_rows[row].JobFile(); }
    // Whether the row stands for something that could not be taken in; its status says why. Not one that was
    // ticked in spite of it.
    bool IsRefused(int row) const;
    // The archives that were unpacked whole for ticked rows, or for such as are merged now, with what they
    // were then. They are forgotten by this, and with their rows.
    std::map<std::string, SourceVersion> TakeUnpackedArchives();
    void RemoveRow(int row);
    void Clear();
    // A row as it was in an earlier list, below the others.
    void AppendRow(const ColumnTexts& texts, const RunMark& mark, std::string_view jobFile);
    // For another list to stand here for a while; answers the rows that were there.
    std::deque<ListItem> ExchangeRows(std::deque<ListItem> rows);
    // Another number whenever rows have come, gone or changed places.
    std::uint64_t Version() const { return m_version; }

    // The one way in, for whatever a path may stand for: a document, a command item, a download, a separator,
    // a folder, an archive, a job file, a shortcut. `selectMode` 1 ticks the row, 0 does not;
    // kReplaceCurrentRow overwrites the file name of the running row, whatever the path is, and adds none.
    // Returns 1 when the path was consumed (a row, or what it stands for, or nothing on purpose), 0
    // otherwise, as for a job file that can't be read: its row says so. May pump.
    int InsertFileIntoList(std::string_view path, int selectMode, std::string_view moveToDir,
                           const ItemTexts& texts);

    // The same at this row, whatever is said of where the next rows go; the others move down.
    int InsertFileAtRow(int row, std::string_view path, int selectMode, std::string_view moveToDir,
                        const ItemTexts& texts);

    // For other processes and add-ons; both always return 1.
    int ExInsertItemsIntoList(const char* fileName, int selectMode, const char* moveToDir);
    int ExInsertItemsIntoListPos(const char* fileName, int selectMode, const char* moveToDir, int row,
                                 const char* addonParams);

    // Inserts every file of `folder` whose name matches `mask` ("*" and "?", any case, "*.*" matches all), by
    // name; with `descend` those of its sub-folders too, each folder once whatever links lead to it. A folder
    // that cannot be listed gets an unticked row that says so. Answers how many files were consumed. May
    // pump.
    int DoScanDir(std::string_view folder, std::string_view mask, bool descend, int selectMode,
                  std::string_view moveToDir, const ItemTexts& texts);

    // Status and Pages of every row anew, but for those that are refused. A text that names no file, a
    // download or a command, is "No File." here too. May pump.
    void RefreshListStatus();
    RowColour ColourListRow(int row) const;
    void SortByFileTitle();  // the last number of a title counts as a number

    // Where the next rows go; of several, the later in this list of calls wins.
    void SetPendingPosition(int position) { m_pendingPosition = position; }  // used once; negative: none
    void InsertAtSelectedRow(int row) { m_selectedRow = row; }               // negative: append
    void SetStartPosition(int position) { m_startPosition = position; }      // from 1; negative: none

    // The running row; it is followed when rows come, go and are sorted. -1: none.
    void SetCurrentRow(int row) { m_currentRow = row; }
    int CurrentRow() const { return m_currentRow; }

    void ProtectUntickedRows(bool protect) { m_protectUntickedRows = protect; }
    void UseAddons(AddonCounter* addons) { m_pages.UseAddons(addons); }

    // The four header texts of the last job file that had them.
    const std::array<std::string, 4>& HeaderTexts() const { return m_headerTexts; }

private:
    friend class ListInsertion;

    // Where the next row goes; a pending position is used up by this.
    int TakeRowIndex();
    ListItem& AddRow(int index, const ColumnTexts& texts, int keptPages,
                     std::shared_ptr<RowOrigin> origin = nullptr);
    void RefreshRow(int row);
    bool KeepGoing();  // may pump

    PrintListServices m_services;
    ListPages m_pages;
    std::deque<ListItem> m_rows;
    std::uint64_t m_version = 0;
    int m_pendingPosition = -1;
    int m_startPosition = -1;
    int m_selectedRow = -1;
    int m_currentRow = -1;
    bool m_protectUntickedRows = false;
    std::array<std::string, 4> m_headerTexts;
    long long m_lastPump = 0;
};

}  // namespace quirepress
