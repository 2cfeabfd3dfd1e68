#include "logs/fixed_record.h"

#include <memory>
#include <utility>

#include "base/credentials.h"
#include "base/text.h"
#include "logs/log_lines.h"
#include "platform/file_tools.h"

namespace quirepress {

namespace {

std::string OneLine(std::string_view text) {
    std::string field = HideCredentials(text);
    for (char& c : field)
        if (c == '\r' || c == '\n' || c == '\0') c = ' ';
    return field;
}

// Whether the log ends inside a line.
bool HasHalfLine(Files& files, std::string_view path) {
    FileResult result = FileResult::kFailed;
    const std::unique_ptr<InputFile> file = files.OpenForReading(path, result);
    char last = '\n';
    if (!file || file->Size() <= 0) return false;
    return file->ReadAt(file->Size() - 1, &last, 1) == 1 && last != '\n';
}

}  // namespace

std::string FormatRecord(const RecordLayout& layout, const std::vector<std::string>& fields) {
    std::string record;
    std::size_t end = 0;
    for (std::size_t i = 0; i < layout.columns.size(); ++i) {
        const RecordColumn& column = layout.columns[i];
        std::string field = i < fields.size() ? OneLine(fields[i]) : std::string();
        if (field.size() < column.width || column.isCut) field.resize(column.width, ' ');
        record.append(column.start - end, '\t');
        record += field;
        end = column.start + column.width;
    }
    record += kRecordEnd;
    return record;
}

std::vector<std::string> CutRecord(const RecordLayout& layout, std::string_view line) {
    std::vector<std::string> fields;
    for (const RecordColumn& column : layout.columns) {
        const bool isThere = column.start < line.size();
        const std::size_t width = column.width == 0 ? line.size() : column.width;
        fields.emplace_back(
            TrimTrailingBlanks(isThere ? line.substr(column.start, width) : std::string_view()));
    }
    return fields;
}

int ReadRecords(Files& files, std::string_view path, const RecordLayout& layout,
                std::vector<std::vector<std::string>>& records) {
    FileResult result = FileResult::kFailed;
    const std::unique_ptr<InputFile> file = files.OpenForReading(path, result);
    if (!file) return -1;
    LogLines lines(*file);
    for (std::string_view line; lines.TakeLine(line);)
        if (!line.empty()) records.push_back(CutRecord(layout, line));
    return lines.HasFailed() ? -1 : 0;
}

int ReplaceRecords(Files& files, std::string_view path, const RecordLayout& layout,
                   const std::vector<std::vector<std::string>>& records) {
    ReplacementFile file(files, path);
    for (const std::vector<std::string>& fields : records) {
        const std::string record = FormatRecord(layout, fields);
        file.Write(record.data(), record.size());
    }
    return file.Finish() == FileResult::kDone ? 0 : -1;
}

int AppendRecord(Files& files, std::string_view path, std::string record) {
    bool isOpen = false;
    return WriteRecord(files, path, std::move(record), isOpen) == FileResult::kDone ? 0 : -1;
}

FileResult WriteRecord(Files& files, std::string_view path, std::string record, bool& isOpen) {
    if (HasHalfLine(files, path)) record.insert(0, kRecordEnd);
    FileResult result = FileResult::kFailed;
    const std::unique_ptr<OutputFile> file =
        files.OpenForWriting(path, OpenMode::kAppend, FileAccess::kShared, result);
    isOpen = file != nullptr;
    if (!file) return result;
    result = file->Write(record.data(), record.size());
    if (result == FileResult::kDone) result = file->FlushToDisk();
    if (result == FileResult::kDone) result = file->Close();
    return result;
}

}  // namespace quirepress
