#include "settings/job_files.h"

#include "base/keyword_lines.h"
#include "base/text.h"
#include "platform/file_tools.h"

namespace quirepress {

namespace {

constexpr std::int64_t kLargestJobFile = std::int64_t{256} << 20;
constexpr std::string_view kDownloadMark = "DL;";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

bool RemoveEnd(std::string_view& line, char end) {
    if (line.empty() || line.back() != end) return false;
    line.remove_suffix(1);
    return true;
}

}  // namespace

bool IsAddonJobFile(std::string_view path) {
    return EndsWith(path, ".aob");
}

bool IsReplicationFile(std::string_view path) {
    return EndsWith(path, ".repl");
}

bool IsJobFile(std::string_view path) {
    return EndsWith(path, ".job") || IsAddonJobFile(path) || IsReplicationFile(path);
}

JobFile ParseJobFile(std::string_view text) {
    JobFile job;
    if (StartsWith(text, kUtf8Mark)) text.remove_prefix(kUtf8Mark.size());
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        RemoveEnd(line, '\r');
        if (StartsWith(line, ";")) continue;
        // A second CR before the line end is the mark of a line that the program wrote itself; its first four
        // are the header.
        const bool isMarked = RemoveEnd(line, '\r');
        if (isMarked && job.headerCount < static_cast<int>(job.headerTexts.size())) {
            job.headerTexts[static_cast<std::size_t>(job.headerCount++)] = line;
        } else if (!line.empty()) {
            job.lines.emplace_back(line);
        }
    }
    return job;
}

int LoadJobFile(Files& files, std::string_view path, JobFile& job, FileResult& result) {
    std::string text;
    if (!ReadWholeFile(files, path, kLargestJobFile, text, result)) return -2;
    job = ParseJobFile(text);
    return 0;
}

bool HasColumns(std::string_view line) {
    return Contains(line, " ;");
}

std::vector<std::string> SplitItemLine(std::string_view line) {
    // The ";" that marks a download is no separator.
    const std::string guarded = ReplaceAll(line, kDownloadMark, "DL:");
    const bool hasDownload = Contains(line, kDownloadMark);
    std::vector<std::string> columns;
    KeywordTokens tokens(guarded);
    for (std::string_view token; tokens.TakeToken(token);) {
        RemoveEnd(token, ' ');
        columns.emplace_back(token);
        if (hasDownload && StartsWith(token, "DL:")) columns.back()[2] = ';';
    }
    return columns;
}

}  // namespace quirepress
