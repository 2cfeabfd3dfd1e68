#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "base/date_time.h"

namespace quirepress {

// The columns of the print list; their numbers are fixed.
enum Column : int {
    kColumnSelected = 0,
    kColumnFilename,
    kColumnPages,
    kColumnStatus,
    kColumnMoveTo,
    kColumnCreated,
    kColumnModified,
    kColumnAddonParameters,
    kColumnFromDirectory,
    kColumnSizeKb,
    kColumnProcessingParameters,
    kColumnBalancedPrinterUsed,
    kColumnBalancedPrinters,
    kColumnPriority,
    kColumnPrintDirect,
    kColumnMoveToOnError,
    kColumnFileTitle,
    kColumnExtraOptions,
    kColumnProfiling,
};
constexpr int kColumnCount = 19;

struct ColumnInfo {
    const char* heading;
    int width;  // pixels at first
};
extern const std::array<ColumnInfo, kColumnCount> kColumns;

constexpr std::string_view kSeparatorText = "-------Separator-------";
constexpr std::string_view kStatusNoFile = "No File.";

using ColumnTexts = std::array<std::string_view, kColumnCount>;

enum class ItemKind { kDocument, kCommand, kDownload, kSeparator };

// Exact, and in this order: texts anywhere in the path, then endings.
bool IsCommandItem(std::string_view path);
bool IsDownloadEntry(std::string_view path);
// A download's address may hold anything, so it goes before the commands; ".printer" files count as commands.
ItemKind KindOfItem(std::string_view path);

enum class RowOutcome { kNotSelected, kDone, kSkipped, kFailed };  // the worse the greater

// A row's file as it was when it was last read for printing. What has changed since was not printed.
struct SourceVersion {
    std::int64_t size = -1;  // bytes; -1: it was not read
    Instant written = kNoInstant;
};

// What a run remembers of a row; it goes with the row wherever that moves while the run waits.
struct RunMark {
    std::int32_t pass = 0;                          // the last walk over the list that reached it, from 1
    std::int32_t printed = 0;                       // the walks that brought it to its end without a failure
    RowOutcome outcome = RowOutcome::kNotSelected;  // the worst of all walks
    bool isDoubtful = false;  // something of what was printed may not have come out whole
    bool isAppended = false;  // unticked because its pages are in the merged file of this run
    bool isFiled = false;     // its file is where it is to be after the run
    SourceVersion source = {};
};

// A job file or an archive that rows came out of; they share it.
struct RowOrigin {
    enum class Kind { kJobFile, kArchive } kind = Kind::kJobFile;
    std::string path;                       // empty: not all that is in it has come into the list
    SourceVersion version = {};             // of an archive, when it was unpacked
    std::shared_ptr<RowOrigin> outer = {};  // that it came out of itself; null: none
};

// One row: its column texts are its whole state. All texts lie in one piece of memory, so that a list of
// 100,000 rows stays small.
class ListItem {
public:
    explicit ListItem(const ColumnTexts& texts);

    std::string_view Text(int column) const;  // valid until the item changes
    void SetText(int column, std::string_view text);

    // A count kept beside the column texts for the next refresh; -1: none.
    std::int32_t KeptPages() const { return m_keptPages; }
    void KeepPages(std::int32_t pages) { m_keptPages = pages; }

    RunMark& Mark() { return m_mark; }

    // It stands for something that could not be taken in; its status says why.
    bool IsRefused() const { return m_isRefused; }
    void Refuse() { m_isRefused = true; }

    // What brought it, the innermost of several; null: it came by itself.
    RowOrigin* Origin() const { return m_origin.get(); }
    void SetOrigin(std::shared_ptr<RowOrigin> origin) { m_origin = std::move(origin); }
    // The innermost job file that brought it; empty: none.
    std::string_view JobFile() const;

private:
    std::string m_texts;
    std::array<std::uint32_t, kColumnCount> m_ends{};
    std::int32_t m_keptPages = -1;
    RunMark m_mark;
    bool m_isRefused = false;
    std::shared_ptr<RowOrigin> m_origin;
};

}  // namespace quirepress
