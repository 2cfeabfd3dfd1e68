#include "logs/log_housekeeping.h"

#include <gtest/gtest.h>

#include "fakes/surroundings.h"
#include "logs/print_log.h"

namespace quirepress {
namespace {

using Call = FaultyFiles::Call;

std::string Record(const std::string& time, const std::string& name) {
    return FormatRecord(PrintRecordLayout(), {time, "5", name, "", "", "1", "Office"});
}

class LogHousekeepingTest : public testing::Test {
protected:
    LogHousekeepingTest() {
        SetNow({2024, 3, 1, 12, 0, 0});
        m_options.m_removeMissing = true;
    }

    void SetNow(const LocalTime& now) { m_around.clock.SetLocal(now); }
    void PutLog(const std::string& bytes) { m_around.folder.Write("print.log", bytes); }
    std::string Log() { return m_around.folder.Read("print.log"); }
    LogCleanup Run(bool isForced = true) { return m_housekeeping.RunLogHousekeeping(m_options, isForced); }
    bool IsDue() { return m_housekeeping.IsDue(m_options); }
    std::string Stamp() { return m_around.folder.Read("printlogcheck.ini"); }
    std::vector<std::string> Archives() {
        std::vector<FolderEntry> entries;
        m_around.system.files->ListFolder(m_around.folder.PathOf("Logs"), entries);
        std::vector<std::string> names;
        for (const FolderEntry& entry : entries) names.push_back(entry.name);
        return names;
    }
    void OnlyRemoveOld(std::int32_t count, std::int32_t unit) {
        m_options = LogOptions();
        m_options.m_removeOld = true;
        m_options.m_olderThan = count;
        m_options.m_olderThanUnit = unit;
    }

    Surroundings m_around;
    SettingsPlace m_place{m_around.files, m_around.prompts, m_around.Home()};
    LogOptions m_options;
    LogHousekeeping m_housekeeping{m_around.clock, m_around.loop, m_around.debugLog, m_place};
    const std::string m_here = Record("2024-02-29 10:00:00", m_around.folder.Write("here.pdf", "x"));
    const std::string m_gone = Record("2024-02-29 10:00:01", m_around.folder.PathOf("gone.pdf"));
};

TEST(ApproximateTimeStampTest, CountsNoLeapDaysAndWraps) {
    EXPECT_EQ(ApproximateTimeStamp({2000, 1, 1, 0, 0, 0}), 86'400);
    EXPECT_EQ(ApproximateTimeStamp({2013, 4, 5, 14, 3, 9}), 418'226'589);
    EXPECT_EQ(ApproximateTimeStamp({2024, 2, 29, 1, 2, 3}), ApproximateTimeStamp({2024, 3, 1, 1, 2, 3}));
    EXPECT_EQ(ApproximateTimeStamp({0, 0, 0, 0, 0, 0}), 1'352'509'440);
    EXPECT_EQ(ApproximateTimeStamp({2069, 1, 1, 0, 0, 0}), -2'118'896'896);
    EXPECT_EQ(ApproximateTimeStamp({2000, 13, 1, 0, 0, 0}), ApproximateTimeStamp({2000, -5, 1, 0, 0, 0}));
    ApproximateTimeStamp({-2'147'483'647 - 1, 2'147'483'647, -2'147'483'647 - 1, 1, 1, 1});
}

TEST_F(LogHousekeepingTest, TheFirstLookOnlyNotesTheTime) {
    EXPECT_FALSE(IsDue());
    EXPECT_EQ(Stamp(), "2024-03-01 12:00:00\n");
    SetNow({2024, 3, 1, 12, 1, 0});
    EXPECT_FALSE(IsDue());
    SetNow({2024, 3, 1, 12, 1, 1});
    EXPECT_TRUE(IsDue());
    EXPECT_EQ(Stamp(), "2024-03-01 12:01:01\n");
    EXPECT_FALSE(IsDue());
}

TEST_F(LogHousekeepingTest, EveryUnitHasItsLength) {
    const struct {
        std::int32_t unit;
        LocalTime notYet, due;
    } cases[] = {{1, {2024, 3, 1, 15, 0, 0}, {2024, 3, 1, 15, 0, 1}},
                 {2, {2024, 3, 4, 12, 0, 0}, {2024, 3, 4, 12, 0, 1}},
                 {3, {2024, 5, 30, 12, 0, 0}, {2024, 5, 30, 12, 0, 1}},
                 {4, {2027, 3, 1, 12, 0, 0}, {2027, 3, 1, 12, 0, 1}}};
    m_options.m_every = 3;
    for (const auto& each : cases) {
        m_options.m_everyUnit = each.unit;
        m_around.folder.Write("printlogcheck.ini", "2024-03-01 12:00:00\n");
        SetNow(each.notYet);
        EXPECT_FALSE(IsDue()) << each.unit;
        SetNow(each.due);
        EXPECT_TRUE(IsDue()) << each.unit;
    }
    for (const char* text : {"2031-03-01 12:00:00\n", "NOFILENAME\n", "", "garbage"}) {
        m_around.folder.Write("printlogcheck.ini", text);
        EXPECT_FALSE(IsDue()) << text;
        EXPECT_EQ(Stamp(), text);
    }
}

TEST_F(LogHousekeepingTest, NothingIsDoneUnlessItIsWanted) {
    PutLog(m_gone);
    EXPECT_EQ(Run(false).missing, 0);
    EXPECT_EQ(Log(), m_gone);
    m_options = LogOptions();
    EXPECT_EQ(Run(true).missing, 0);
    OnlyRemoveOld(0, 0);
    EXPECT_EQ(Run().old, 0);
    EXPECT_EQ(Log(), m_gone);
}

TEST_F(LogHousekeepingTest, RecordsOfMissingFilesGo) {
    m_around.system.files->MakeFolders(m_around.folder.PathOf("folder"));
    const std::string folder = Record("", m_around.folder.PathOf("folder"));
    std::string many;
    while (many.size() < 600'000) many += m_here;
    PutLog(many + m_gone + "short\r\n\r\n" + folder + m_here + std::string(1100, 'x') + "\n" +
           m_here.substr(0, m_here.size() - 2));
    const LogCleanup cleanup = Run();
    EXPECT_EQ(cleanup.missing, 6);  // the overlong line comes in two pieces
    EXPECT_FALSE(cleanup.hasFailed);
    EXPECT_EQ(Log(), many + m_here + m_here) << "the last one gets its end";
    EXPECT_TRUE(Archives().empty());
    EXPECT_FALSE(m_around.folder.Has("print.log.new"));
}

TEST_F(LogHousekeepingTest, RemovedRecordsAreKeptAsTheyWere) {
    m_options.m_keepRemoved = true;
    PutLog(m_here);
    EXPECT_EQ(Run().missing, 0);
    EXPECT_TRUE(Archives().empty());
    PutLog("half" + m_here.substr(0, 300) + "\n" + m_here + m_gone + "end");
    m_options.m_removeOld = true;  // a second sweep in the same second, which removes nothing
    EXPECT_EQ(Run().missing, 3);
    EXPECT_EQ(Archives(), std::vector<std::string>{"print-2024-03-01 12.00.00.log"});
    EXPECT_EQ(m_around.folder.Read("Logs/print-2024-03-01 12.00.00.log"),
              "half" + m_here.substr(0, 300) + "\r\n" + m_gone + "end\r\n");
    EXPECT_EQ(Log(), m_here);
}

TEST_F(LogHousekeepingTest, OldRecordsGoByTheSameCalendarOnBothSides) {
    const auto recordOf = [](const std::string& time) { return Record(time, "/in/a.pdf"); };
    const std::string limit = recordOf("2024-02-29 12:00:00");  // the calendar's 1 March
    const std::string old = recordOf("2024-02-27 11:59:59");
    const std::string kept = recordOf("2024-03-01 12:00:01") + recordOf("2031-01-01 00:00:00") +
                             recordOf("no date") + "\r\n" + recordOf("2024-02-27 12:00:00");
    PutLog(old + limit + kept + old);
    OnlyRemoveOld(2, 0);
    EXPECT_EQ(Run(false).old, 2);
    EXPECT_EQ(Log(), limit + kept);
    OnlyRemoveOld(1, 1);
    PutLog(recordOf("2024-01-30 11:59:59") + recordOf("2024-01-30 12:00:00"));
    EXPECT_EQ(Run(false).old, 1);
    EXPECT_EQ(Log(), recordOf("2024-01-30 12:00:00"));
    OnlyRemoveOld(1, 2);
    PutLog(recordOf("2023-03-01 11:59:59") + recordOf("2023-03-01 12:00:00"));
    EXPECT_EQ(Run(false).old, 1);
}

TEST_F(LogHousekeepingTest, AtEveryMomentTheLogIsOldOrNew) {
    m_options.m_keepRemoved = true;
    const std::string old = m_here + m_gone + m_here;
    int looks = 0;
    const auto look = [&](std::string_view) {
        ++looks;
        EXPECT_TRUE(Log() == old || Log() == m_here + m_here);
    };
    for (const Call call : {Call::kWrite, Call::kFlushToDisk, Call::kClose, Call::kRename, Call::kErase,
                            Call::kFlushFolder, Call::kInspect})
        m_around.files.BeforeEach(call, look);
    PutLog(old);
    EXPECT_EQ(Run().missing, 1);
    EXPECT_GT(looks, 6);
    EXPECT_EQ(m_around.files.CountOf(Call::kRename), 1);
    // What was removed is safe before the log loses it.
    int flushesBeforeRename = 0;
    for (const FaultyFiles::Record& record : m_around.files.Records()) {
        if (record.call == Call::kRename) break;
        flushesBeforeRename += record.call == Call::kFlushToDisk ? 1 : 0;
    }
    EXPECT_GE(flushesBeforeRename, 2);
}

TEST_F(LogHousekeepingTest, WhateverFailsTheLogIsTheOldOne) {
    m_options.m_keepRemoved = true;
    const std::string old = m_here + m_gone + m_here;
    for (const Call call : {Call::kOpenForReading, Call::kOpenForWriting, Call::kMakeFolders, Call::kReadAt,
                            Call::kWrite, Call::kFlushToDisk, Call::kClose, Call::kRename}) {
        for (int nth = 1; nth <= 2; ++nth) {
            PutLog(old);
            m_around.files.FailOnce(call, FileResult::kNoSpace, nth);
            const LogCleanup cleanup = Run();
            const bool isTold = cleanup.hasFailed && cleanup.missing == 0;
            if (Log() != m_here + m_here) {
                EXPECT_TRUE(isTold) << static_cast<int>(call) << " " << nth;
                EXPECT_EQ(Log(), old);
                EXPECT_TRUE(Archives().empty()) << static_cast<int>(call) << " " << nth;
                EXPECT_EQ(m_around.folder.Has("print.log.new"), call == Call::kRename);
            } else {
                EXPECT_FALSE(cleanup.hasFailed) << static_cast<int>(call) << " " << nth;
                m_around.system.files->Erase(m_around.folder.PathOf("Logs/" + Archives().at(0)));
            }
            m_around.files.Heal();
        }
    }
    PutLog(old);
    EXPECT_EQ(Run().missing, 1);
    EXPECT_FALSE(m_around.folder.Has("print.log.new"));
}

TEST_F(LogHousekeepingTest, WhatIsPrintedMeanwhileIsNotLost) {
    PutLog(m_gone + m_here);
    const std::string late = Record("2024-03-01 12:00:00", m_around.folder.Write("late.pdf", "x"));
    bool isAppended = false;
    m_around.files.BeforeEach(Call::kFlushToDisk, [&](std::string_view) {
        if (!isAppended) PutLog(Log() + late + m_gone);
        isAppended = true;
    });
    EXPECT_EQ(Run().missing, 2);
    EXPECT_EQ(Log(), m_here + late);
}

TEST_F(LogHousekeepingTest, ASweepPumpsAndStartsNoOther) {
    std::string log;
    for (int i = 0; i < 40; ++i) log += m_gone;
    PutLog(log);
    // Each look at a file takes its time.
    m_around.files.BeforeEach(Call::kInspect, [&](std::string_view) { m_around.loop.Advance(20); });
    LogCleanup nested;
    m_around.loop.StartTimer(1, 10, [&] { nested.missing += Run().missing; });
    EXPECT_EQ(Run().missing, 40);
    EXPECT_GT(m_around.loop.PumpCount(), 10);
    EXPECT_EQ(nested.missing, 0);
}

}  // namespace
}  // namespace quirepress
