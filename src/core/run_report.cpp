#include "core/run_report.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "base/csv.h"
#include "base/format.h"
#include "base/numbers.h"
#include "base/path.h"
#include "base/text.h"
#include "platform/file_tools.h"
#include "platform/files.h"

namespace quirepress {

namespace {

constexpr std::string_view kLineEnd = "\r\n";

std::string Duration(double seconds) {
    const auto whole = static_cast<long long>(std::llround(seconds));
    return Format("%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60, whole % 60);
}

int PagesOf(const ReportedRow& row) {
    return static_cast<int>(ParseWholeNumber(row.pages, 0, 999'999).value_or(0));
}

const char* OutcomeWord(RowOutcome outcome) {
    switch (outcome) {
        case RowOutcome::kDone:
            return "Printed";
        case RowOutcome::kSkipped:
            return "Skipped";
        case RowOutcome::kFailed:
            return "Failed";
        case RowOutcome::kNotSelected:
            break;
    }
    return "Not selected";
}

class TextReport {
public:
    explicit TextReport(const RunReport& report) : m_report(report) {}

    std::string Render() {
        const std::string title = "Print Job " + FormatDateTime(m_report.startedAt);
        AddLine(title);
        AddLine(std::string(title.size(), '='));
        AddLine("");
        AddHead();
        AddTotals();
        AddFailures();
        AddRows();
        return m_text;
    }

private:
    void AddLine(std::string_view line) { m_text += std::string(line) + std::string(kLineEnd); }

    void AddSection(std::string_view title) {
        AddLine("");
        AddLine(title);
        AddLine(std::string(title.size(), '-'));
    }

    void AddHead() {
        AddLine(
            Format("Computer   %s (%s)", ToPrintableLine(m_report.machine), ToPrintableLine(m_report.user)));
        AddLine("Printer    " + ToPrintableLine(m_report.printer));
        AddLine("Started    " + FormatDateTime(m_report.startedAt));
        AddLine(Format("Finished   %s (%s)%s", FormatDateTime(m_report.endedAt), Duration(m_report.seconds),
                       m_report.wasStopped ? ", stopped before its end" : ""));
        AddLine(Format("Copies     %d", m_report.copies));
    }

    void AddTotals() {
        AddSection("Totals");
        AddLine(Format("%-10s%12s%12s", "", "Documents", "Pages"));
        int documents = 0;
        for (const RowOutcome outcome : {RowOutcome::kDone, RowOutcome::kFailed, RowOutcome::kSkipped}) {
            int count = 0;
            long long pages = 0;
            for (const ReportedRow& row : m_report.rows) {
                if (!row.isDocument || row.outcome != outcome) continue;
                ++count;
                pages += PagesOf(row);
            }
            documents += count;
            AddLine(Format("%-10s%12d%12s", OutcomeWord(outcome), count,
                           outcome == RowOutcome::kDone ? std::to_string(pages) : std::string()));
        }
        AddLine(Format("%-10s%12d", "Total", documents));
        if (m_report.seconds >= 1)
            AddLine(Format("%-10s%12.1f", "Per minute", 60.0 * documents / m_report.seconds));
    }

    void AddFailures() {
        const auto isBad = [](const ReportedRow& row) {
            return row.outcome == RowOutcome::kFailed || row.outcome == RowOutcome::kSkipped;
        };
        if (std::none_of(m_report.rows.begin(), m_report.rows.end(), isBad)) return;
        AddSection("Not printed");
        for (const ReportedRow& row : m_report.rows) {
            if (!isBad(row)) continue;
            AddLine(ToPrintableLine(row.path));
            AddLine("    " + ToPrintableLine(row.status));
        }
    }

    void AddRows() {
        AddSection("Everything in order");
        AddLine(Format("%5s  %-8s  %8s  %4s  %7s  %-24s  %-9s  %s", "No.", "Time", "Seconds", "Copy", "Pages",
                       "Printer", "Result", "Document"));
        int number = 0;
        for (const ReportedRow& row : m_report.rows)
            AddLine(Format("%5d  %.2d:%.2d:%.2d  %8.1f  %4d  %7s  %-24s  %-9s  %s", ++number,
                           row.startedAt.hour, row.startedAt.minute, row.startedAt.second, row.seconds,
                           row.copy, row.pages, ToPrintableLine(row.printer),
                           row.isDocument ? OutcomeWord(row.outcome) : "Command", ToPrintableLine(row.path)));
    }

    const RunReport& m_report;
    std::string m_text;
};

std::string CsvLine(const std::vector<std::string>& cells) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) line += (i == 0 ? "" : ",") + SafeCsvCell(cells[i]);
    return line + std::string(kLineEnd);
}

}  // namespace

std::string RenderTextReport(const RunReport& report) {
    return TextReport(report).Render();
}

std::string RenderCsvReport(const RunReport& report) {
    std::string text = CsvLine({"Number", "Started", "Seconds", "Copy", "Document", "Size KB", "Pages",
                                "Printer", "Result", "Status"});
    int number = 0;
    for (const ReportedRow& row : report.rows) {
        text += CsvLine({std::to_string(++number), FormatDateTime(row.startedAt), Format("%.3f", row.seconds),
                         std::to_string(row.copy), row.path, row.sizeKb, row.pages, row.printer,
                         row.isDocument ? OutcomeWord(row.outcome) : "Command", row.status});
    }
    return text;
}

int WriteRunReports(Files& files, std::string_view workingFolder, const RunReport& report, std::string& path,
                    std::string& message) {
    const LocalTime& time = report.startedAt;
    const std::string folder = JoinPath(workingFolder, "Reports");
    const std::string stem =
        JoinPath(folder, Format("Print Job %.4d-%.2d-%.2d %.2d%.2d%.2d", time.year, time.month, time.day,
                                time.hour, time.minute, time.second));
    FileResult result = files.MakeFolders(folder);
    std::string name = stem;
    for (int i = 2; i < 1000 && files.Inspect(name + ".txt").kind != FileKind::kMissing; ++i)
        name = Format("%s (%d)", stem, i);
    if (result == FileResult::kDone)
        result = ReplaceFileDurably(files, name + ".txt", RenderTextReport(report));
    if (result == FileResult::kDone)
        result = ReplaceFileDurably(files, name + ".csv", RenderCsvReport(report));
    if (result == FileResult::kDone) {
        path = name + ".txt";
        return 0;
    }
    message = "The report " + name + " can't be written: " + DescribeFileResult(result) + ".";
    return -1;
}

}  // namespace quirepress
