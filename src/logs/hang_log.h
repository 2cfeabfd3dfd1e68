#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quirepress {

class Clock;
class Files;

constexpr const char* kHangLogName = "processhangs.log";
constexpr std::array<const char*, 4> kHangLogTitles = {"Time", "Process", "Code", "Filename"};

// "processhangs.log" in the working folder: one line for each time that a printing program hung on a file.
class HangLog {
public:
    HangLog(Files& files, Clock& clock, std::string path);

    int Append(std::string_view image, int code, std::string_view file);  // 0, -1 when it was not written
    // The lines that name this file; -1 when the log is there and cannot be read.
    int CountHangs(std::string_view file);
    // The fields of every line, appended. 0, or -1 when the log cannot be read.
    int ReadHangs(std::vector<std::vector<std::string>>& records);

private:
    Files& m_files;
    Clock& m_clock;
    std::string m_path;
};

}  // namespace quirepress
