#include "core/run_outcomes.h"

#include "core/print_run_shell.h"
#include "core/run_notices.h"
#include "logs/error_log.h"
#include "logs/print_log.h"
#include "platform/clock.h"
#include "platform/event_loop.h"
#include "platform/machine.h"
#include "platform/prompts.h"
#include "settings/general_options.h"

namespace quirepress {

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
    const RunItem& item = row.item;
    const bool isDocument = item.kind != ItemKind::kCommand;
    const std::string& flaw = row.result.remark.empty() ? row.result.status : row.result.remark;
    // What was stopped is no failure of the document, and may be printed another time.
    const bool wasStopped = row.result.end == WayResult::End::kStopped;
    if (!wasStopped && (row.outcome == RowOutcome::kFailed || !row.result.remark.empty()))
        RecordError(item.path, item.printer, flaw);
    if (row.outcome == RowOutcome::kDone && isDocument)
        m_services.printLog.WritePrintLogRecord(item.path, row.pages, item.printer);
    if (row.outcome == RowOutcome::kNotSelected || !m_services.options.m_generateReports) return;
    ReportedRow reported;
    reported.startedAt = m_rowStartedAt;
    reported.seconds = static_cast<double>(m_services.loop.MonotonicMilliseconds() - m_rowStart) / 1000.0;
    reported.copy = row.copy;
    reported.path = item.path;
    reported.pages = item.pages;
    reported.sizeKb = item.sizeKb;
    reported.printer = item.printer;
    reported.status = row.result.status;
    reported.outcome = row.outcome;
    reported.isDocument = isDocument;
    m_report.rows.push_back(std::move(reported));
}

void RunOutcomes::RecordError(std::string_view path, std::string_view printer, std::string_view error) {
    if (!m_services.options.m_errorLog) return;
    ErrorRecord record;
    record.source = path;
    record.error = error;
    record.printer = printer;
    if (m_services.errorLog.Append(record) != 0) m_errorLogFailed = true;
}

void RunOutcomes::NoteJobFile(const PrintedRow& row, PrintEnd end) {
    m_services.postPrint.NoteJobFile(row, end);
}

RowHandled RunOutcomes::HandleFile(const PrintedRow& row, PrintEnd end) {
    return m_services.postPrint.Handle(row, end);
}

void RunOutcomes::TellFailure(std::string_view path, std::string_view status) {
    const LocalTime now = m_services.clock.ToLocal(m_services.clock.Now());
    const std::string_view words =
        status == kStatusBadPdf ? "Can't Print - Bad PDF File" : "Can't Print Error";
    m_services.notices.Notify(kNoticePrintError, ErrorNoticeBody(now, words, path), "");
}

void RunOutcomes::EndRun(PrintList& list, int passes, bool wasStopped) {
    m_services.postPrint.AtRunEnd(list, passes);
    WriteReports(wasStopped);
    if (std::exchange(m_errorLogFailed, false))
        m_services.prompts.ShowBox("Log File Error", "Can't open error.log for writing");
    m_services.notices.Notify(kNoticePrintsFinished, "\r\nStatus: Print(s) Finished\r\n", m_reportPath);
    m_services.postPrint.UseStop([] { return false; });
}

void RunOutcomes::WriteReports(bool wasStopped) {
    if (!m_services.options.m_generateReports) return;
    m_report.endedAt = m_services.clock.ToLocal(m_services.clock.Now());
    m_report.seconds = static_cast<double>(m_services.loop.MonotonicMilliseconds() - m_startedAt) / 1000.0;
    m_report.wasStopped = wasStopped;
    std::string message;
    if (WriteRunReports(m_services.files, m_services.workingFolder, m_report, m_reportPath, message) != 0)
        m_services.prompts.ShowBox("Report Error", message);
}

}  // namespace quirepress
