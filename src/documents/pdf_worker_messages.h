#pragma once

#include <string>
#include <string_view>

namespace quirepress {

// What passes between the program and its PDF worker: a line for a request, a line for its answer. Texts
// are written as two hexadecimal digits a byte, so that any path and password stands on one line.
struct PdfWorkerRequest {
    std::string path;
    bool full = false;
    std::string password;
};

std::string FormatRequest(const PdfWorkerRequest& request);           // without a line end
bool ParseRequest(std::string_view line, PdfWorkerRequest& request);  // false when it is none
std::string FormatAnswer(long long pages);
bool ParseAnswer(std::string_view line, long long& pages);

}  // namespace quirepress
