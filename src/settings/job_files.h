#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace quirepress {

class Files;
enum class FileResult;

// Saved print lists: add-on job files (.aob), job list files (.job) and replication files (.repl). Their
// layouts stand in docs/formats-jobs.md.

constexpr std::string_view kReplicationPlaceholder = "[REPLICATION_FILENAME]";

bool IsJobFile(std::string_view path);
bool IsAddonJobFile(std::string_view path);
bool IsReplicationFile(std::string_view path);

struct JobFile {
    std::array<std::string, 4> headerTexts;
    int headerCount = 0;             // how many of them the file holds
    std::vector<std::string> lines;  // each an item, in the file's order
};

JobFile ParseJobFile(std::string_view text);

// 0, or -2 when it cannot be read; `job` stays as it was then, and `result` says why.
int LoadJobFile(Files& files, std::string_view path, JobFile& job, FileResult& result);

// Whether a line of a .job or .repl file is an item with its columns; else it is a path.
bool HasColumns(std::string_view line);

// The column texts of an item line, from the first column on; those that are not there are left to the list.
std::vector<std::string> SplitItemLine(std::string_view line);

}  // namespace quirepress
