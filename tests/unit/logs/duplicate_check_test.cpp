#include "logs/duplicate_check.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "base/text.h"
#include "fakes/line_by_line.h"
#include "fakes/surroundings.h"
#include "logs/error_log.h"
#include "logs/print_log.h"

namespace quirepress {
namespace {

class DuplicateCheckTest : public testing::Test {
protected:
    bool IsHandled(const std::string& path) { return m_check.CheckPrintLog(path, -1) != HandledBy::kNothing; }
    HandledBy Check(const DocumentStamp& stamp) {
        DuplicateCheck::Pass pass(m_check);
        return pass.Check(stamp);
    }
    void Print(const std::string& path) { EXPECT_EQ(m_log.WritePrintLogRecord(path, 3, "Office"), 0); }
    void SetSwitches(std::string_view keys) { m_around.folder.Write("printlogcheck.ini", keys); }

    Surroundings m_around;
    SettingsPlace m_place{m_around.files, m_around.prompts, m_around.Home()};
    PrintLog m_log{m_around.files, m_around.clock, m_around.prompts, m_around.debugLog,
                   m_around.folder.PathOf("print.log")};
    ErrorLog m_errors{m_around.files, m_around.clock, m_around.folder.PathOf("error.log")};
    std::string m_folderSetting;
    DuplicateCheck m_check{m_around.clock, m_around.debugLog, m_place,
                           [this](int folder) { return folder == 4 ? m_folderSetting : "1"; }};
};

TEST_F(DuplicateCheckTest, AFileIsHandledOncePrintedAndUntilItChanges) {
    const std::string file = m_around.folder.Write("in/a.pdf", "one");
    EXPECT_FALSE(IsHandled(file));
    Print(m_around.folder.Write("in/b.pdf", "one"));
    EXPECT_FALSE(IsHandled(file));
    Print(file);
    EXPECT_EQ(m_check.CheckPrintLog(file, -1), HandledBy::kPrintLog);
    m_around.folder.Write("in/a.pdf", "more");
    EXPECT_FALSE(IsHandled(file));
    SetSwitches("NOFILESIZE\nNOMODIFIEDDATE\n");
    EXPECT_TRUE(IsHandled(file));
    SetSwitches("2024-03-01 12:00:00\n");
    EXPECT_FALSE(IsHandled(file));
}

TEST_F(DuplicateCheckTest, OnlyFoldersThatWantItAreCompared) {
    const std::string file = m_around.folder.Write("a.pdf", "one");
    Print(file);
    for (const char* off : {"", "0", "11", "yes"}) {
        m_folderSetting = off;
        EXPECT_EQ(m_check.CheckPrintLog(file, 4), HandledBy::kNothing) << off;
    }
    m_folderSetting = "1";
    EXPECT_EQ(m_check.CheckPrintLog(file, 4), HandledBy::kPrintLog);
}

TEST_F(DuplicateCheckTest, AFileThatFailedIsNotTriedAgain) {
    const std::string longName(200, 'n');
    m_errors.Append({"/in/a.pdf", "", "Error", "Office"});
    m_errors.Append({longName, "", "Error", "Office"});
    m_errors.Append({longName + "n", "", "Error", "Office"});
    EXPECT_EQ(Check({"/in/a.pdf", 7, "", ""}), HandledBy::kErrorLog);
    EXPECT_EQ(Check({longName, 0, "", ""}), HandledBy::kErrorLog);
    for (const std::string& other : {std::string("/in/a.pd"), longName + "n", std::string("a.pdf")})
        EXPECT_EQ(Check({other, 0, "", ""}), HandledBy::kNothing) << other;
}

TEST_F(DuplicateCheckTest, TheLogIsReadOnceAndThenWhatIsAppended) {
    for (int i = 0; i < 50; ++i) Print("/in/" + std::to_string(i));
    EXPECT_EQ(Check({"/in/49", 0, "", ""}), HandledBy::kPrintLog);
    const auto readsOf = [&](const std::string& path) {
        const int before = m_around.files.CountOf(FaultyFiles::Call::kReadAt);
        EXPECT_EQ(Check({path, 0, "", ""}), HandledBy::kNothing);
        return m_around.files.CountOf(FaultyFiles::Call::kReadAt) - before;
    };
    EXPECT_EQ(readsOf("/in/50"), 0);
    m_around.folder.Write("print.log", m_around.folder.Read("print.log") + "half a line");
    EXPECT_GT(readsOf("/in/50"), 0);
    EXPECT_EQ(readsOf("/in/50"), 0);
    Print("/in/50");
    EXPECT_EQ(Check({"/in/50", 0, "", ""}), HandledBy::kPrintLog);
    EXPECT_EQ(Check({"/in/0", 0, "", ""}), HandledBy::kPrintLog);
}

TEST_F(DuplicateCheckTest, ALogThatWasReplacedIsReadAgain) {
    Print("/in/old");
    EXPECT_EQ(Check({"/in/old", 0, "", ""}), HandledBy::kPrintLog);
    m_around.system.files->Erase(m_log.Path());
    EXPECT_EQ(Check({"/in/old", 0, "", ""}), HandledBy::kNothing);
    for (const char* name : {"/in/new", "/in/newer"}) Print(name);
    EXPECT_EQ(Check({"/in/old", 0, "", ""}), HandledBy::kNothing);
    EXPECT_EQ(Check({"/in/newer", 0, "", ""}), HandledBy::kPrintLog);
    // One record longer, but not by appending.
    std::string bytes = m_around.folder.Read("print.log");
    bytes.insert(0, ReplaceAll(bytes.substr(0, bytes.find('\n') + 1), "/in/new", "/in/odd"));
    m_around.folder.Write("print.log", bytes);
    EXPECT_EQ(Check({"/in/odd", 0, "", ""}), HandledBy::kPrintLog);
}

TEST_F(DuplicateCheckTest, ALogThatCannotBeReadIsTriedAgain) {
    Print("/in/a");
    m_around.files.FailOnce(FaultyFiles::Call::kReadAt, FileResult::kFailed);
    EXPECT_EQ(Check({"/in/a", 0, "", ""}), HandledBy::kNothing);
    EXPECT_EQ(Check({"/in/a", 0, "", ""}), HandledBy::kPrintLog);
    Print("/in/b");
    m_around.files.FailAlways(FaultyFiles::Call::kOpenForReading, FileResult::kNoAccess);
    EXPECT_EQ(Check({"/in/b", 0, "", ""}), HandledBy::kNothing);
    m_around.files.Heal();
    EXPECT_EQ(Check({"/in/b", 0, "", ""}), HandledBy::kPrintLog);
}

// Logs of few names, sizes and times, so that much matches nearly, and damage of every kind.
class RandomLog {
public:
    explicit RandomLog(unsigned seed) : m_random(seed) {}

    std::size_t Below(std::size_t limit) { return m_random() % limit; }

    DocumentStamp Stamp() {
        static const std::string kNames[] = {"/in/a.pdf",
                                             "/in/b.pdf",
                                             "",
                                             "/in/line\nend",
                                             std::string(159, 'p') + "1",
                                             std::string(160, 'p') + "1",
                                             std::string(160, 'p') + "2",
                                             std::string(214, 'p') + "3",
                                             std::string(214, 'p') + "4",
                                             std::string(990, 'q')};
        static const char* const kTimes[] = {"2024-01-01 10:00:00", "2024-01-01 10:00:01", ""};
        static const std::int64_t kSizes[] = {0, 5, 12'345'678, 123'456'789, 123'456'788'888};
        return {kNames[Below(std::size(kNames))], kSizes[Below(std::size(kSizes))],
                kTimes[Below(std::size(kTimes))], kTimes[Below(std::size(kTimes))]};
    }

    std::string Line() {
        const DocumentStamp stamp = Stamp();
        std::string line = FormatRecord(
            PrintRecordLayout(), {"2024-05-05 05:05:05", std::to_string(stamp.size), stamp.path,
                                  stamp.created, stamp.written, std::to_string(Below(2000)), "Office"});
        switch (Below(12)) {
            case 0:
                line.resize(Below(line.size()));
                return line + "\r\n";
            case 1:
                line.insert(Below(line.size()), std::string(Below(1100), 'x'));
                return line;
            case 2:
                line[Below(line.size())] = "\0\r\n \xFF"[Below(5)];
                return line;
            case 3:
                return line.substr(0, Below(line.size()));  // the next line goes on with it
            default:
                return line;
        }
    }

private:
    std::mt19937 m_random;
};

LogCheckOptions OptionsOf(std::size_t bits) {
    return {(bits & 1U) == 0, (bits & 2U) == 0, (bits & 4U) == 0, (bits & 8U) == 0};
}

std::string LinesOf(const LogCheckOptions& options) {
    return std::string(options.m_compareName ? "" : "NOFILENAME\n") +
           (options.m_compareSize ? "" : "NOFILESIZE\n") +
           (options.m_compareCreated ? "" : "NOCREATEDDATE\n") +
           (options.m_compareModified ? "" : "NOMODIFIEDDATE\n");
}

TEST_F(DuplicateCheckTest, AnswersAsALookAtEachLineWould) {
    int matches = 0;
    int misses = 0;
    for (unsigned seed = 0; seed < 60; ++seed) {
        RandomLog random(seed);
        LogCheckOptions options;
        std::string log;
        for (std::size_t step = random.Below(6) + 1; step > 0; --step) {
            for (std::size_t lines = random.Below(12); lines > 0; --lines) log += random.Line();
            if (random.Below(3) == 0) options = OptionsOf(random.Below(16));
            m_around.folder.Write("print.log", log);
            SetSwitches(LinesOf(options));
            DuplicateCheck::Pass pass(m_check);
            for (int i = 0; i < 40; ++i) {
                const DocumentStamp stamp = random.Stamp();
                const bool expected = LineByLine::IsPrinted(log, stamp, options);
                ASSERT_EQ(pass.Check(stamp) == HandledBy::kPrintLog, expected)
                    << "seed " << seed << ", " << stamp.path << ", " << stamp.size;
                (expected ? matches : misses) += 1;
            }
        }
        m_around.system.files->Erase(m_log.Path());
    }
    EXPECT_GT(matches, 400);
    EXPECT_GT(misses, 1000);
}

TEST_F(DuplicateCheckTest, FindsEveryLineAcrossBlocks) {
    std::string log;
    RandomLog random(7);
    std::vector<DocumentStamp> stamps;
    while (log.size() < 3'000'000) {
        DocumentStamp stamp{"/in/" + std::to_string(stamps.size()), 5, "", ""};
        log += FormatRecord(PrintRecordLayout(), {"", "5", stamp.path, "", "", "1", "Office"});
        if (random.Below(50) == 0) log += random.Line() + "\n";
        stamps.push_back(std::move(stamp));
    }
    m_around.folder.Write("print.log", log);
    DuplicateCheck::Pass pass(m_check);
    for (const DocumentStamp& stamp : stamps) ASSERT_EQ(pass.Check(stamp), HandledBy::kPrintLog);
    EXPECT_EQ(pass.Check(DocumentStamp{"/in/x", 5, "", ""}), HandledBy::kNothing);
}

}  // namespace
}  // namespace quirepress
