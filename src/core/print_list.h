#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "core/list_item.h"

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

// Counts pages and claims files on behalf of the add-ons.
class AddonCounter {
public:
    virtual ~AddonCounter() = default;
    // True when an add-on claims the file; `pages` is then its count (-1: unknown).
    virtual bool CountPages(std::string_view path, int& pages) = 0;
};

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
};

constexpr int kReplaceCurrentRow = 9999;  // selectMode: the running row's file name is overwritten

// The one ordered list of work. Rows are named by index; an index is good until the list changes.
class PrintList {
public:
    explicit PrintList(PrintListServices services);

    int RowCount() const { return static_cast<int>(m_rows.size()); }
    std::string_view Text(int row, int column) const { return m_rows[row].Text(column); }
    void SetText(int row, int column, std::string_view text);
    RunMark& MarkOf(int row) { return m_rows[row].Mark(); }  // good until the list changes
    void RemoveRow(int row);
    void Clear();

    // The one way in. `selectMode` 1 ticks the row, 0 does not, kReplaceCurrentRow overwrites the running
    // row. Returns 1 when the path was consumed (a row, or what it stands for, or nothing on purpose), 0
    // otherwise.
    int InsertFileIntoList(std::string_view path, int selectMode, std::string_view moveToDir,
                           const ItemTexts& texts);

    // For other processes and add-ons; both always return 1.
    int ExInsertItemsIntoList(const char* fileName, int selectMode, const char* moveToDir);
    int ExInsertItemsIntoListPos(const char* fileName, int selectMode, const char* moveToDir, int row,
                                 const char* addonParams);

    // Inserts every file of `folder` whose name matches `mask` ("*" and "?", "*.*" matches all), by name;
    // with `descend` those of its sub-folders too. Answers how many files it inserted. May pump.
    int DoScanDir(std::string_view folder, std::string_view mask, bool descend, int selectMode,
                  std::string_view moveToDir, const ItemTexts& texts);

    void RefreshListStatus();
    RowColour ColourListRow(int row) const;
    void SortByFileTitle();  // numbers in titles as numbers

    void SetPendingPosition(int position) { m_pendingPosition = position; }  // used once; negative: none
    void SetStartPosition(int position) { m_startPosition = position; }      // from 1; negative: none
    void InsertAtSelectedRow(int row) { m_selectedRow = row; }               // negative: append
    void SetCurrentRow(int row) { m_currentRow = row; }                      // of the run; -1: none
    void ProtectUntickedRows(bool protect) { m_protectUntickedRows = protect; }
    void UseAddons(AddonCounter* addons) { m_addons = addons; }

    // The four header texts of the last job file that was loaded.
    const std::array<std::string, 4>& HeaderTexts() const { return m_headerTexts; }

private:
    PrintListServices m_services;
    std::vector<ListItem> m_rows;
    AddonCounter* m_addons = nullptr;
    int m_pendingPosition = -1;
    int m_startPosition = -1;
    int m_selectedRow = -1;
    int m_currentRow = -1;
    bool m_protectUntickedRows = false;
    std::array<std::string, 4> m_headerTexts;
};

}  // namespace quirepress
