#include "core/print_list.h"

#include <algorithm>
#include <utility>

#include "base/format.h"
#include "base/text.h"
#include "core/list_insertion.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

constexpr long long kPumpEvery = 100;  // milliseconds

std::string_view ToView(const char* text) {
    return text == nullptr ? std::string_view() : std::string_view(text);
}

}  // namespace

PrintList::PrintList(PrintListServices services)
    : m_services(std::move(services)),
      m_pages(m_services.files, m_services.pdfCounter, m_services.options, m_services.fullPdfCount) {}

std::string_view PrintList::Text(int row, int column) const {
    const bool exists = row >= 0 && row < RowCount() && column >= 0 && column < kColumnCount;
    return exists ? m_rows[static_cast<std::size_t>(row)].Text(column) : std::string_view();
}

void PrintList::SetText(int row, int column, std::string_view text) {
    const bool exists = row >= 0 && row < RowCount() && column >= 0 && column < kColumnCount;
    if (exists) m_rows[static_cast<std::size_t>(row)].SetText(column, text);
}

std::map<std::string, SourceVersion> PrintList::TakeUnpackedArchives() {
    std::map<std::string, SourceVersion> archives;
    for (ListItem& item : m_rows) {
        if (item.Text(kColumnSelected) != "Yes" && !item.Mark().isAppended) continue;
        for (RowOrigin* origin = item.Origin(); origin != nullptr; origin = origin->outer.get())
            if (origin->kind == RowOrigin::Kind::kArchive && !origin->path.empty())
                archives.insert_or_assign(std::exchange(origin->path, {}), origin->version);
    }
    return archives;
}

void PrintList::RemoveRow(int row) {
    if (row < 0 || row >= RowCount()) return;
    m_rows.erase(m_rows.begin() + row);
    ++m_version;
    if (m_currentRow == row)
        m_currentRow = -1;
    else if (m_currentRow > row)
        --m_currentRow;
}

void PrintList::Clear() {
    m_rows.clear();
    ++m_version;
    m_currentRow = -1;
}

std::deque<ListItem> PrintList::ExchangeRows(std::deque<ListItem> rows) {
    std::deque<ListItem> before = std::move(m_rows);
    Clear();
    m_rows = std::move(rows);
    return before;
}

void PrintList::AppendRow(const ColumnTexts& texts, const RunMark& mark, std::string_view jobFile) {
    std::shared_ptr<RowOrigin> job;
    if (!jobFile.empty())
        job = std::make_shared<RowOrigin>(RowOrigin{RowOrigin::Kind::kJobFile, std::string(jobFile)});
    ListItem& item = AddRow(RowCount(), texts, -1, std::move(job));
    item.Mark() = mark;
    // A run sets the status of all other unticked rows anew.
    const bool isTold = texts[kColumnSelected] == "Yes" || mark.isAppended;
    if (!isTold && StartsWith(texts[kColumnStatus], "Error")) item.Refuse();
}

int PrintList::InsertFileIntoList(std::string_view path, int selectMode, std::string_view moveToDir,
                                  const ItemTexts& texts) {
    return ListInsertion(*this, selectMode, moveToDir, texts).Insert(std::string(path));
}

int PrintList::InsertFileAtRow(int row, std::string_view path, int selectMode, std::string_view moveToDir,
                               const ItemTexts& texts) {
    const int pending = std::exchange(m_pendingPosition, row);
    const int selected = std::exchange(m_selectedRow, -1);
    const int start = std::exchange(m_startPosition, -1);
    const int result = InsertFileIntoList(path, selectMode, moveToDir, texts);
    m_pendingPosition = pending;
    m_selectedRow = selected;
    m_startPosition = start;
    return result;
}

int PrintList::ExInsertItemsIntoList(const char* fileName, int selectMode, const char* moveToDir) {
    InsertFileIntoList(ToView(fileName), selectMode, ToView(moveToDir), {});
    return 1;
}

int PrintList::ExInsertItemsIntoListPos(const char* fileName, int selectMode, const char* moveToDir, int row,
                                        const char* addonParams) {
    ExInsertItemsIntoList(fileName, selectMode, moveToDir);
    const std::string_view parameters = ToView(addonParams);
    if (!parameters.empty()) SetText(row, kColumnAddonParameters, parameters);
    return 1;
}

int PrintList::DoScanDir(std::string_view folder, std::string_view mask, bool descend, int selectMode,
                         std::string_view moveToDir, const ItemTexts& texts) {
    return ListInsertion(*this, selectMode, moveToDir, texts)
        .ScanFolder(std::string(folder), std::string(mask), descend);
}

int PrintList::TakeRowIndex() {
    int index = RowCount();
    if (m_pendingPosition >= 0) {
        index = m_pendingPosition;
        m_pendingPosition = -1;
    }
    if (m_selectedRow >= 0) index = m_selectedRow;
    if (m_startPosition >= 0) index = m_startPosition - 1;
    return index;
}

ListItem& PrintList::AddRow(int index, const ColumnTexts& texts, int keptPages,
                            std::shared_ptr<RowOrigin> origin) {
    index = std::clamp(index, 0, RowCount());
    ListItem& item = *m_rows.emplace(m_rows.begin() + index, texts);
    item.KeepPages(keptPages);
    item.SetOrigin(std::move(origin));
    ++m_version;
    if (m_currentRow >= index) ++m_currentRow;
    return item;
}

void PrintList::RefreshListStatus() {
    for (int row = 0; row < RowCount() && KeepGoing(); ++row) RefreshRow(row);
}

bool PrintList::IsRefused(int row) const {
    return m_rows[static_cast<std::size_t>(row)].IsRefused() && Text(row, kColumnSelected) != "Yes";
}

void PrintList::RefreshRow(int row) {
    if (IsRefused(row)) return;
    const std::string path(Text(row, kColumnFilename));
    const bool exists = m_services.files.Inspect(path).kind != FileKind::kMissing;
    const bool isCounted = (Contains(path, ".pdf") || Contains(path, ".PDF")) && m_pages.IsCounting();
    const int counted = isCounted && exists ? m_pages.CountPdfPages(path) : -1;
    // The counting may have pumped; a row that has moved meanwhile is left to the next refresh.
    if (row >= RowCount() || Text(row, kColumnFilename) != path) return;
    ListItem& item = m_rows[static_cast<std::size_t>(row)];
    std::string pages = "Unknown";
    if (counted >= 0) {
        pages = Format("%5.5d", counted);
    } else if (!isCounted && item.KeptPages() >= 0) {
        pages = Format(m_services.options.m_pageMask ? "%5.5d" : "%d", item.KeptPages());
    }
    const bool isProtected = m_protectUntickedRows && item.Text(kColumnSelected) == "No";
    if (!isProtected) item.SetText(kColumnStatus, "Ready");
    if (!exists && path != kSeparatorText) item.SetText(kColumnStatus, kStatusNoFile);
    item.SetText(kColumnPages, pages);
}

RowColour PrintList::ColourListRow(int row) const {
    const std::string_view path = Text(row, kColumnFilename);
    const std::string_view status = Text(row, kColumnStatus);
    const bool isMissing = status == kStatusNoFile && path != kSeparatorText;
    if (status == "Empty File" || isMissing || StartsWith(status, "Error")) return RowColour::kError;
    if (IsCommandItem(path)) return RowColour::kCommand;
    return status == "Separator" ? RowColour::kSeparator : RowColour::kNormal;
}

bool PrintList::KeepGoing() {
    const long long now = m_services.loop.MonotonicMilliseconds();
    if (now - m_lastPump >= kPumpEvery) {
        m_services.loop.Pump();
        m_lastPump = m_services.loop.MonotonicMilliseconds();
    }
    return m_services.keepGoing();
}

}  // namespace quirepress
