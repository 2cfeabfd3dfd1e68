#include "core/run_separators.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "backends/printer_selection.h"
#include "base/credentials.h"
#include "base/numbers.h"
#include "base/path.h"
#include "core/file_target.h"
#include "core/print_list.h"
#include "core/run_downloads.h"
#include "core/scratch_folder.h"
#include "logs/debug_log.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/spooler.h"
#include "plugins/separator_page.h"
#include "settings/general_options.h"
#include "settings/separator_options.h"

namespace quirepress {

namespace {

constexpr int kQueuePollMilliseconds = 100;
constexpr int kMostPages = 999'999'999;

// The documents that the row prints: of a merged file those whose pages are in it.
std::vector<int> DocumentsOfRow(PrintList& list, int row) {
    std::vector<int> rows;
    if (IsMergedFile(list.Text(row, kColumnFilename)))
        for (int other = 0; other < list.RowCount(); ++other)
            if (list.MarkOf(other).isAppended && list.MarkOf(other).outcome != RowOutcome::kFailed)
                rows.push_back(other);
    if (rows.empty()) rows.push_back(row);
    return rows;
}

bool IsDocument(const PrintList& list, int row) {
    const ItemKind kind = KindOfItem(list.Text(row, kColumnFilename));
    return list.Text(row, kColumnSelected) == "Yes" &&
           (kind == ItemKind::kDocument || kind == ItemKind::kDownload);
}

bool IsSeparatorRow(const PrintList& list, int row) {
    return list.Text(row, kColumnFilename) == kSeparatorText;
}

}  // namespace

// The settings of one place.
struct RunSeparators::Set {
    bool isGenerated;
    bool isByFolder;
    const std::string& templateName;
    const std::string& fileName;
    const std::string& prs;
    std::string_view name;  // of a generated file that the settings give none
};

RunSeparators::RunSeparators(RunSeparatorServices services) : m_services(std::move(services)) {}

RunSeparators::~RunSeparators() = default;

RunSeparators::Set RunSeparators::SetOf(Place place) const {
    const SeparatorOptions& options = m_services.separators;
    if (place == Place::kBefore)
        return {options.m_generateOnTheFly,  options.m_printOnDirChangeOnly, options.m_templateFileName,
                options.m_separatorFileName, options.m_separatorPrs,         "Separator"};
    return {options.m_generateOnTheFlyAfter, options.m_printOnDirChangeOnlyAfter,
            options.m_templateFileNameAfter, options.m_separatorFileNameAfter,
            options.m_separatorPrsAfter,     "SeparatorAfter"};
}

// Of a ticked document above or below the row; -1 behind the end of the list, or of the row's set.
int RunSeparators::NextDocument(int row, int step) const {
    const PrintList& list = m_services.list;
    for (int next = row + step; next >= 0 && next < list.RowCount(); next += step) {
        if (IsSeparatorRow(list, next)) return -1;
        if (IsDocument(list, next)) return next;
    }
    return -1;
}

// Whatever is still to be downloaded will lie in one folder.
std::string RunSeparators::FolderOfRow(int row) const {
    PrintList& list = m_services.list;
    const std::string_view path = list.Text(DocumentsOfRow(list, row).front(), kColumnFilename);
    if (KindOfItem(path) == ItemKind::kDownload)
        return WithTrailingSeparator(DownloadFolderOf(m_services.options, m_services.workingFolder));
    return std::string(FolderOf(path));
}

bool RunSeparators::IsWanted(const Set& set, int row) const {
    const bool isSetUp = !set.fileName.empty() || (set.isGenerated && !set.templateName.empty());
    return isSetUp && !m_services.separators.m_requestedOnly && IsDocument(m_services.list, row);
}

bool RunSeparators::IsDueBefore(int row, const std::string& printer) const {
    const Set set = SetOf(Place::kBefore);
    if (!IsWanted(set, row)) return false;
    if (!set.isByFolder) return true;
    const std::string folder = FolderOfRow(row);
    if (!m_headed.printers.empty()) return folder != m_headed.folder || m_headed.printers.count(printer) == 0;
    return !m_hasFolder || folder != m_folder;
}

bool RunSeparators::IsDueAfter(int row, bool isPrinted) const {
    const Set set = SetOf(Place::kAfter);
    if (!IsWanted(set, row)) return false;
    if (!set.isByFolder) return isPrinted;
    if (!m_hasFolder || m_folder != FolderOfRow(row)) return false;
    const int next = NextDocument(row, 1);
    return next < 0 || FolderOfRow(next) != m_folder;
}

void RunSeparators::NotePrintedBefore(int row, const std::string& printer) {
    const std::string folder = FolderOfRow(row);
    if (folder != m_headed.folder) m_headed = {folder, {}};
    m_headed.printers.insert(printer);
}

void RunSeparators::NotePrinted(int row) {
    if (!IsDocument(m_services.list, row)) return;
    m_headed = {};
    m_folder = FolderOfRow(row);
    m_hasFolder = true;
}

// A separator row stands for what is below it, up to the next one; else the documents of one folder belong
// together where the separator is printed for the folder, in list order.
std::vector<int> RunSeparators::RowsOfSet(Place place, int row, const Set& set) const {
    PrintList& list = m_services.list;
    std::vector<int> rows;
    if (IsSeparatorRow(list, row)) {
        for (int next = NextDocument(row, 1); next >= 0; next = NextDocument(next, 1)) rows.push_back(next);
        return rows;
    }
    rows.push_back(row);
    if (!set.isByFolder) return rows;
    const int step = place == Place::kBefore ? 1 : -1;
    const std::string folder = FolderOfRow(row);
    for (int next = NextDocument(row, step); next >= 0 && FolderOfRow(next) == folder;
         next = NextDocument(next, step))
        rows.push_back(next);
    if (step < 0) std::reverse(rows.begin(), rows.end());
    return rows;
}

std::string RunSeparators::SeparatorPath(const Set& set) {
    if (!set.fileName.empty() && IsAbsolutePath(set.fileName)) return set.fileName;
    if (!set.fileName.empty()) return JoinPath(m_services.workingFolder, set.fileName);
    if (!m_scratch)
        m_scratch = std::make_unique<ScratchFolder>(m_services.files, m_services.options,
                                                    m_services.workingFolder, "Separators");
    m_services.files.MakePrivateFolders(m_scratch->Path());
    return JoinPath(m_scratch->Path(), std::string(set.name) + std::string(FileExtension(set.templateName)));
}

bool RunSeparators::Prepare(Place place, int row, WayFeedback& feedback, RunItem& item,
                            std::string& message) {
    PrintList& list = m_services.list;
    const Set set = SetOf(place);
    message = "there is no separator file in the settings";
    if (set.fileName.empty() && !(set.isGenerated && !set.templateName.empty())) return false;
    item = {};
    item.path = SeparatorPath(set);
    PrinterSelection selection = m_services.selection;
    if (!set.prs.empty() && selection.LoadPrinterSettings(set.prs, message) != 0) return false;
    item.printer = selection.CurrentPrinter();
    if (item.printer.empty()) item.printer = selection.DefaultPrinter();
    item.ticket = selection.Ticket();
    if (!set.isGenerated) return true;
    feedback.ShowRowStatus("Generating separator:" + item.path);
    std::vector<int> rows;
    for (const int member : RowsOfSet(place, row, set))
        for (const int document : DocumentsOfRow(list, member)) rows.push_back(document);
    const int subject = rows.empty() ? -1 : place == Place::kBefore ? rows.front() : rows.back();
    const std::string path(subject < 0 ? "" : list.Text(subject, kColumnFilename));
    SeparatorFacts facts = FindSeparatorFacts(m_services.files, m_services.clock, m_services.machine, path);
    facts.path = HideCredentials(path);
    if (subject >= 0)
        facts.pages = ParseWholeNumber(list.Text(subject, kColumnPages), 0, kMostPages).value_or(0);
    for (const int member : rows) facts.set.push_back(HideCredentials(list.Text(member, kColumnFilename)));
    const std::string source = IsAbsolutePath(set.templateName)
                                   ? set.templateName
                                   : JoinPath(m_services.workingFolder, set.templateName);
    return GenerateSeparator(m_services.files, source, item.path, facts, message) == 0;
}

void RunSeparators::AwaitClear(const RunItem& item, std::int64_t jobId, const WayFeedback& feedback) {
    if (m_services.separators.m_dontCheckClearSeparator || jobId == 0) return;
    if (m_slowPrinters.count(item.printer) > 0) return;
    const long long deadline = m_services.loop.MonotonicMilliseconds() + m_services.options.m_timeAllow;
    while (!feedback.IsStopped() && IsQueued(item.printer, jobId)) {
        if (m_services.loop.MonotonicMilliseconds() >= deadline) {
            m_slowPrinters.insert(item.printer);
            m_services.debugLog.Trace("Separator has not cleared the queue: %s\r\n", item.path);
            return;
        }
        m_services.loop.Wait(kQueuePollMilliseconds);
    }
}

bool RunSeparators::IsQueued(const std::string& printer, std::int64_t jobId) {
    std::vector<JobInfo> jobs;
    m_services.spooler.ListJobs(printer, jobs);
    return std::any_of(jobs.begin(), jobs.end(), [jobId](const JobInfo& job) { return job.id == jobId; });
}

}  // namespace quirepress
