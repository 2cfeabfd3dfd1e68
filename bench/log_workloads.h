#pragma once

#include <cstdint>
#include <string>

namespace quirepress {

// A print log of `records` records, always the same, and 10,000 files of which it holds every other one; made
// below `folder` when they are not there. Names lead into `documents`, where half of them exist.
struct LogFiles {
    std::string folder;
    std::string documents;
    std::int64_t records = 0;

    std::string Log() const { return folder + "print.log"; }
    std::string Copy() const { return folder + "sweep/print.log"; }  // what a sweep works on
    std::string Wanted() const { return folder + "wanted.txt"; }     // a key of the log in each line
};

bool MakeLogFiles(const LogFiles& files);
bool CopyLog(const LogFiles& files);  // afresh, for the next sweep

constexpr int kWantedFiles = 10'000;
constexpr int kKnownFiles = kWantedFiles / 2;

// Each answers the processor seconds of its work, or a negative number when its result is wrong.
double CheckWantedFiles(const LogFiles& files, double* laterSeconds, double* indexBytes);
double SweepMissingFiles(const LogFiles& files, std::int64_t expected);
double SweepOldRecords(const LogFiles& files, std::int64_t expected);
double ExportLog(const LogFiles& files);

}  // namespace quirepress
