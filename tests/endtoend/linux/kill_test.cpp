#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <map>
#include <random>

#include "base/format.h"
#include "base/numbers.h"
#include "base/text.h"
#include "platform/clock.h"
#include "platform/cups/open_cups_spooler.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/spooler.h"
#include "qpr_program.h"
#include "rig/memory_disk.h"
#include "rig/private_cups.h"

namespace quirepress {
namespace {

constexpr int kDocuments = 100;
constexpr int kCopies = 2;         // of the whole list
constexpr int kRounds = 50;        // $QUIREPRESS_KILL_ROUNDS for another number, however long it takes
constexpr int kFewestRounds = 10;  // where the others would take too long
constexpr int kLongest = 40'000;   // milliseconds
constexpr const char* kQueue = "Office";
constexpr const char* kFurtherQueue = "Cellar";
constexpr int kRoom = 120;  // of the first queue; what does not fit goes to the other one
constexpr const char* kUnknown = "Error - Unknown whether";

// When a program, or the server, or both, are ended without a warning.
struct Moment {
    int documents = 0;     // so many have reached the queue
    int microseconds = 0;  // and so much time has gone by since
    bool endsProgram = false;
    bool endsServer = false;
};

// What the queues have of a document, and what was said about it.
struct Fate {
    int jobs = 0;
    std::string status;
};

// Both go on from what they have left on the disk. The list is spread over two queues, printed twice, and
// turns the paper in its middle. The queues are paused, so that no job is at work when the server ends: it
// would print that one again by itself.
class KillTest : public testing::Test {
protected:
    KillTest() {
        m_cups.UseHere();
        for (const char* queue : {kQueue, kFurtherQueue}) {
            m_cups.AddDriverQueue(queue);
            m_cups.Pause(queue);
        }
        m_cups.RunTool({"lpadmin", "-d", kQueue});
        for (const char* key : {"SNAPSHOTRESTORE", "ERRORLOG", "ONERRORPRINTONEMORETIME"})
            EXPECT_EQ(Run({"settings", "set", "general", key}).exitCode, 0) << key;
        for (const auto& [key, value] : std::vector<std::pair<const char*, std::string>>{
                 {"PRINTER1", kQueue}, {"SPOOL1", std::to_string(kRoom)}, {"PRINTER2", kFurtherQueue}})
            EXPECT_EQ(Run({"settings", "set", "balance", key, value}).exitCode, 0) << key;
        for (int i = 0; i < kDocuments; ++i) MakeDocument(i);
    }

    static bool IsLarge(int number) { return number == 25 || number == 75; }
    static bool IsPicture(int number) { return number % 4 == 3; }

    // Such as go out as they are, and such as the server makes pages of.
    void MakeDocument(int number) {
        const char* ending = IsPicture(number) ? ".png" : ".ps";
        const std::string name = Format("%3.3d", number) + ending;
        std::string bytes = "%!PS\n" + name;
        if (IsLarge(number)) bytes.append(std::size_t{5} << 20, 'x');
        m_documents.push_back(m_qpr.m_work.Write(name, bytes));
        m_contents[m_documents.back()] = std::move(bytes);
    }

    std::unique_ptr<ChildProcess> Start(std::vector<std::string> arguments) {
        const std::vector<std::string> start = {"--home", m_qpr.m_home.Path(), "--spooler", "cups", "--json"};
        arguments.insert(arguments.begin(), start.begin(), start.end());
        return m_qpr.Start(std::move(arguments));
    }

    ProgramResult Run(std::vector<std::string> arguments) {
        const auto program = Start(std::move(arguments));
        return program ? m_qpr.Finish(*program) : ProgramResult();
    }

    Moment ChooseMoment(int round) {
        const auto below = [this](unsigned limit) { return static_cast<int>(m_random() % limit); };
        Moment moment{1 + below(kCopies * kDocuments - 10), below(8'000)};
        if (round % 4 == 3) moment.documents = below(2) == 0 ? 25 : 175;  // while a large one goes out
        const int victims = round % 5;  // two rounds for each, and one for both
        moment.endsProgram = victims != 1 && victims != 3;
        moment.endsServer = victims == 1 || victims >= 3;
        return moment;
    }

    int CountSpooled() const {
        std::vector<FolderEntry> entries;
        m_qpr.m_services.files->ListFolder(m_cups.Folder().PathOf("spool"), entries);
        return static_cast<int>(std::count_if(entries.begin(), entries.end(),
                                              [](const FolderEntry& entry) { return entry.name[0] == 'd'; }));
    }

    // False when the program ended before.
    bool EndAt(const Moment& moment, ChildProcess& program) {
        EventLoop& loop = *m_qpr.m_services.loop;
        while (program.IsRunning() && CountSpooled() < moment.documents) loop.Wait(1);
        const auto until = std::chrono::steady_clock::now() + std::chrono::microseconds(moment.microseconds);
        while (std::chrono::steady_clock::now() < until) loop.Pump();
        const bool wasRunning = program.IsRunning();
        if (moment.endsProgram) program.EndTree();
        if (moment.endsServer) {
            m_cups.Kill();
            EXPECT_TRUE(m_cups.Start()) << m_cups.ErrorLog();
        }
        return wasRunning;
    }

    // The list is printed, whatever happens meanwhile; answers the last words of the program.
    ProgramResult PrintThrough(const Moment& moment) {
        std::vector<std::string> arguments = {"print",     "--printer", kQueue,
                                              "--balance", "--copies",  std::to_string(kCopies)};
        const auto middle = m_documents.begin() + kDocuments / 2;
        arguments.emplace_back("landscape.paperorientation");
        arguments.insert(arguments.end(), m_documents.begin(), middle);
        arguments.emplace_back("portrait.paperorientation");
        arguments.insert(arguments.end(), middle, m_documents.end());
        const auto program = Start(std::move(arguments));
        EXPECT_TRUE(EndAt(moment, *program)) << "there was nothing to end any more";
        if (!moment.endsProgram) return m_qpr.Finish(*program);
        // What takes the run up again may end in the same way.
        const auto restore = Start({"restore", "--print"});
        const bool isEnded = EndAt({moment.documents + 5, moment.microseconds, true, false}, *restore);
        return isEnded ? Run({"restore", "--print"}) : m_qpr.Finish(*restore);
    }

    std::map<std::string, Fate> FatesOf(const nlohmann::json& said) {
        std::map<std::string, Fate> fates;
        if (said.contains("rows")) {
            for (const auto& row : said["rows"]) fates[row["columns"][1]].status = row["columns"][3];
        } else {
            // It had come to its end before it was ended, so that there was nothing to restore.
            const std::string errors = m_qpr.m_home.Read("error.log");
            for (const std::string& document : m_documents)
                fates[document].status = Contains(errors, document) ? kUnknown : "Done";
        }
        std::string message;
        const Services& services = m_qpr.m_services;
        const auto spooler =
            OpenCupsSpooler(*services.files, *services.loop, *services.clock, CupsNeed::kServer, message);
        std::vector<JobInfo> jobs;
        EXPECT_TRUE(spooler && spooler->ListJobs(kQueue, jobs) == 0) << message;
        EXPECT_LE(jobs.size(), static_cast<std::size_t>(kRoom));
        EXPECT_TRUE(spooler && spooler->ListJobs(kFurtherQueue, jobs) == 0) << message;
        for (const JobInfo& job : jobs) {
            ++fates[job.document].jobs;
            CheckJob(job);
        }
        return fates;
    }

    // Its bytes and, for a document that the server makes pages of, how they are turned.
    void CheckJob(const JobInfo& job) {
        constexpr std::string_view kTurned = "orientation-requested";
        constexpr std::size_t kBeforeValue = 5;  // two bytes of its length, and the first three of the number
        constexpr int kPortrait = 3;
        constexpr int kLandscape = 4;
        const std::string number = Format("%5.5d", static_cast<int>(job.id));
        EXPECT_TRUE(m_cups.Folder().Read("spool/d" + number + "-001") == m_contents[job.document])
            << job.document;
        const auto place = std::find(m_documents.begin(), m_documents.end(), job.document);
        const auto row = static_cast<int>(place - m_documents.begin());
        if (!IsPicture(row)) return;
        const std::string control = m_cups.Folder().Read("spool/c" + number);
        const std::size_t at = control.find(kTurned);
        ASSERT_NE(at, std::string::npos) << job.document;
        EXPECT_EQ(control.at(at + kTurned.size() + kBeforeValue),
                  row < kDocuments / 2 ? kLandscape : kPortrait)
            << job.document;
    }

    // Answers how many are known by name only.
    int CheckFates(std::map<std::string, Fate> fates) {
        int unknown = 0;
        for (const std::string& document : m_documents) {
            const Fate& fate = fates[document];
            const bool isUnknown = StartsWith(fate.status, kUnknown);
            EXPECT_LE(fate.jobs, kCopies) << document << " came out too often; " << fate.status;
            EXPECT_TRUE(fate.jobs == kCopies || isUnknown) << document << " is missing; " << fate.status;
            EXPECT_TRUE(isUnknown || fate.status == "Done") << document << " came out as " << fate.status;
            unknown += isUnknown ? 1 : 0;
        }
        return unknown;
    }

    MemoryDisk m_disk{std::uintmax_t{200} << 20};
    QprProgram m_qpr;
    PrivateCups m_cups{m_qpr.m_services, {.dirtyCleanInterval = 0}};
    std::mt19937 m_random{20};
    std::vector<std::string> m_documents;
    std::map<std::string, std::string> m_contents;
};

TEST_F(KillTest, WhateverEndsInTheMiddleOfAListEachDocumentComesOutOnceOrIsNamed) {
    const char* wanted = std::getenv("QUIREPRESS_KILL_ROUNDS");
    const int rounds = wanted != nullptr ? ParseLong(wanted) : kRounds;
    EventLoop& loop = *m_qpr.m_services.loop;
    const long long endsAt = loop.MonotonicMilliseconds() + kLongest;
    const auto hasTime = [&](int round) {
        return wanted != nullptr || round < kFewestRounds || loop.MonotonicMilliseconds() < endsAt;
    };
    int unknown = 0;
    int round = 0;
    for (; round < rounds && hasTime(round) && !HasFailure(); ++round) {
        const Moment moment = ChooseMoment(round);
        SCOPED_TRACE(Format("round %d: after %d documents and %d us, program %d, server %d", round,
                            moment.documents, moment.microseconds, moment.endsProgram, moment.endsServer));
        const ProgramResult last = PrintThrough(moment);
        const int now = CheckFates(FatesOf(last.Json()));
        EXPECT_LE(now, 3) << "no more than were at work";
        EXPECT_EQ(last.exitCode, now == 0 || !last.Json().contains("rows") ? 0 : 1)
            << m_qpr.m_home.Read("error.log");
        unknown += now;
        EXPECT_EQ(Run({"restore"}).Json()["message"], "There is no run to restore.");
        m_qpr.m_services.files->Erase(m_qpr.m_home.PathOf("error.log"));
        for (const char* queue : {kQueue, kFurtherQueue}) m_cups.RunTool({"cancel", "-a", "-x", queue});
        EXPECT_EQ(m_cups.ReadUserOptions(), "") << "the user had not chosen a default printer";
    }
    RecordProperty("rounds", round);
    RecordProperty("named_as_unknown", unknown);
}

}  // namespace
}  // namespace quirepress
