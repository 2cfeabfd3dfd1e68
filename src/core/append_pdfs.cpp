#include "core/append_pdfs.h"

#include <utility>

#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "core/file_target.h"
#include "core/leftovers.h"
#include "core/page_range.h"
#include "core/print_list.h"
#include "core/print_run_source.h"
#include "core/processing_defaults.h"
#include "core/scratch_folder.h"
#include "documents/pdf_merge.h"
#include "logs/debug_log.h"
#include "platform/clock.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

constexpr Instant kSecond = 1'000'000'000;
constexpr std::string_view kDeleteAfterPrint = "qprdelete";
constexpr const char* kMergedName = "%sQPRMerged_%ld%d.pdf";

bool IsTicked(const PrintList& list, int row) {
    return list.Text(row, kColumnSelected) == "Yes";
}

bool IsPdfRow(const PrintList& list, int row) {
    const std::string_view path = list.Text(row, kColumnFilename);
    return IsPdf(path) && KindOfItem(path) == ItemKind::kDocument;
}

// A merging under way. A row that was dealt with is unticked, so that the next ticked one is the next.
class Appending {
public:
    Appending(const AppendServices& services, const std::function<bool()>& keepGoing)
        : m_services(services), m_list(services.list), m_keepGoing(keepGoing) {}

    AppendOutcome Run();

private:
    bool TakeName();
    int FindRow() const;
    int CountRows() const;
    bool AppendRow(int row, PdfMerge& merge, const std::string& scratchFolder);
    PdfResult AddPages(const std::string& path, const PageRange& range, PdfMerge& merge,
                       const std::string& scratchFolder);
    PageRange RangeOf(int row);
    void Untick(int row, std::string_view status);
    void InsertMerged();
    AppendOutcome GiveUp(AppendOutcome::End end);
    void GiveNameBack();

    const AppendServices& m_services;
    PrintList& m_list;
    const std::function<bool()>& m_keepGoing;
    AppendOutcome m_outcome;
    ProcessingDefaults m_defaults{m_services.files};
    std::string m_settings;  // the item that they are from; empty: none
    std::string m_flaw;      // of an item that can't be used; the walk tells it
};

AppendOutcome Appending::Run() {
    if (CountRows() < 2) return {};
    if (!TakeName()) return GiveUp(AppendOutcome::End::kNotWritten);
    const ScratchFolder scratch(m_services.files, m_services.options, m_services.workingFolder, "Append");
    PdfMerge merge(m_services.files, m_services.pdfPages, m_outcome.path, scratch.Path());
    for (int row = FindRow(); row >= 0; row = FindRow()) {
        if (!m_keepGoing()) return GiveUp(AppendOutcome::End::kStopped);
        // The list may have changed.
        row = FindRow();
        if (row >= 0 && !AppendRow(row, merge, scratch.Path()))
            return GiveUp(AppendOutcome::End::kNotWritten);
    }
    // The last file may have failed because of it.
    if (!m_keepGoing()) return GiveUp(AppendOutcome::End::kStopped);
    m_list.SetCurrentRow(-1);
    if (merge.PageCount() == 0) {
        GiveNameBack();
        return std::move(m_outcome);
    }
    if (merge.Finish() != PdfResult::kDone) return GiveUp(AppendOutcome::End::kNotWritten);
    InsertMerged();
    m_outcome.end = AppendOutcome::End::kMerged;
    return std::move(m_outcome);
}

// A name that no file has, and no other program is about to use.
bool Appending::TakeName() {
    constexpr int kMostNames = 1000;
    const std::string folder = TemporaryFolderOf(m_services.options, m_services.workingFolder);
    m_services.files.MakePrivateFolders(folder);
    const auto seconds = static_cast<long>(m_services.clock.Now() / kSecond);
    for (int number = 1; number <= kMostNames; ++number) {
        const std::string path = Format(kMergedName, WithTrailingSeparator(folder), seconds, number);
        FileResult result = FileResult::kDone;
        std::unique_ptr<FileLock> lock = m_services.files.TryLock(LockOf(path), result);
        if (!lock && result != FileResult::kBusy) return false;
        if (!lock || m_services.files.Inspect(path).kind != FileKind::kMissing) continue;
        m_outcome.path = path;
        m_outcome.lock = std::move(lock);
        return true;
    }
    return false;
}

int Appending::FindRow() const {
    for (int row = 0; row < m_list.RowCount(); ++row)
        if (IsTicked(m_list, row) && IsPdfRow(m_list, row)) return row;
    return -1;
}

int Appending::CountRows() const {
    int rows = 0;
    for (int row = 0; row < m_list.RowCount(); ++row)
        if (IsTicked(m_list, row) && IsPdfRow(m_list, row)) ++rows;
    return rows;
}

// False when the merged file can't be written.
bool Appending::AppendRow(int row, PdfMerge& merge, const std::string& scratchFolder) {
    const std::string path(m_list.Text(row, kColumnFilename));
    m_list.SetCurrentRow(row);
    m_list.SetText(row, kColumnStatus, "Appending");
    m_services.debugLog.Trace("Appending: %s\r\n", path);
    const FileFacts facts = m_services.files.Inspect(path);
    const PageRange range = RangeOf(row);
    const PdfResult result = AddPages(path, range, merge, scratchFolder);
    if (result == PdfResult::kNotWritten) return false;
    row = m_list.CurrentRow();
    if (result == PdfResult::kDone) {
        Untick(row, "Done Append");
        if (row >= 0) m_list.MarkOf(row).source = {facts.size, facts.written};
        return true;
    }
    const bool isImpossible = range.kind == PageRange::Kind::kImpossible;
    const std::string error = "Error appending file: " +
                              (isImpossible ? range.flaw : DescribePdfResult(result, m_services.files, path));
    m_services.debugLog.Trace("%s %s\r\n", error, path);
    m_outcome.failures.push_back({path, error});
    Untick(row, error);
    if (row >= 0) m_list.MarkOf(row).outcome = RowOutcome::kFailed;
    return true;
}

PdfResult Appending::AddPages(const std::string& path, const PageRange& range, PdfMerge& merge,
                              const std::string& scratchFolder) {
    const std::string& password = m_services.options.m_openPassword;
    if (range.kind == PageRange::Kind::kNone) return merge.Add(path, password);
    if (range.kind == PageRange::Kind::kImpossible) return PdfResult::kNoSuchPages;
    const std::string part = JoinPath(scratchFolder, "pages.pdf");
    m_services.files.MakePrivateFolders(scratchFolder);
    PdfResult result = m_services.pdfPages.ExtractPages(path, password, {range.pages}, part);
    // Its own file is none that other rows wait for.
    if (result == PdfResult::kNotWritten) return PdfResult::kGaveUp;
    if (result == PdfResult::kDone) result = merge.Add(part, "");
    m_services.files.Erase(part);
    return result;
}

// As the walk would find it: a row without parameters has those of the last item above that sets some.
PageRange Appending::RangeOf(int row) {
    PageRange own =
        FindPageRange(m_list.Text(row, kColumnProcessingParameters), m_list.Text(row, kColumnExtraOptions));
    const bool hasParameters = !m_list.Text(row, kColumnProcessingParameters).empty();
    if (hasParameters || own.kind != PageRange::Kind::kNone) return own;
    for (int above = row - 1; above >= 0; --above) {
        const std::string_view item = m_list.Text(above, kColumnFilename);
        const bool isSettings = ProcessingDefaults::TakesItem(item) && IsTicked(m_list, above) &&
                                KindOfItem(FileTitle(item)) == ItemKind::kCommand;
        if (!isSettings) continue;
        // The rows below it share what it says: it is read once.
        if (item != m_settings) m_defaults.ApplyItem(item, m_flaw);
        m_settings = item;
        PageRange range = ReadPageRange(m_defaults.Parameters());
        if (m_defaults.Parameters() == ProcessingDefaults::kUnusable) range.flaw = ProcessingDefaults::kFlaw;
        return range;
    }
    return {};
}

void Appending::Untick(int row, std::string_view status) {
    if (row < 0) return;  // it was taken from the list
    m_list.SetText(row, kColumnSelected, "No");
    m_list.SetText(row, kColumnStatus, status);
    m_list.MarkOf(row).isAppended = true;
}

// It goes where the first of its rows says that it goes.
void Appending::InsertMerged() {
    int first = 0;
    while (first < m_list.RowCount() && !m_list.MarkOf(first).isAppended) ++first;
    const auto text = [&](Column column) { return std::string(m_list.Text(first, column)); };
    ItemTexts texts;
    texts.profiling = text(kColumnProfiling);
    texts.balancedPrinters = text(kColumnBalancedPrinters);
    texts.priority = text(kColumnPriority);
    m_list.InsertFileAtRow(first, m_outcome.path, 1, kDeleteAfterPrint, texts);
    m_services.debugLog.Trace("Done Append: %s\r\n", m_outcome.path);
}

AppendOutcome Appending::GiveUp(AppendOutcome::End end) {
    m_list.SetCurrentRow(-1);
    for (int row = 0; row < m_list.RowCount(); ++row) {
        const bool isAtWork = m_list.Text(row, kColumnStatus) == "Appending";
        if (isAtWork || m_list.MarkOf(row).isAppended) m_list.SetText(row, kColumnStatus, "Ready");
        if (m_list.MarkOf(row).isAppended) m_list.MarkOf(row).outcome = RowOutcome::kNotSelected;
    }
    TickAppendedRows(m_list);
    GiveNameBack();
    AppendOutcome outcome;
    outcome.end = end;
    return outcome;
}

void Appending::GiveNameBack() {
    if (m_outcome.lock) {
        m_outcome.lock.reset();
        m_services.files.Erase(LockOf(m_outcome.path));
    }
    m_outcome.path.clear();
}

}  // namespace

AppendOutcome AppendPdfs(const AppendServices& services, const std::function<bool()>& keepGoing) {
    return Appending(services, keepGoing).Run();
}

AppendOutcome TakeUpMergedFile(const AppendServices& services, const std::string& path) {
    AppendOutcome outcome;
    if (path.empty()) return outcome;
    FileResult result = FileResult::kDone;
    outcome.path = path;
    outcome.lock = services.files.TryLock(LockOf(path), result);
    return outcome;
}

void ReleaseMergedFile(Files& files, AppendOutcome& outcome) {
    const bool isLocked = outcome.lock != nullptr;
    outcome.lock.reset();
    if (isLocked) files.Erase(LockOf(outcome.path));
    outcome = {};
}

int FindMergedRow(const PrintList& list, std::string_view mergedFile) {
    int row = mergedFile.empty() ? -1 : list.RowCount() - 1;
    while (row >= 0 && list.Text(row, kColumnFilename) != mergedFile) --row;
    return row;
}

AppendedCount ShareMergedCopies(PrintList& list, std::string_view mergedFile) {
    AppendedCount count;
    const int merged = FindMergedRow(list, mergedFile);
    if (merged < 0) return count;
    const RunMark shared = list.MarkOf(merged);
    const std::string status(list.Text(merged, kColumnStatus));
    if (shared.outcome == RowOutcome::kNotSelected) return count;
    for (int row = 0; row < list.RowCount(); ++row) {
        RunMark& mark = list.MarkOf(row);
        if (!mark.isAppended || mark.outcome != RowOutcome::kNotSelected) continue;
        mark.outcome = shared.outcome;
        mark.printed = shared.printed;
        list.SetText(row, kColumnStatus, status);
        ++(shared.outcome == RowOutcome::kDone ? count.done : count.failed);
    }
    return count;
}

void TickAppendedRows(PrintList& list) {
    for (int row = 0; row < list.RowCount(); ++row) {
        if (!std::exchange(list.MarkOf(row).isAppended, false)) continue;
        list.SetText(row, kColumnSelected, "Yes");
        // Its turn did not come.
        if (list.MarkOf(row).outcome == RowOutcome::kNotSelected) list.SetText(row, kColumnStatus, "Ready");
    }
}

void DropMergedRows(const AppendServices& services) {
    PrintList& list = services.list;
    const std::string folder = TemporaryFolderOf(services.options, services.workingFolder);
    for (int row = list.RowCount() - 1; row >= 0; --row) {
        const std::string path(list.Text(row, kColumnFilename));
        const bool isOurs = IsMergedFile(path) && StartsWith(path, WithTrailingSeparator(folder));
        if (!isOurs || list.Text(row, kColumnMoveTo) != kDeleteAfterPrint) continue;
        EraseUnlessUsed(services.files, path);
        list.RemoveRow(row);
    }
    EraseLeftovers(services.files, services.clock, folder,
                   [](const std::string& path) { return IsMergedFile(path); });
}

}  // namespace quirepress
