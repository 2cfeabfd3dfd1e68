#pragma once

#include <string>
#include <string_view>

#include "logs/fixed_record.h"

namespace quirepress {

class Clock;

constexpr const char* kHangLogName = "processhangs.log";

// Time, process, code (three digits), file.
const RecordLayout& HangRecordLayout();

// "processhangs.log" in the working folder: one line for each time that a printing program hung on a file.
class HangLog {
public:
    HangLog(Files& files, Clock& clock, std::string path);

    int Append(std::string_view image, int code, std::string_view file);  // 0, -1 when it was not written
    // The lines that name this file; -1 when the log is there and cannot be read.
    int CountHangs(std::string_view file);

private:
    Files& m_files;
    Clock& m_clock;
    std::string m_path;
};

}  // namespace quirepress
