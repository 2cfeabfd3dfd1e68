#include "core/list_insertion.h"

#include <algorithm>

#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "core/page_range.h"
#include "platform/clock.h"
#include "platform/shell.h"
#include "settings/general_options.h"
#include "settings/job_files.h"

namespace quirepress {

namespace {

constexpr std::string_view kErrorStart = "Error - ";
constexpr std::string_view kDeleteMarker = "qprdelete";

bool IsArchiveName(std::string_view path) {
    const std::string ending = ToLowerAscii(path.substr(path.size() - std::min<std::size_t>(path.size(), 8)));
    for (const std::string_view known :
         {"zip", "rar", ".7z", ".tar", ".tgz", ".tar.gz", ".tar.xz", ".tar.bz2", ".tar.zst"})
        if (EndsWith(ending, known)) return true;
    return false;
}

bool IsPdf(std::string_view path) {
    return EndsWith(path, ".pdf") || EndsWith(path, ".PDF") || EndsWith(path, ".Pdf");
}

}  // namespace

ListInsertion::ListInsertion(PrintList& list, int selectMode, std::string_view moveToDir,
                             const ItemTexts& texts)
    : m_list(list),
      m_services(list.m_services),
      m_selectMode(selectMode),
      m_moveToDir(moveToDir),
      m_texts(texts) {}

int ListInsertion::Insert(const std::string& path) {
    if (EndsWith(path, "Thumbs.db")) return 1;
    if (m_selectMode == kReplaceCurrentRow) {
        const int row = m_list.CurrentRow();
        if (row < 0) return 0;
        m_list.SetText(row, kColumnFilename, path);
        const FileFacts facts = m_services.files.Inspect(path);
        m_list.SetText(row, kColumnSizeKb, SizeText(facts));
        m_list.SetText(row, kColumnPages, PagesText(facts.readable ? m_list.m_pages.CountPages(path) : -1));
        return 1;
    }
    const ItemKind kind = KindOfItem(path);
    if (kind == ItemKind::kDownload || kind == ItemKind::kSeparator) return InsertRow(path, {});
    const FileFacts facts = m_services.files.Inspect(path);
    if (facts.kind == FileKind::kFolder) {
        ScanFolder(path, "*.*", true);
        return 1;
    }
    if (m_services.options.m_extractZip && facts.readable && facts.size > 0 && IsArchiveName(path))
        return InsertContained(path, &ListInsertion::InsertArchive);
    if (IsJobFile(path)) return InsertContained(path, &ListInsertion::InsertJob);
    if (m_services.shell.IsShortcut(path) && facts.kind != FileKind::kMissing)
        return InsertContained(path, &ListInsertion::InsertShortcut);
    return InsertRow(path, facts);
}

ColumnTexts ListInsertion::GivenTexts(std::string_view path) const {
    ColumnTexts columns;
    columns[kColumnFilename] = path;
    columns[kColumnMoveTo] = m_moveToDir;
    columns[kColumnAddonParameters] = m_texts.addonParameters;
    columns[kColumnFromDirectory] = m_texts.fromDirectory;
    columns[kColumnProcessingParameters] = m_texts.processingParameters;
    columns[kColumnMoveToOnError] = m_texts.moveToOnError;
    columns[kColumnFileTitle] = m_texts.fileTitle.empty() ? FileTitle(path) : m_texts.fileTitle;
    columns[kColumnExtraOptions] = m_texts.extraOptions;
    columns[kColumnProfiling] = m_texts.profiling;
    columns[kColumnBalancedPrinters] = m_texts.balancedPrinters;
    columns[kColumnPriority] = m_texts.priority;
    return columns;
}

std::string ListInsertion::StatusOf(const std::string& path, const FileFacts& facts) const {
    switch (facts.kind) {
        case FileKind::kMissing:
            return std::string(kStatusNoFile);
        case FileKind::kRegular:
            break;
        case FileKind::kFolder:
        case FileKind::kOther:
            return std::string(kErrorStart) + "Can't open file: it is no document but a device or a pipe";
    }
    if (facts.readable) return facts.size == 0 ? "Empty File" : "Ready.";
    FileResult reason = FileResult::kFailed;
    m_services.files.OpenForReading(path, reason);
    return std::string(kErrorStart) + "Can't open file: " + DescribeFileResult(reason);
}

bool ListInsertion::IsTicked(ItemKind kind, bool isPrintable) const {
    switch (kind) {
        case ItemKind::kCommand:
        case ItemKind::kDownload:
            return true;
        case ItemKind::kSeparator:
            return m_selectMode == 1;
        case ItemKind::kDocument:
            break;
    }
    return m_selectMode == 1 && isPrintable;
}

std::string ListInsertion::DateText(Instant instant) const {
    return instant == kNoInstant ? std::string() : FormatDateTime(m_services.clock.ToLocal(instant));
}

std::string ListInsertion::SizeText(const FileFacts& facts) {
    return facts.readable ? Format("%.1lf", static_cast<double>(facts.size) / 1024.0) : std::string();
}

std::string ListInsertion::PagesText(int pages) {
    return pages >= 0 ? Format("%5.5d", pages) : "Unknown";
}

int ListInsertion::InsertRow(const std::string& path, const FileFacts& facts) {
    const int index = m_list.TakeRowIndex();
    const ItemKind kind = KindOfItem(path);
    const bool isFile = kind == ItemKind::kDocument || kind == ItemKind::kCommand;
    const bool isPrintable = facts.readable && facts.size > 0;
    const int pages = facts.readable ? m_list.m_pages.CountPages(path) : -1;
    const std::string pagesText = PagesText(pages);
    const std::string status = isFile                         ? StatusOf(path, facts)
                               : kind == ItemKind::kSeparator ? "Separator"
                                                              : "Ready.";
    const std::string created = DateText(facts.created);
    const std::string modified = DateText(facts.written);
    const std::string size = SizeText(facts);
    ColumnTexts columns = GivenTexts(path);
    columns[kColumnSelected] = IsTicked(kind, isPrintable) ? "Yes" : "No";
    columns[kColumnPages] = pagesText;
    columns[kColumnStatus] = status;
    columns[kColumnCreated] = created;
    columns[kColumnModified] = modified;
    columns[kColumnSizeKb] = size;
    if (EndsWith(path, ".msg")) columns[kColumnMoveTo] = kDeleteMarker;
    std::string parameters;
    if (IsPdf(path)) {
        parameters = AddPageRange(m_texts.processingParameters, m_texts.extraOptions, pages);
        columns[kColumnProcessingParameters] = parameters;
    }
    m_list.AddRow(index, columns, pages, m_origin);
    return 1;
}

int ListInsertion::InsertRefusal(const std::string& path, std::string_view reason) {
    ColumnTexts columns = GivenTexts(path);
    const std::string text = std::string(kErrorStart) + std::string(reason);
    columns[kColumnSelected] = "No";
    columns[kColumnPages] = "Unknown";
    columns[kColumnStatus] = text;
    m_list.AddRow(m_list.TakeRowIndex(), columns, -1, m_origin).Refuse();
    return 1;
}

}  // namespace quirepress
