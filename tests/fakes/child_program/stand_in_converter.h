#pragma once

#include <string>
#include <vector>

namespace quirepress {

// Stands in for a program that makes PDFs: LOG FOLDER FILE... One line with the number of files goes to LOG;
// then each file becomes a PDF in FOLDER, unless its content says otherwise: "hang", "crash", "garbage",
// "empty", "nothing", "cut", "fail", "chatter", "leave" (behind a program that beats into FOLDER.beat).
int RunStandInConverter(const std::vector<std::string>& words);

}  // namespace quirepress
