#include "core/run_snapshot.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

#include "backends/printer_selection.h"
#include "base/escaped_text.h"
#include "base/format.h"
#include "base/numbers.h"
#include "base/text.h"
#include "core/print_list.h"
#include "core/processing_defaults.h"
#include "core/run_way.h"
#include "platform/file_tools.h"
#include "platform/files.h"

namespace quirepress {

namespace {

constexpr std::string_view kListName = "SnapshotRestore.List";
constexpr std::string_view kCheckpointName = "SnapshotRestore.Checkpoint";
constexpr std::string_view kBackupName = "SnapshotRestore.Checkpoint.bak";
constexpr std::string_view kLockName = "SnapshotRestore.lock";
constexpr std::string_view kListTitle = "QUIREPRESS SNAPSHOT 3";
constexpr std::string_view kListEnd = "ROWS";
constexpr std::string_view kCheckpointTitle = "QUIREPRESS CHECKPOINT 1";
constexpr std::int64_t kMostBytes = 4LL << 30;
constexpr int kMostRows = std::numeric_limits<int>::max() - 1;

// A tab and a "%" inside a text are escaped, so the fields of a line can be told apart.
std::string JoinFields(std::initializer_list<std::string_view> fields) {
    std::string line;
    for (const std::string_view field : fields) {
        if (!line.empty()) line += '\t';
        line += field;
    }
    return line + "\n";
}

// Fields of a mark in a line: pass, copies that were printed, outcome, three switches, size and time of the
// source.
constexpr std::size_t kMarkFields = 8;

std::string MarkText(const RunMark& mark) {
    return Format("%d\t%d\t%d\t%d\t%d\t%d\t%lld\t%lld", mark.pass, mark.printed,
                  static_cast<int>(mark.outcome), mark.isDoubtful, mark.isAppended, mark.isFiled,
                  static_cast<long long>(mark.source.size), static_cast<long long>(mark.source.written));
}

std::string RowLine(PrintList& list, int row) {
    std::string line = Format("ROW\t%s\t%s", MarkText(list.MarkOf(row)), EscapeControls(list.JobFileOf(row)));
    for (int column = 0; column < kColumnCount; ++column)
        line += '\t' + EscapeControls(list.Text(row, column));
    return line + "\n";
}

// The fields of one line after the other; those of a line that is not whole are none.
class Fields {
public:
    explicit Fields(std::string_view text) : m_rest(text) {}

    bool TakeLine(std::vector<std::string_view>& fields) {
        const std::size_t end = m_rest.find('\n');
        if (end == std::string_view::npos) return false;
        fields = SplitAt(m_rest.substr(0, end), '\t');
        m_rest.remove_prefix(end + 1);
        return true;
    }

private:
    std::string_view m_rest;
};

bool ReadNumber(std::string_view text, int lowest, int highest, std::int32_t& number) {
    const std::optional<std::int64_t> value = ParseWholeNumber(text, lowest, highest);
    if (value) number = static_cast<std::int32_t>(*value);
    return value.has_value();
}

bool ReadSwitch(std::string_view text, bool& isOn) {
    isOn = text == "1";
    return isOn || text == "0";
}

bool ReadMark(const std::vector<std::string_view>& fields, std::size_t at, RunMark& mark) {
    constexpr std::int64_t kHighest = std::numeric_limits<std::int64_t>::max();
    std::int32_t outcome = 0;
    const auto size = ParseWholeNumber(fields[at + 6], -1, kHighest);
    const auto written = ParseWholeNumber(fields[at + 7], kNoInstant, kHighest);
    const bool isWhole = ReadNumber(fields[at], 0, kMostRows, mark.pass) &&
                         ReadNumber(fields[at + 1], 0, kMostRows, mark.printed) &&
                         ReadNumber(fields[at + 2], 0, static_cast<int>(RowOutcome::kFailed), outcome) &&
                         ReadSwitch(fields[at + 3], mark.isDoubtful) &&
                         ReadSwitch(fields[at + 4], mark.isAppended) &&
                         ReadSwitch(fields[at + 5], mark.isFiled) && size && written;
    if (!isWhole) return false;
    mark.outcome = static_cast<RowOutcome>(outcome);
    mark.source = {*size, *written};
    return true;
}

bool ReadRow(const std::vector<std::string_view>& fields, CutOffRun::Row& row) {
    constexpr std::size_t kBefore = 2 + kMarkFields;
    if (fields.size() != kBefore + kColumnCount || fields[0] != "ROW") return false;
    if (!ReadMark(fields, 1, row.mark)) return false;
    row.jobFile = UnescapeControls(fields[kBefore - 1]);
    for (std::size_t i = 0; i < kColumnCount; ++i) row.texts[i] = UnescapeControls(fields[kBefore + i]);
    return true;
}

// Title, generation, printer, copies; the rows; their number.
bool ReadRows(Fields& lines, CutOffRun& run, std::uint64_t& generation) {
    std::vector<std::string_view> fields;
    if (!lines.TakeLine(fields) || fields.size() != 6 || fields[0] != kListTitle) return false;
    const auto number = ParseWholeNumber(fields[1], 0, std::numeric_limits<std::int64_t>::max());
    if (!number || !ReadNumber(fields[3], 1, kMostRows, run.copies)) return false;
    generation = static_cast<std::uint64_t>(*number);
    run.printer = UnescapeControls(fields[2]);
    run.isBalanced = fields[4] == "1";
    run.mergedFile = UnescapeControls(fields[5]);
    while (lines.TakeLine(fields) && fields[0] != kListEnd) {
        if (!ReadRow(fields, run.rows.emplace_back())) return false;
    }
    std::int32_t count = 0;
    return fields.size() == 2 && fields[0] == kListEnd && ReadNumber(fields[1], 0, kMostRows, count) &&
           static_cast<std::size_t>(count) == run.rows.size();
}

// A line that tells a text of its row; false: it is another line.
bool ReadNote(std::string_view word, std::string text, CutOffRun& run, std::int32_t index) {
    CutOffRun::Row& row = run.rows[static_cast<std::size_t>(index)];
    if (word == "PRINTER") {
        run.printerAtWork = std::move(text);
        return true;
    }
    if (word != "FILED" && word != "FETCHED") return false;
    row.texts[word == "FILED" ? kColumnStatus : kColumnFilename] = std::move(text);
    row.mark.isFiled = row.mark.isFiled || word == "FILED";
    return true;
}

// What became of rows after the list was written. The line that the end of the program cut short, and
// whatever is behind it, did not happen.
void ReadJournal(Fields& lines, CutOffRun& run) {
    std::vector<std::string_view> fields;
    while (lines.TakeLine(fields)) {
        std::int32_t index = 0;
        if (fields.size() < 2 || !ReadNumber(fields[1], 0, static_cast<int>(run.rows.size()) - 1, index))
            return;
        CutOffRun::Row& row = run.rows[static_cast<std::size_t>(index)];
        if (fields.size() == 3 && ReadNote(fields[0], UnescapeControls(fields[2]), run, index)) continue;
        RunMark mark;
        if (fields[0] != "FINISHED" || fields.size() != 3 + kMarkFields || !ReadMark(fields, 2, mark)) return;
        run.printerAtWork.clear();
        row.mark = mark;
        row.texts[kColumnStatus] = UnescapeControls(fields.back());
    }
}

bool IsSetting(std::string_view path) {
    return KindOfItem(path) == ItemKind::kCommand &&
           (PrinterSelection::TakesItem(path) || ProcessingDefaults::TakesItem(path));
}

// A disk that loses what it was told to keep.
void NoteLostEnd(CutOffRun::Row& row) {
    if (row.texts[kColumnSelected] != "Yes") return;
    row.isEndLost = !IsSetting(row.texts[kColumnFilename]);
    if (!row.isEndLost) row.mark.outcome = RowOutcome::kDone;
}

}  // namespace

bool IsOfUnknownOutcome(const CutOffRun& cutOff, int row) {
    if (row < 0) return false;
    const CutOffRun::Row& asked = cutOff.rows[static_cast<std::size_t>(row)];
    return asked.isEndLost || (row == cutOff.rowAtWork && !IsSetting(asked.texts[kColumnFilename]));
}

void PutRowsBack(PrintList& list, const CutOffRun& cutOff) {
    list.Clear();
    for (const CutOffRun::Row& row : cutOff.rows) {
        ColumnTexts texts;
        std::copy(row.texts.begin(), row.texts.end(), texts.begin());
        RunMark mark = row.mark;
        if (IsOfUnknownOutcome(cutOff, list.RowCount())) {
            texts[kColumnStatus] = kStatusUnknown;
            mark.pass = cutOff.copy;
            mark.outcome = RowOutcome::kFailed;
            mark.isFiled = true;
        }
        list.AppendRow(texts, mark, row.jobFile);
    }
}

struct RunSnapshot::Checkpoint {
    std::int32_t finished = -1;  // index of the last finished row
    std::int32_t copy = 1;
    std::int32_t first = -1;  // index of the first row that has begun since the list was written
    std::int32_t begun = -1;
    std::uint64_t generation = 0;
};

RunSnapshot::RunSnapshot(Files& files, std::string_view workingFolder)
    : m_files(files), m_folder(workingFolder) {}

RunSnapshot::~RunSnapshot() = default;

std::string_view RunSnapshot::Create(PrintList& list, const RunHead& head, int copy) {
    if (!TakeLock()) return kSnapshotInUse;
    m_head = head;
    m_first = m_begun = m_finished = -1;
    // Never that of an earlier run, whose checkpoint may still lie there.
    CutOffRun earlier;
    std::string text;
    FileResult result = FileResult::kDone;
    if (ReadWholeFile(m_files, PathOf(kListName), kMostBytes, text, result)) {
        Fields lines(text);
        ReadRows(lines, earlier, m_generation);
    }
    if (WriteList(list, copy)) return {};
    GiveUp();
    return kSnapshotFailed;
}

bool RunSnapshot::TakeLock() {
    if (m_lock) return true;
    FileResult result = FileResult::kDone;
    m_lock = m_files.TryLock(PathOf(kLockName), result);
    return m_lock != nullptr;
}

// Left behind, it would have printed once more what came out since. A full disk lets it be erased.
bool RunSnapshot::GiveUp() {
    m_journal.reset();
    if (!m_isLoaded) EraseFiles();
    m_lock.reset();
    return false;
}

void RunSnapshot::EraseFiles() {
    for (const std::string_view name : {kListName, kCheckpointName, kBackupName}) m_files.Erase(PathOf(name));
}

void RunSnapshot::Leave() {
    m_journal.reset();
    m_lock.reset();
    m_isLoaded = false;
}

bool RunSnapshot::WriteList(PrintList& list, int copy) {
    m_journal.reset();
    ++m_generation;
    std::string text = JoinFields({kListTitle, std::to_string(m_generation), EscapeControls(m_head.printer),
                                   std::to_string(m_head.copies), m_head.isBalanced ? "1" : "0",
                                   EscapeControls(m_head.mergedFile)});
    for (int row = 0; row < list.RowCount(); ++row) text += RowLine(list, row);
    text += JoinFields({kListEnd, std::to_string(list.RowCount())});
    if (ReplaceFileDurably(m_files, PathOf(kListName), text) != FileResult::kDone) return false;
    FileResult result = FileResult::kDone;
    m_journal = m_files.OpenForWriting(PathOf(kListName), OpenMode::kAppend, FileAccess::kShared, result);
    m_listVersion = list.Version();
    m_first = m_begun = m_finished = -1;
    m_copy = copy;
    const bool isWritten = m_journal != nullptr && WriteCheckpoint({-1, copy, -1, -1, m_generation});
    // The list on the disk is that of this run from here on.
    if (isWritten) m_isLoaded = false;
    return isWritten;
}

bool RunSnapshot::WriteCheckpoint(const Checkpoint& checkpoint) {
    const std::string path = PathOf(kCheckpointName);
    const FileResult kept = m_files.Rename(path, PathOf(kBackupName), true);
    if (kept != FileResult::kDone && kept != FileResult::kMissing) return false;
    const std::string text =
        JoinFields({kCheckpointTitle, std::to_string(checkpoint.finished), std::to_string(checkpoint.copy),
                    std::to_string(checkpoint.first), std::to_string(checkpoint.begun),
                    std::to_string(checkpoint.generation)});
    return ReplaceFileDurably(m_files, path, text) == FileResult::kDone;
}

bool RunSnapshot::NoteBegun(PrintList& list, int row, int copy) {
    if (!IsOn()) return true;
    // The index of the last finished row says how far it is as long as the rows come in their order.
    const bool isBack = row <= m_finished || copy != m_copy;
    const bool isStale = isBack || list.Version() != m_listVersion;
    if (isStale && !WriteListBefore(list, row, copy)) return GiveUp();
    if (m_first < 0) m_first = row;
    m_begun = row;
    // A checkpoint counts rows as finished of which the journal tells how.
    return (FlushJournal() && WriteCheckpoint({m_finished, copy, m_first, row, m_generation})) || GiveUp();
}

// As it was before the row had its turn.
bool RunSnapshot::WriteListBefore(PrintList& list, int row, int copy) {
    RunMark& mark = list.MarkOf(row);
    const std::int32_t pass = std::exchange(mark.pass, copy - 1);
    const bool isWritten = WriteList(list, copy);
    mark.pass = pass;
    return isWritten;
}

void RunSnapshot::PutBack(PrintList& list, int row, int copy) {
    if (!IsOn()) return;
    if (WriteListBefore(list, row, copy))
        m_journal.reset();
    else
        GiveUp();
}

bool RunSnapshot::NoteFinished(PrintList& list, int row) {
    if (!IsOn() || list.Version() != m_listVersion) return true;  // the next list will hold it
    // One that shares the lot of another says nothing of the rows above it.
    if (row == m_begun) m_finished = row;
    return WriteJournal(JoinFields({"FINISHED", std::to_string(row), MarkText(list.MarkOf(row)),
                                    EscapeControls(list.Text(row, kColumnStatus))}));
}

// Where the list has changed, the next one on the disk will hold it.
void RunSnapshot::NoteText(PrintList& list, int row, std::string_view word, std::string_view text) {
    if (IsOn() && list.Version() == m_listVersion)
        WriteJournal(JoinFields({word, std::to_string(row), EscapeControls(text)}));
}

void RunSnapshot::NoteFetched(PrintList& list, int row) {
    NoteText(list, row, "FETCHED", list.Text(row, kColumnFilename));
}

void RunSnapshot::NotePrinter(PrintList& list, int row, std::string_view printer) {
    NoteText(list, row, "PRINTER", printer);
}

void RunSnapshot::NoteFiled(PrintList& list, int row) {
    NoteText(list, row, "FILED", list.Text(row, kColumnStatus));
}

bool RunSnapshot::WriteJournal(const std::string& line) {
    m_hasUnflushed = true;
    return m_journal->Write(line.data(), line.size()) == FileResult::kDone || GiveUp();
}

bool RunSnapshot::FlushJournal() {
    return !std::exchange(m_hasUnflushed, false) || m_journal->FlushToDisk() == FileResult::kDone;
}

void RunSnapshot::Remove() {
    if (!m_lock) return;
    m_journal.reset();
    EraseFiles();
    Leave();
}

SnapshotResult RunSnapshot::Load(CutOffRun& run) {
    if (m_files.Inspect(PathOf(kListName)).kind == FileKind::kMissing) return SnapshotResult::kNone;
    if (IsOn() || !TakeLock()) return SnapshotResult::kInUse;
    std::string text;
    FileResult result = FileResult::kDone;
    CutOffRun read;
    std::uint64_t generation = 0;
    const bool isRead = ReadWholeFile(m_files, PathOf(kListName), kMostBytes, text, result);
    Fields lines(text);
    if (!isRead || !ReadRows(lines, read, generation)) {
        Leave();
        return SnapshotResult::kDamaged;
    }
    ReadJournal(lines, read);
    Checkpoint checkpoint;
    const bool isFound =
        (ReadCheckpoint(kCheckpointName, checkpoint) && checkpoint.generation == generation) ||
        (ReadCheckpoint(kBackupName, checkpoint) && checkpoint.generation == generation);
    const int count = static_cast<int>(read.rows.size());
    if (isFound && checkpoint.finished < count && checkpoint.begun < count) {
        read.copy = checkpoint.copy;
        for (int row = std::max(checkpoint.first, 0); row <= checkpoint.finished; ++row)
            if (std::exchange(read.rows[row].mark.pass, read.copy) < read.copy) NoteLostEnd(read.rows[row]);
        if (checkpoint.begun >= 0 && read.rows[checkpoint.begun].mark.pass < read.copy)
            read.rowAtWork = checkpoint.begun;
    } else {
        // The list was written and its checkpoint was not: no row of it has begun since.
        for (const CutOffRun::Row& row : read.rows) read.copy = std::max(read.copy, row.mark.pass);
    }
    run = std::move(read);
    m_isLoaded = true;
    return SnapshotResult::kLoaded;
}

bool RunSnapshot::ReadCheckpoint(std::string_view name, Checkpoint& checkpoint) const {
    constexpr std::int64_t kLongest = 1000;
    std::string text;
    FileResult result = FileResult::kDone;
    if (!ReadWholeFile(m_files, PathOf(name), kLongest, text, result)) return false;
    std::vector<std::string_view> fields;
    if (!Fields(text).TakeLine(fields) || fields.size() != 6 || fields[0] != kCheckpointTitle) return false;
    const auto generation = ParseWholeNumber(fields[5], 0, std::numeric_limits<std::int64_t>::max());
    checkpoint.generation = static_cast<std::uint64_t>(generation.value_or(0));
    return generation && ReadNumber(fields[1], -1, kMostRows, checkpoint.finished) &&
           ReadNumber(fields[2], 1, kMostRows, checkpoint.copy) &&
           ReadNumber(fields[3], -1, kMostRows, checkpoint.first) &&
           ReadNumber(fields[4], -1, kMostRows, checkpoint.begun);
}

bool RunSnapshot::Discard() {
    if (IsOn() || !TakeLock()) return false;
    Remove();
    return m_files.Inspect(PathOf(kListName)).kind == FileKind::kMissing;
}

}  // namespace quirepress
