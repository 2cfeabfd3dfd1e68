#include "logs/log_exports.h"

#include <cstdint>
#include <memory>
#include <vector>

#include "base/csv.h"
#include "base/numbers.h"
#include "base/text.h"
#include "logs/buffered_output.h"
#include "logs/error_log.h"
#include "logs/log_pieces.h"
#include "logs/print_log.h"
#include "platform/file_tools.h"
#include "platform/prompts.h"

namespace quirepress {

namespace {

constexpr const char* kErrorTitle = "Log File Export Error";
constexpr std::size_t kNoColumn = static_cast<std::size_t>(-1);

struct CsvFormat {
    std::vector<RecordColumn> columns;
    std::size_t totalledColumn;
    const char* dialogTitle;
    const char* questionTitle;
    const char* readFailure;
};

const CsvFormat& PrintFormat() {
    constexpr std::size_t kPagesColumn = 5;
    static const CsvFormat format = {PrintRecordLayout().columns, kPagesColumn,
                                     "Export Print Log to CSV file", "Export Log",
                                     "Can't open print.log for reading"};
    return format;
}

const CsvFormat& ErrorFormat() {
    // The last column goes on to the end of what the writer, who does not cut it, may have put there.
    static const CsvFormat format = {{{"Date", 0, 20},
                                      {"Time", 20, 20},
                                      {"Filename From", 40, 200},
                                      {"Filename To", 240, 200},
                                      {"Error Message", 440, 200},
                                      {"Printer", 640, 200}},
                                     kNoColumn,
                                     "Export Error Log to CSV file",
                                     "Export Error Log",
                                     "Can't open error.log for reading"};
    return format;
}

using CsvOutput = BufferedOutput<ReplacementFile>;

// The row of one line; the field of the totalled column, if there is one, is added to `total`.
void WriteRow(const CsvFormat& format, std::string_view line, bool isGuarded, CsvOutput& output,
              std::int64_t& total) {
    for (std::size_t i = 0; i < format.columns.size(); ++i) {
        const RecordColumn& column = format.columns[i];
        std::string_view field;
        if (column.start < line.size()) field = TrimTrailingBlanks(line.substr(column.start, column.width));
        if (i == format.totalledColumn) total += ParseLong(field);
        if (i != 0) output.Append(",");
        if (isGuarded)
            output.Append(SafeCsvCell(field));
        else
            output.Append(field);
    }
    output.Append(kRecordEnd);
}

void WriteHeader(const CsvFormat& format, CsvOutput& output) {
    for (std::size_t i = 0; i < format.columns.size(); ++i) {
        if (i != 0) output.Append(",");
        output.Append(format.columns[i].title);
    }
    output.Append(kRecordEnd);
}

void WriteTotal(const CsvFormat& format, std::int64_t total, CsvOutput& output) {
    for (std::size_t i = 0; i < format.columns.size(); ++i) {
        if (i != 0) output.Append(",");
        if (i == format.totalledColumn) output.Append(std::to_string(total));
    }
    output.Append(kRecordEnd);
}

class CsvExport {
public:
    CsvExport(Files& files, Prompts& prompts, const LogExport& request, const CsvFormat& format)
        : m_files(files),
          m_prompts(prompts),
          m_request(request),
          m_format(format),
          m_isInteractive(request.target == kAskForTarget),
          m_target(request.target) {}

    int Run() {
        if (m_isInteractive) m_target = m_prompts.AskSavePath(m_format.dialogTitle, "*.csv");
        if (m_target.empty()) return m_isInteractive ? 0 : Complain();
        FileResult result = FileResult::kFailed;
        const std::unique_ptr<InputFile> log = m_files.OpenForReading(m_request.logPath, result);
        if (!log) {
            m_prompts.ShowBox(kErrorTitle, m_format.readFailure);
            return -1;
        }
        if (IsLogItself() || Write(*log) != FileResult::kDone) return Complain();
        if (m_isInteractive) TellAndOffer();
        return 0;
    }

private:
    bool IsLogItself() { return m_files.ResolvePath(m_target) == m_files.ResolvePath(m_request.logPath); }

    FileResult Write(InputFile& log) {
        ReplacementFile file(m_files, m_target);
        if (file.Result() != FileResult::kDone) return file.Result();
        CsvOutput output(file);
        if (IsWanted("Do you want to include a description header ?")) WriteHeader(m_format, output);
        std::int64_t total = 0;
        LogPieces pieces(log);
        for (std::string_view piece; pieces.TakePiece(piece) && output.Result() == FileResult::kDone;)
            WriteRow(m_format, WithoutLineEnd(piece), m_request.isGuarded, output, total);
        if (pieces.HasFailed()) return FileResult::kFailed;
        if (m_format.totalledColumn != kNoColumn && IsWanted("Do you want to include page total count ?"))
            WriteTotal(m_format, total, output);
        const FileResult result = output.Flush();
        return result == FileResult::kDone ? file.Finish() : result;
    }

    bool IsWanted(const char* question) {
        return !m_isInteractive || m_prompts.AskYesNo(m_format.questionTitle, question, true);
    }

    int Complain() {
        m_prompts.ShowBox(kErrorTitle, "Can't write to " + m_target);
        return -1;
    }

    void TellAndOffer() {
        m_prompts.ShowBox("Done", "Log File Saved");
        if (!m_request.openFile) return;
        if (m_prompts.AskYesNo("Open File", "Do you want to open file now in excel ?", false))
            m_request.openFile(m_target);
    }

    Files& m_files;
    Prompts& m_prompts;
    const LogExport& m_request;
    const CsvFormat& m_format;
    bool m_isInteractive;
    std::string m_target;
};

}  // namespace

int ExportPrintLogCsv(Files& files, Prompts& prompts, const LogExport& request) {
    return CsvExport(files, prompts, request, PrintFormat()).Run();
}

int ExportErrorLogCsv(Files& files, Prompts& prompts, const LogExport& request) {
    return CsvExport(files, prompts, request, ErrorFormat()).Run();
}

}  // namespace quirepress
