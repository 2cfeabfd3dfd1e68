#include "core/run_report.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "base/credentials.h"
#include "base/csv.h"
#include "base/format.h"
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

const char* WordFor(ReportedRow::End end) {
    switch (end) {
        case ReportedRow::End::kPrinted:
            return "Printed";
        case ReportedRow::End::kFailed:
            return "Failed";
        case ReportedRow::End::kSkipped:
            return "Skipped";
        case ReportedRow::End::kStopped:
            return "Stopped";
        case ReportedRow::End::kNotPrinted:
            break;
    }
    return "Not printed";
}

const char* ResultOf(const ReportedRow& row) {
    const bool isGood = row.end == ReportedRow::End::kPrinted;
    if (isGood && row.what == ReportedRow::What::kCommand) return "Applied";
    if (isGood && row.what == ReportedRow::What::kMerged) return "Merged";
    return WordFor(row.end);
}

std::string NameOf(const ReportedRow& row) {
    return ToPrintableLine(HideCredentials(row.path));
}

std::string PagesOf(const ReportedRow& row) {
    return row.pages > 0 ? std::to_string(row.pages) : std::string();
}

bool HasTimes(const ReportedRow& row) {
    return row.end != ReportedRow::End::kNotPrinted && !row.isEarlier;
}

bool IsEarlier(const ReportedRow& row) {
    return row.isEarlier;
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
        AddRowsThat("What went wrong", [](const ReportedRow& row) {
            return row.end != End::kNotPrinted && (row.end != End::kPrinted || !row.remark.empty());
        });
        AddRowsThat("Not printed", [](const ReportedRow& row) { return row.end == End::kNotPrinted; });
        AddAllRows();
        return m_text;
    }

private:
    using End = ReportedRow::End;

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
        const auto count = std::count_if(m_report.rows.begin(), m_report.rows.end(), IsEarlier);
        if (count > 0)
            AddLine(Format("Taken up   lines without a time (%d) ended before the run was cut off",
                           static_cast<int>(count)));
    }

    void AddTotals() {
        AddSection("Totals");
        AddLine(Format("%-11s%12s%12s", "", "Documents", "Pages"));
        for (const End end : {End::kPrinted, End::kFailed, End::kSkipped, End::kStopped, End::kNotPrinted})
            AddTotal(end);
        AddLine(Format("%-11s%12d", "Total", m_documents));
        AddOthers(End::kFailed, "failed");
        AddOthers(End::kStopped, "stopped");
        if (m_report.seconds >= 1)
            AddLine(Format("%-11s%12.1f", "Per minute",
                           60.0 * static_cast<double>(CountPrintedNow()) / m_report.seconds));
    }

    // The night of a failed script has no failed document.
    void AddOthers(End end, std::string_view word) {
        const auto isOther = [end](const ReportedRow& row) {
            const bool isItem =
                row.what == ReportedRow::What::kCommand || row.what == ReportedRow::What::kSeparator;
            return isItem && row.end == end;
        };
        const auto count = std::count_if(m_report.rows.begin(), m_report.rows.end(), isOther);
        if (count == 0) return;
        AddLine(Format("%d other %s (settings, scripts, separators) %s", static_cast<int>(count),
                       count == 1 ? "item" : "items", word));
    }

    long long CountPrintedNow() const {
        const auto isPrintedNow = [](const ReportedRow& row) {
            return row.what == ReportedRow::What::kDocument && row.end == End::kPrinted && !row.isEarlier;
        };
        return std::count_if(m_report.rows.begin(), m_report.rows.end(), isPrintedNow);
    }

    void AddTotal(End end) {
        long long count = 0;
        long long pages = 0;
        for (const ReportedRow& row : m_report.rows) {
            if (row.what != ReportedRow::What::kDocument || row.end != end) continue;
            count += row.copies;
            pages += row.pages;
        }
        m_documents += count;
        const bool isUsual = end != End::kStopped && end != End::kNotPrinted;
        if (isUsual || count > 0)
            AddLine(Format("%-11s%12d%12s", WordFor(end), count,
                           end == End::kPrinted ? std::to_string(pages) : std::string()));
    }

    void AddRowsThat(std::string_view title, const std::function<bool(const ReportedRow& row)>& isWanted) {
        if (std::none_of(m_report.rows.begin(), m_report.rows.end(), isWanted)) return;
        AddSection(title);
        for (const ReportedRow& row : m_report.rows) {
            if (!isWanted(row)) continue;
            AddLine(NameOf(row));
            AddLine("    " + ToPrintableLine(row.status));
            if (!Contains(row.status, row.remark))
                AddLine("    " + ToPrintableLine(HideCredentials(row.remark)));
        }
    }

    void AddAllRows() {
        AddSection("All rows, in the order in which they came");
        AddLine(Format("%5s  %-8s  %8s  %4s  %7s  %-24s  %-11s  %s", "No.", "Time", "Seconds", "Copy",
                       "Pages", "Printer", "Result", "Document"));
        int number = 0;
        for (const ReportedRow& row : m_report.rows) {
            const LocalTime& start = row.startedAt;
            const std::string times = HasTimes(row) ? Format("%.2d:%.2d:%.2d  %8.1f", start.hour,
                                                             start.minute, start.second, row.seconds)
                                                    : std::string();
            AddLine(Format("%5d  %-18s  %4d  %7s  %-24s  %-11s  %s", ++number, times, row.copy, PagesOf(row),
                           ToPrintableLine(row.printer), ResultOf(row), NameOf(row)));
        }
    }

    const RunReport& m_report;
    std::string m_text;
    long long m_documents = 0;
};

std::string CsvLine(const std::vector<std::string>& cells) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) line += (i == 0 ? "" : ",") + SafeCsvCell(cells[i]);
    return line + std::string(kLineEnd);
}

// Another run may have begun in the same second: who makes the text has the name, for the table too. `name`
// becomes the one that was taken.
FileResult WriteTextUnderFreeName(Files& files, const std::string& text, std::string& name) {
    constexpr int kMostReports = 1000;  // of one second
    const std::string stem = name;
    FileResult result = FileResult::kExists;
    for (int number = 1; number < kMostReports && result == FileResult::kExists; ++number) {
        name = number == 1 ? stem : Format("%s (%d)", stem, number);
        result = WriteNewFileDurably(files, name + ".txt", text);
    }
    return result;
}

}  // namespace

std::string RenderTextReport(const RunReport& report) {
    return TextReport(report).Render();
}

std::string RenderCsvReport(const RunReport& report) {
    std::string text = CsvLine({"Number", "Started", "Seconds", "Copy", "Document", "Size KB", "Pages",
                                "Printer", "Result", "Status", "Remark"});
    int number = 0;
    for (const ReportedRow& row : report.rows) {
        const bool hasTimes = HasTimes(row);
        text += CsvLine({std::to_string(++number), hasTimes ? FormatDateTime(row.startedAt) : "",
                         hasTimes ? Format("%.3f", row.seconds) : "", std::to_string(row.copy),
                         HideCredentials(row.path), row.sizeKb, PagesOf(row), row.printer, ResultOf(row),
                         row.status, HideCredentials(row.remark)});
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
    const FileResult made = files.MakeFolders(folder);
    if (made != FileResult::kDone) {
        const char* const why =
            made == FileResult::kExists ? "a file has its name" : DescribeFileResult(made);
        message = "The folder " + folder + " for reports can't be made: " + why + ".";
        return -1;
    }
    std::string name = stem;
    FileResult result = WriteTextUnderFreeName(files, RenderTextReport(report), name);
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
