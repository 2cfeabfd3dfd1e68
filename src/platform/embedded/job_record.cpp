#include "platform/embedded/job_record.h"

#include <algorithm>

#include "base/escaped_text.h"
#include "base/format.h"
#include "base/keyword_lines.h"
#include "base/path.h"
#include "base/text.h"

namespace quirepress {

namespace {

constexpr std::string_view kFirstLine = "QUIREPRESS JOB 1";
constexpr std::string_view kLastLine = "END";
constexpr std::size_t kLongestFileName = 255;
constexpr std::size_t kLongestKeptExtension = 32;

bool IsUnfitForFileName(char c) {
    constexpr std::string_view kWindowsOnly = ":*?\"<>|";
    if (IsControlCharacter(c) || c == '/' || c == '\\') return true;
    return PlatformSeparator() == '\\' && kWindowsOnly.find(c) != std::string_view::npos;
}

}  // namespace

std::string WriteJobRecord(const JobRecord& record) {
    std::string text(kFirstLine);
    text += "\nDOCUMENT;" + EscapeControls(record.document);
    text += "\nUSER;" + EscapeControls(record.user);
    text += "\nMACHINE;" + EscapeControls(record.machine);
    text += "\nDATATYPE;" + EscapeControls(record.dataType);
    if (!record.options.empty()) text += "\nOPTIONS;" + EscapeControls(record.options);
    text += "\nSUBMITTED;" + FormatDateTime(record.submitted) + "\n";
    text += kLastLine;
    return text + "\n";
}

bool ReadJobRecord(std::string_view text, JobRecord& record) {
    KeywordLines lines(text, std::string_view::npos);
    std::string_view line;
    if (!lines.TakeLine(line) || line != kFirstLine) return false;
    JobRecord read;
    while (lines.TakeLine(line)) {
        if (line == kLastLine) {
            record = std::move(read);
            return true;
        }
        const std::size_t end = std::min(line.find(';'), line.size());
        const std::string_view key = line.substr(0, end);
        const std::string value = UnescapeControls(line.substr(std::min(end + 1, line.size())));
        if (key == "DOCUMENT") read.document = value;
        if (key == "USER") read.user = value;
        if (key == "MACHINE") read.machine = value;
        if (key == "DATATYPE") read.dataType = value;
        if (key == "OPTIONS") read.options = value;
        if (key == "SUBMITTED") ParseDateTime(value, read.submitted);
    }
    return false;
}

std::string OutputName(std::int64_t id, std::string_view document, int copy) {
    std::string title(FileTitle(document));
    std::replace_if(title.begin(), title.end(), IsUnfitForFileName, '_');
    if (title.empty()) title = "document";
    std::string_view stem = TitleWithoutExtension(title);
    std::string_view extension = FileExtension(title);
    if (extension.size() > kLongestKeptExtension) {
        stem = title;
        extension = {};
    }
    const std::string start = Format("%08d-", id);
    const std::string end = (copy > 1 ? Format(" (%d)", copy) : std::string()) + std::string(extension);
    return start + std::string(CutToSize(stem, kLongestFileName - start.size() - end.size())) + end;
}

}  // namespace quirepress
