#pragma once

#include <string>
#include <vector>

namespace quirepress {

// Each merges the files into `target`; false when that fails.
bool MergeFiles(const std::vector<std::string>& paths, const std::string& target);
bool MergeFilesByQpdf(const std::vector<std::string>& paths, const std::string& target);

// Whether libqpdf opens the file without a password, and without a word about it.
bool IsFaultlessForQpdf(const std::string& path);

}  // namespace quirepress
