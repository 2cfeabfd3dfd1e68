#include "logs/log_housekeeping.h"

#include <array>
#include <functional>
#include <memory>

#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "logs/debug_log.h"
#include "logs/log_pieces.h"
#include "logs/log_sweep.h"
#include "logs/print_log.h"
#include "platform/clock.h"
#include "platform/event_loop.h"
#include "platform/file_tools.h"

namespace quirepress {

namespace {

constexpr std::uint32_t kMinute = 60;
constexpr std::uint32_t kHour = 3'600;
constexpr std::uint32_t kDay = 86'400;
constexpr std::uint32_t kMonth = 2'592'000;
constexpr std::uint32_t kYear = 31'536'000;
constexpr std::array kEveryUnits = {kMinute, kHour, kDay, kMonth, kYear};
constexpr std::array kOlderThanUnits = {kDay, kMonth, kYear};
constexpr std::size_t kStampLimit = 255;

// A unit that is none lasts no time.
template <std::size_t kCount>
std::uint32_t UnitLength(const std::array<std::uint32_t, kCount>& units, std::int32_t unit) {
    const auto index = static_cast<std::uint32_t>(unit);
    return index < units.size() ? units[index] : 0;
}

// Whether `stamp` lies more than `count` units before `now`; all of it in 32 bits that wrap.
bool IsLongerAgo(std::int32_t stamp, std::int32_t now, std::int32_t count, std::uint32_t unit) {
    const std::uint32_t limit = static_cast<std::uint32_t>(now) - static_cast<std::uint32_t>(count) * unit;
    return stamp <= now && stamp < static_cast<std::int32_t>(limit);
}

std::string_view FieldOf(std::string_view line, std::size_t column) {
    const RecordColumn& field = PrintRecordLayout().columns[column];
    if (field.start >= line.size()) return {};
    return TrimTrailingBlanks(line.substr(field.start, field.width));
}

constexpr std::size_t kTimeColumn = 0;
constexpr std::size_t kNameColumn = 2;

}  // namespace

std::int32_t ApproximateTimeStamp(const LocalTime& time) {
    constexpr std::array<std::uint32_t, 12> kDaysBefore = {0,   31,  59,  90,  120, 151,
                                                           181, 212, 243, 273, 304, 334};
    const auto month = static_cast<std::uint32_t>(time.month) - 1;
    const std::uint32_t days =
        (month < kDaysBefore.size() ? kDaysBefore[month] : 0) + static_cast<std::uint32_t>(time.day);
    return static_cast<std::int32_t>((static_cast<std::uint32_t>(time.year) - 2000) * kYear + days * kDay +
                                     static_cast<std::uint32_t>(time.hour) * kHour +
                                     static_cast<std::uint32_t>(time.minute) * kMinute +
                                     static_cast<std::uint32_t>(time.second));
}

LogHousekeeping::LogHousekeeping(Clock& clock, EventLoop& loop, DebugLog& debugLog,
                                 const SettingsPlace& place)
    : m_clock(clock), m_loop(loop), m_debugLog(debugLog), m_place(place) {}

LogCleanup LogHousekeeping::RunLogHousekeeping(const LogOptions& options, bool isForced) {
    LogCleanup cleanup;
    if (m_isRunning) return cleanup;
    m_isRunning = true;
    if (options.m_removeMissing && (isForced || IsDue(options)))
        cleanup.missing = SweepMissing(options, cleanup.hasFailed);
    if (options.m_removeOld && options.m_olderThan >= 1) cleanup.old = SweepOld(options, cleanup.hasFailed);
    m_isRunning = false;
    return cleanup;
}

bool LogHousekeeping::IsDue(const LogOptions& options) {
    const LocalTime now = Now();
    std::string line;
    if (!ReadStamp(line)) {
        WriteStamp(now);
        return false;
    }
    LocalTime last;
    ParseDateTime(line, last);
    const bool isDue = IsLongerAgo(ApproximateTimeStamp(last), ApproximateTimeStamp(now), options.m_every,
                                   UnitLength(kEveryUnits, options.m_everyUnit));
    if (isDue) WriteStamp(now);
    return isDue;
}

LocalTime LogHousekeeping::Now() {
    return m_clock.ToLocal(m_clock.Now());
}

bool LogHousekeeping::ReadStamp(std::string& line) {
    FileResult result = FileResult::kFailed;
    const std::unique_ptr<InputFile> file =
        m_place.files.OpenForReading(m_place.workingFolder + kLogCheckFileName, result);
    if (!file) return false;
    LogPieces pieces(*file, 0, kStampLimit);
    std::string_view piece;
    if (pieces.TakePiece(piece)) line = piece;
    return true;
}

void LogHousekeeping::WriteStamp(const LocalTime& now) {
    const std::string path = m_place.workingFolder + kLogCheckFileName;
    if (ReplaceFileDurably(m_place.files, path, FormatDateTime(now) + "\n") != FileResult::kDone)
        m_debugLog.Trace("Can't write %s\r\n", kLogCheckFileName);
}

std::int64_t LogHousekeeping::SweepMissing(const LogOptions& options, bool& hasFailed) {
    // A listing of the folder would not do: a name that is listed may not open, and where upper and lower
    // case are alike, one that is not listed may.
    return Sweep(
        options,
        [this](std::string_view line) {
            const std::string_view name = FieldOf(line, kNameColumn);
            return name.empty() || !m_place.files.Inspect(name).readable;
        },
        hasFailed);
}

std::int64_t LogHousekeeping::SweepOld(const LogOptions& options, bool& hasFailed) {
    const std::int32_t now = ApproximateTimeStamp(Now());
    const std::uint32_t unit = UnitLength(kOlderThanUnits, options.m_olderThanUnit);
    return Sweep(
        options,
        [=, count = options.m_olderThan](std::string_view line) {
            LocalTime printed;
            ParseDateTime(FieldOf(line, kTimeColumn), printed);
            return IsLongerAgo(ApproximateTimeStamp(printed), now, count, unit);
        },
        hasFailed);
}

std::int64_t LogHousekeeping::Sweep(const LogOptions& options,
                                    const std::function<bool(std::string_view)>& isRemoved, bool& hasFailed) {
    m_debugLog.Trace("*** Cleaning up logs\r\n");
    LogSweep sweep{m_place.workingFolder + kPrintLogName, {}, isRemoved};
    if (options.m_keepRemoved) {
        const LocalTime now = Now();
        const std::string name = Format("print-%.4d-%.2d-%.2d %.2d.%.2d.%.2d.log", now.year, now.month,
                                        now.day, now.hour, now.minute, now.second);
        sweep.archivePath = JoinPath(m_place.workingFolder + "Logs", name);
    }
    FileResult result = FileResult::kDone;
    const std::int64_t removed = SweepLog(m_place.files, m_loop, sweep, result);
    if (result != FileResult::kDone && result != FileResult::kMissing) {
        hasFailed = true;
        m_debugLog.Trace("Logs not cleaned up: %s\r\n", DescribeFileResult(result));
    }
    return removed;
}

}  // namespace quirepress
