#pragma once

#include <string>
#include <vector>

namespace quirepress {

// Each counts the pages of every file, one after the other, and answers the wall seconds that it took.
// `pages`: the counts, when somebody wants them.
double CountPdfFiles(const std::vector<std::string>& paths, std::vector<long long>* pages = nullptr);
double CountPdfFilesByQpdf(const std::vector<std::string>& paths, std::vector<long long>* pages = nullptr);
double CountPostScriptFiles(const std::vector<std::string>& paths, std::vector<long long>* pages = nullptr);

// What scripts/bench-corpus has made, sorted; `kind` is "pdf" or "ps". Of more than `most` files every n-th.
std::vector<std::string> ListCorpus(const std::string& kind, std::size_t most);

}  // namespace quirepress
