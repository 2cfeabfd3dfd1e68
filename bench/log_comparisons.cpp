#include <cstdlib>
#include <filesystem>

#include "list_workloads.h"
#include "log_workloads.h"
#include "workloads.h"

namespace quirepress {

namespace {

constexpr std::int64_t kRecords = 1'000'000;
constexpr std::int64_t kMissing = kRecords / 2;
constexpr std::int64_t kOld = kRecords / 2;
constexpr int kDocuments = 100'000;
constexpr double kMicrosecond = 1e-6;
constexpr double kMebibyte = 1024.0 * 1024.0;

LogFiles Files() {
    const char* const cache = std::getenv("XDG_CACHE_HOME");
    const char* const home = std::getenv("HOME");
    const std::string base = cache != nullptr ? cache : std::string(home != nullptr ? home : ".") + "/.cache";
    const std::string documents = (std::filesystem::current_path() / "build" / "bench-files").string() + "/";
    return {base + "/quirepress/log/", documents, kRecords};
}

bool Prepare(std::string& whyNot) {
    if (MakeLogFiles(Files())) return true;
    whyNot = "the log can't be made in " + Files().folder;
    return false;
}

bool PrepareWithDocuments(std::string& whyNot) {
    if (MakeSmallFiles("build/bench-files", kDocuments)) return Prepare(whyNot);
    whyNot = "the documents can't be made in build/bench-files";
    return false;
}

double Awk(const std::string& program, const std::string& arguments) {
    return TimeCommand({"sh", "-c", "LC_ALL=C mawk '" + program + "' " + arguments}, CostOf::kProcessorTime);
}

// The same fields of every record, cut at the same columns. The peer's results are flushed as ours are.
double AwkDuplicates() {
    return Awk("NR==FNR{wanted[$0]=1;next} substr($0,24,215) in wanted{known++} END{print known}",
               Files().Wanted() + " " + Files().Log());
}

double AwkMissing() {
    const std::string out = Files().folder + "awk.log";
    return Awk(
        "{name=substr($0,33,160); sub(/ +$/,\"\",name); if((getline line <name)>=0) print; close(name)}",
        Files().Copy() + " >" + out + " && sync " + out);
}

double AwkOld() {
    const std::string out = Files().folder + "awk.log";
    return Awk("substr($0,1,19)>=\"2024-01-01 00:00:00\"", Files().Copy() + " >" + out + " && sync " + out);
}

double AwkCsv() {
    const std::string out = Files().folder + "awk.csv";
    return Awk(
        "function cut(from,width, text){text=substr($0,from,width);sub(/ +$/,\"\",text);return text} "
        "{pages=cut(239,8);total+=pages;"
        "print "
        "cut(1,22)\",\"cut(24,8)\",\"cut(33,160)\",\"cut(194,22)\",\"cut(217,22)\",\"pages\",\"cut(248,120)"
        "\"\\r\"} "
        "END{print \",,,,,\"total\",\\r\"}",
        Files().Log() + " >" + out + " && sync " + out);
}

// The sweeps change their log: each has a fresh copy, whose making is not measured.
double OnFreshCopy(double (*sweep)(const LogFiles&, std::int64_t), std::int64_t expected) {
    return CopyLog(Files()) ? sweep(Files(), expected) : -1;
}

double OnFreshCopy(double (*peer)()) {
    return CopyLog(Files()) ? peer() : -1;
}

}  // namespace

void AddLogWorkloads(std::vector<Workload>& workloads) {
    workloads.push_back({"log-duplicate", 1.0 / 3, Prepare,
                         [] { return CheckWantedFiles(Files(), nullptr, nullptr); }, AwkDuplicates});
    workloads.push_back({"log-check-later", 1, Prepare,
                         [] {
                             double later = -1;
                             const double first = CheckWantedFiles(Files(), &later, nullptr);
                             return first < 0 ? -1 : later / kWantedFiles;
                         },
                         [] { return 3 * kMicrosecond; }});
    workloads.push_back({"log-memory", 1, Prepare,
                         [] {
                             double bytes = -1;
                             return CheckWantedFiles(Files(), nullptr, &bytes) < 0 ? -1 : bytes;
                         },
                         [] { return 64 * kMebibyte; }, 1});
    workloads.push_back({"log-missing", 0.5, PrepareWithDocuments,
                         [] { return OnFreshCopy(SweepMissingFiles, kMissing); },
                         [] { return OnFreshCopy(AwkMissing); }, 5});
    workloads.push_back({"log-age", 1, Prepare, [] { return OnFreshCopy(SweepOldRecords, kOld); },
                         [] { return OnFreshCopy(AwkOld); }});
    workloads.push_back({"log-csv", 0.1, Prepare, [] { return ExportLog(Files()); }, AwkCsv, 5});
}

}  // namespace quirepress
