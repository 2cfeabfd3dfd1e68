#include "log_workloads.h"

#include <malloc.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <vector>

#include "base/format.h"
#include "logs/debug_log.h"
#include "logs/duplicate_check.h"
#include "logs/log_exports.h"
#include "logs/log_housekeeping.h"
#include "logs/print_log.h"
#include "platform/clock.h"
#include "platform/event_loop.h"
#include "platform/libraries.h"
#include "platform/machine.h"
#include "platform/network.h"
#include "platform/processes.h"
#include "platform/prompts.h"
#include "platform/registry.h"
#include "platform/services.h"
#include "platform/shell.h"
#include "platform/terminal.h"

namespace quirepress {

namespace {

namespace fs = std::filesystem;

class SilentPrompts : public Prompts {
public:
    void ShowBox(std::string_view, std::string_view) override {}
    bool AskYesNo(std::string_view, std::string_view, bool safeAnswer) override { return safeAnswer; }
    void ShowStatus(std::string_view) override {}
};

struct Surroundings {
    explicit Surroundings(const std::string& folder) : place{*services.files, prompts, folder} {}
    Services services = MakeSystemServices();
    SilentPrompts prompts;
    DebugLog debugLog;
    SettingsPlace place;
};

double ProcessorTimeOf(const std::function<void()>& call) {
    const std::clock_t start = std::clock();
    call();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

// The record of this number; an odd one's document does not exist.
DocumentStamp StampOf(const LogFiles& files, std::int64_t number) {
    constexpr std::int64_t kDocuments = 100'000;
    const char* const name = number % 2 == 0 ? "document" : "missing";
    return {files.documents + Format("%s-%06d.txt", name, number / 2 % kDocuments), number % 90'000'000,
            Format("2022-%.2d-%.2d 08:%.2d:00", number % 12 + 1, number % 28 + 1, number % 60),
            Format("2023-%.2d-%.2d 09:%.2d:00", number % 11 + 1, number % 27 + 1, number % 59)};
}

// Half of the log lies before 2024.
std::string TimeOf(const LogFiles& files, std::int64_t number) {
    const std::int64_t minute = (number * 2 * 365 * 24 * 60) / files.records;
    const std::int64_t day = minute / (24 * 60);
    const std::int64_t dayOfYear = day % 365;
    return Format("%.4d-%.2d-%.2d %.2d:%.2d:%.2d", 2023 + day / 365, dayOfYear / 31 + 1, dayOfYear % 31 + 1,
                  minute / 60 % 24, minute % 60, number % 60);
}

}  // namespace

bool MakeLogFiles(const LogFiles& files) {
    std::error_code error;
    fs::create_directories(files.folder + "sweep", error);
    constexpr std::uintmax_t kRecordSize = 369;
    if (fs::file_size(files.Log(), error) == kRecordSize * static_cast<std::uintmax_t>(files.records) &&
        fs::exists(files.Wanted()))
        return true;
    std::ofstream log(files.Log(), std::ios::binary);
    for (std::int64_t i = 0; i < files.records; ++i) {
        const DocumentStamp stamp = StampOf(files, i);
        log << FormatRecord(PrintRecordLayout(),
                            {TimeOf(files, i), std::to_string(stamp.size), stamp.path, stamp.created,
                             stamp.written, std::to_string(i % 40), "Office printer"});
    }
    std::ofstream wanted(files.Wanted(), std::ios::binary);
    for (int i = 0; i < kWantedFiles; ++i) {
        DocumentStamp stamp = StampOf(files, i / 2 * (files.records / kKnownFiles));
        if (i % 2 != 0) stamp.size += 7;
        wanted << PrintRecordKey(stamp) << "\n";
    }
    return log.flush() && wanted.flush();
}

bool CopyLog(const LogFiles& files) {
    std::error_code error;
    fs::copy_file(files.Log(), files.Copy(), fs::copy_options::overwrite_existing, error);
    return !error;
}

double CheckWantedFiles(const LogFiles& files, double* laterSeconds, double* indexBytes) {
    Surroundings around(files.folder);
    std::vector<DocumentStamp> wanted;
    for (int i = 0; i < kWantedFiles; ++i) {
        wanted.push_back(StampOf(files, i / 2 * (files.records / kKnownFiles)));
        if (i % 2 != 0) wanted.back().size += 7;
    }
    const auto heapInUse = [] {
        const struct mallinfo2 heap = mallinfo2();
        return static_cast<double>(heap.uordblks) + static_cast<double>(heap.hblkhd);
    };
    const double heapBefore = heapInUse();
    DuplicateCheck check(*around.services.clock, around.debugLog, around.place, nullptr);
    int known = 0;
    const auto checkAll = [&] {
        known = 0;
        DuplicateCheck::Pass pass(check);
        for (const DocumentStamp& stamp : wanted) known += pass.Check(stamp) != HandledBy::kNothing ? 1 : 0;
    };
    const double seconds = ProcessorTimeOf(checkAll);
    if (known != kKnownFiles) return -1;
    if (indexBytes != nullptr) *indexBytes = heapInUse() - heapBefore;
    if (laterSeconds != nullptr) *laterSeconds = ProcessorTimeOf(checkAll);
    return known == kKnownFiles ? seconds : -1;
}

double SweepMissingFiles(const LogFiles& files, std::int64_t expected) {
    Surroundings around(files.folder + "sweep/");
    LogHousekeeping housekeeping(*around.services.clock, *around.services.loop, around.debugLog,
                                 around.place);
    LogOptions options;
    options.m_removeMissing = true;
    LogCleanup cleanup;
    const double seconds = ProcessorTimeOf([&] { cleanup = housekeeping.RunLogHousekeeping(options, true); });
    return cleanup.missing == expected ? seconds : -1;
}

namespace {

class FixedClock : public Clock {
public:
    Instant Now() override { return 0; }
    LocalTime ToLocal(Instant) override { return {2025, 1, 1, 0, 0, 0}; }
};

}  // namespace

double SweepOldRecords(const LogFiles& files, std::int64_t expected) {
    Surroundings around(files.folder + "sweep/");
    FixedClock clock;
    LogHousekeeping housekeeping(clock, *around.services.loop, around.debugLog, around.place);
    LogOptions options;
    options.m_removeOld = true;
    options.m_olderThanUnit = 2;
    LogCleanup cleanup;
    const double seconds = ProcessorTimeOf([&] { cleanup = housekeeping.RunLogHousekeeping(options, true); });
    return cleanup.old == expected ? seconds : -1;
}

double ExportLog(const LogFiles& files) {
    Surroundings around(files.folder);
    LogExport request;
    request.logPath = files.Log();
    request.target = files.folder + "ours.csv";
    int result = -1;
    const double seconds =
        ProcessorTimeOf([&] { result = ExportPrintLogCsv(*around.services.files, around.prompts, request); });
    return result == 0 ? seconds : -1;
}

}  // namespace quirepress
