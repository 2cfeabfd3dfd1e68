#include "core/run_outcomes.h"

#include <algorithm>
#include <vector>

#include "base/format.h"
#include "base/text.h"
#include "core/file_target.h"
#include "core/print_list.h"
#include "core/print_run_shell.h"
#include "core/print_run_source.h"
#include "core/reported_rows.h"
#include "core/run_notices.h"
#include "logs/error_log.h"
#include "logs/print_log.h"
#include "platform/clock.h"
#include "platform/event_loop.h"
#include "platform/machine.h"
#include "platform/prompts.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

ReportedRow::What WhatIs(const RowEnd& row) {
    return row.isMerged ? ReportedRow::What::kMerged : WhatIs(row.item.kind);
}

ReportedRow::End EndOf(const RowEnd& row) {
    if (row.result.end == WayResult::End::kStopped) return ReportedRow::End::kStopped;
    return EndOf(row.outcome);
}

std::string PrintersOf(const RowEnd& row) {
    std::vector<std::string> printers = row.result.printers;
    std::sort(printers.begin(), printers.end());
    std::string names;
    for (const std::string& printer : printers) names += (names.empty() ? "" : ", ") + printer;
    return names.empty() ? row.item.printer : names;
}

}  // namespace

void RunOutcomes::BeginRun(std::string_view printer, int copies, std::function<bool()> isStopped) {
    m_report = {};
    m_reportPath.clear();
    m_report.machine = m_services.machine.HostName();
    m_report.user = m_services.machine.LoginName();
    m_report.printer = printer;
    m_report.copies = copies;
    m_report.startedAt = m_services.clock.ToLocal(m_services.clock.Now());
    m_startedAt = m_services.loop.MonotonicMilliseconds();
    m_services.postPrint.UseStop(std::move(isStopped));
    BeginRow();
}

void RunOutcomes::BeginRow() {
    m_rowStartedAt = m_services.clock.ToLocal(m_services.clock.Now());
    m_rowStart = m_services.loop.MonotonicMilliseconds();
}

void RunOutcomes::RecordRow(const RowEnd& row) {
    if (row.outcome == RowOutcome::kNotSelected) return;
    const RunItem& item = row.item;
    const WayResult& result = row.result;
    // What was stopped is no failure of the document, and may be printed another time.
    const bool wasStopped = result.end == WayResult::End::kStopped && result.isUntouched;
    const bool hasFlaw = row.outcome == RowOutcome::kFailed || !result.remark.empty();
    if (!row.isMerged && !wasStopped && hasFlaw)
        RecordError(item.path, PrintersOf(row), result.remark.empty() ? result.status : result.remark);
    const bool cameOut = row.outcome == RowOutcome::kDone || result.wholeCopies > 0;
    if (cameOut && WhatIs(row) == ReportedRow::What::kDocument)
        NoteWriting(m_services.printLog.WritePrintLogRecord(item.path, row.pages, PrintersOf(row)));
    if (m_services.options.m_generateReports) ReportRow(row);
}

void RunOutcomes::ReportRow(const RowEnd& row) {
    ReportedRow reported;
    reported.what = WhatIs(row);
    reported.end = EndOf(row);
    reported.startedAt = m_rowStartedAt;
    reported.seconds = static_cast<double>(m_services.loop.MonotonicMilliseconds() - m_rowStart) / 1000.0;
    reported.copy = row.copy;
    reported.path = row.item.path;
    reported.pages = row.pages;
    reported.sizeKb = row.item.sizeKb;
    reported.printer = PrintersOf(row);
    reported.status = row.result.status;
    reported.remark = row.result.remark;
    m_report.rows.push_back(std::move(reported));
}

void RunOutcomes::ReportEarlierRow(const EarlierRow& row) {
    if (m_services.options.m_generateReports) AddEarlierRow(row, m_report.rows);
}

void RunOutcomes::RecordError(std::string_view path, std::string_view printer, std::string_view error) {
    if (!m_services.options.m_errorLog) return;
    ErrorRecord record;
    record.source = path;
    record.error = error;
    record.printer = printer;
    if (m_services.errorLog.Append(record) != 0) m_errorLogFailed = m_hasLostRecords = true;
}

void RunOutcomes::NoteWriting(int result) {
    if (result != 0) m_hasLostRecords = true;
}

bool RunOutcomes::HasTarget(const PrintedRow& row, PrintEnd end) const {
    return m_services.postPrint.HasTarget(row, end);
}

void RunOutcomes::NoteJobFile(const PrintedRow& row, PrintEnd end) {
    m_services.postPrint.NoteJobFile(row, end);
}

RowHandled RunOutcomes::HandleFile(const PrintedRow& row, PrintEnd end, std::string& failure) {
    const RowHandled handled = m_services.postPrint.Handle(row, end);
    if (handled != RowHandled::kFailed) return handled;
    failure = m_services.postPrint.LastFailure();
    ReportFilingFailure(row.path, failure);
    return handled;
}

// With the last attempt at its row.
void RunOutcomes::ReportFilingFailure(const std::string& path, const std::string& failure) {
    std::vector<ReportedRow>& rows = m_report.rows;
    const auto isOfFile = [&path](const ReportedRow& row) { return row.path == path; };
    const auto found = std::find_if(rows.rbegin(), rows.rend(), isOfFile);
    if (found == rows.rend()) return;
    found->remark += (found->remark.empty() ? "" : "; ") + failure;
}

void RunOutcomes::TellFailure(std::string_view path, std::string_view status) {
    const LocalTime now = m_services.clock.ToLocal(m_services.clock.Now());
    std::string words = status == kStatusBadPdf ? "Can't Print - Bad PDF File" : "Can't Print Error";
    // Where no file says what it is about.
    if (path.empty()) words += " - " + ToPrintableLine(status);
    m_services.notices.Notify(kNoticePrintError, ErrorNoticeBody(now, words, path), "");
}

void RunOutcomes::EndRun(PrintList& list, int passes, bool wasStopped) {
    if (wasStopped && m_services.options.m_generateReports)
        AddRowsNotPrinted(list, passes, "The run was stopped before its turn", m_report.rows);
    WriteReports(wasStopped);
    if (!m_services.postPrint.AtRunEnd(list, passes)) m_hasLostRecords = true;
    TellFailedErrorLog();
    m_services.notices.Notify(kNoticePrintsFinished, "\r\nStatus: Print(s) Finished\r\n", m_reportPath);
    m_services.postPrint.UseStop([] { return false; });
}

void RunOutcomes::EndRefusedRun(PrintList& list, int passes, std::string_view reason) {
    RecordError("", m_report.printer, reason);
    if (m_services.options.m_generateReports) AddRowsNotPrinted(list, passes, reason, m_report.rows);
    WriteReports(false);
    TellFailedErrorLog();
    TellFailure("", reason);
    m_services.postPrint.UseStop([] { return false; });
}

void RunOutcomes::TellFailedErrorLog() {
    if (std::exchange(m_errorLogFailed, false))
        m_services.prompts.ShowBox("Log File Error", "Can't open error.log for writing");
}

void RunOutcomes::WriteReports(bool wasStopped) {
    if (!m_services.options.m_generateReports) return;
    m_report.endedAt = m_services.clock.ToLocal(m_services.clock.Now());
    m_report.seconds = static_cast<double>(m_services.loop.MonotonicMilliseconds() - m_startedAt) / 1000.0;
    m_report.wasStopped = wasStopped;
    std::string message;
    const int result =
        WriteRunReports(m_services.files, m_services.workingFolder, m_report, m_reportPath, message);
    NoteWriting(result);
    if (result != 0) m_services.prompts.ShowBox("Report Error", message);
}

}  // namespace quirepress
