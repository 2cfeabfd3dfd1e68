#include "core/row_at_work.h"

#include <algorithm>

#include "backends/printer_selection.h"
#include "backends/queue_watch.h"
#include "base/format.h"
#include "base/numbers.h"
#include "core/file_target.h"
#include "core/print_list.h"
#include "core/print_run_source.h"
#include "core/processing_defaults.h"
#include "core/run_outcomes.h"
#include "platform/event_loop.h"
#include "platform/prompts.h"

namespace quirepress {

namespace {

constexpr int kMillisecondsInPauseStep = 250;
constexpr int kPauseStepsInSecond = 4;

}  // namespace

RowAtWork::RowAtWork(const PrintRunServices& services, RunObserver& observer, const bool& stop)
    : m_services(services), m_observer(observer), m_stop(stop) {}

void RowAtWork::BeginRun(int rows, int copies) {
    m_startedAt = m_services.loop.MonotonicMilliseconds();
    m_progress.copies = copies;
    m_observer.OnRunStarted(rows, copies);
}

void RowAtWork::Begin(int row) {
    PrintList& list = m_services.list;
    list.SetCurrentRow(row);
    list.MarkOf(row).pass = m_progress.copy;
    m_progress.row = row;
    m_progress.file = row + 1;
    m_progress.files = list.RowCount();
    m_progress.bytesDone = m_progress.bytesTotal = 0;
    m_services.outcomes.BeginRow();
    m_services.watch.ForgetPages();
    constexpr int kHighestPriority = 99;
    const auto priority = ParseWholeNumber(list.Text(row, kColumnPriority), 1, kHighestPriority);
    m_services.watch.UseRowPriority(static_cast<int>(priority.value_or(0)));
}

void RowAtWork::PutBack() {
    if (Find()) m_services.list.MarkOf(m_progress.row).pass = m_progress.copy - 1;
}

bool RowAtWork::Find() {
    m_progress.row = m_services.list.CurrentRow();
    return m_progress.row >= 0;
}

void RowAtWork::UpdatePace() {
    const long long elapsed = m_services.loop.MonotonicMilliseconds() - m_startedAt;
    if (m_finishedPrints == 0 || elapsed <= 0) return;
    const long long left = std::max(0LL, m_plannedPrints - m_finishedPrints);
    const double seconds = static_cast<double>(elapsed) / 1000.0;
    m_progress.documentsPerMinute = 60.0 * static_cast<double>(m_finishedPrints) / seconds;
    m_progress.secondsLeft = static_cast<std::int64_t>(seconds * static_cast<double>(left) /
                                                       static_cast<double>(m_finishedPrints));
}

bool RowAtWork::Pause(int seconds, bool showInRow) {
    for (int left = seconds; left > 0; --left) {
        const std::string text = Format("Pausing: %d", left);
        m_services.prompts.ShowStatus(text);
        if (showInRow) ShowRowStatus(text);
        for (int step = 0; step < kPauseStepsInSecond && !IsStopped(); ++step)
            m_services.loop.Wait(kMillisecondsInPauseStep);
        if (IsStopped()) return false;
    }
    return true;
}

void RowAtWork::ShowRowStatus(std::string_view status) {
    if (!Find()) return;
    m_services.list.SetText(m_progress.row, kColumnStatus, status);
    m_observer.OnProgress(m_progress);
}

void RowAtWork::ShowBytes(std::int64_t done, std::int64_t total) {
    m_progress.bytesDone = done;
    m_progress.bytesTotal = total;
    UpdatePace();
    if (Find()) m_observer.OnProgress(m_progress);
}

bool RowAtWork::KeepGoing() {
    m_services.loop.Pump();
    return !IsStopped();
}

bool IsTicked(const PrintList& list, int row) {
    return list.Text(row, kColumnSelected) == "Yes";
}

std::string PrinterOfRun(const PrintRunServices& services) {
    const std::string& current = services.selection.CurrentPrinter();
    return current.empty() ? services.selection.DefaultPrinter() : current;
}

RunItem ReadRunItem(const PrintRunServices& services, int row) {
    const PrintList& list = services.list;
    const auto text = [&](Column column) { return std::string(list.Text(row, column)); };
    RunItem item;
    item.path = text(kColumnFilename);
    item.kind = KindInRun(item.path);
    item.printer = PrinterOfRun(services);
    item.ticket = services.selection.Ticket();
    item.pages = text(kColumnPages);
    item.sizeKb = text(kColumnSizeKb);
    item.printDirect = text(kColumnPrintDirect);
    item.processingParameters = text(kColumnProcessingParameters);
    item.addonParameters = text(kColumnAddonParameters);
    item.extraOptions = text(kColumnExtraOptions);
    // A merged file holds just the pages that its rows ask for.
    const bool takesDefaults = item.kind == ItemKind::kDocument && !IsMergedFile(item.path) &&
                               ReadPageRange(item.extraOptions).kind == PageRange::Kind::kNone;
    if (item.processingParameters.empty() && takesDefaults)
        item.processingParameters = services.processing.Parameters();
    item.balancedPrinters = text(kColumnBalancedPrinters);
    return item;
}

}  // namespace quirepress
