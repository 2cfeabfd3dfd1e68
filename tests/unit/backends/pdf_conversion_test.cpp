#include "backends/pdf_conversion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "fakes/built_files.h"
#include "fakes/surroundings.h"
#include "platform/event_loop.h"
#include "platform/file_tools.h"
#include "settings/print_commands.h"

namespace quirepress {
namespace {

using ::testing::HasSubstr;
using End = Conversion::End;
using Paths = std::vector<std::string>;

// A real program and real time; the limit is short.
class PdfConversionTest : public testing::Test, protected Surroundings {
protected:
    PdfConversionTest() {
        command.name = "Stand-in";
        command.words = {TestChildPath(*system.machine), "convert", folder.PathOf("calls"), "%d", "%*"};
        command.batch = 10;
        command.limitSeconds = 2;
    }
    std::string Write(const std::string& name, std::string_view content) {
        return folder.Write("in/" + name, content);
    }
    Conversion Convert(const std::string& path, const Paths& upcoming = {}) {
        return converter.Convert(command, path, upcoming, [this] { return isStopped(); });
    }
    void ExpectMade(const Conversion& conversion, const std::string& content) {
        EXPECT_EQ(conversion.end, End::kMade) << conversion.flaw;
        std::string bytes;
        FileResult result = FileResult::kDone;
        ReadWholeFile(files, conversion.pdf, 1 << 20, bytes, result);
        EXPECT_EQ(bytes, "%PDF-1.4\n" + content + "\n%%EOF\n");
    }
    void ExpectFailure(const Conversion& conversion, const std::string& flaw) {
        EXPECT_EQ(conversion.end, End::kFailed);
        EXPECT_THAT(conversion.flaw, HasSubstr(flaw));
    }
    std::string Calls() const { return folder.Read("calls"); }

    PrintCommand command;
    std::function<bool()> isStopped = [] { return false; };
    PdfConverter converter{*system.processes, files, *system.loop, debugLog, folder.PathOf("scratch")};
};

TEST_F(PdfConversionTest, ConvertsAheadInOneCall) {
    Paths paths;
    for (const char* name : {"a.doc", "b.doc", "c.doc", "d.doc"}) paths.push_back(Write(name, name));
    ExpectMade(Convert(paths[0], {paths[1], paths[2], paths[3]}), "a.doc");
    converter.Discard(paths[0]);
    EXPECT_EQ(Calls(), "4\n");
    Write("c.doc", "changed meanwhile");
    ExpectMade(Convert(paths[1], {paths[2], paths[3]}), "b.doc");
    ExpectMade(Convert(paths[2], {paths[3]}), "changed meanwhile");
    ExpectMade(Convert(paths[3]), "d.doc");
    EXPECT_EQ(Calls(), "4\n1\n") << "only what had changed was converted again";
    for (const std::string& path : paths) converter.Discard(path);
    EXPECT_FALSE(folder.Has("scratch/call1"));
}

TEST_F(PdfConversionTest, TakesNamesAsTheyAre) {
    // What a shell, or a program's options, would make something of.
    for (const char* name :
         {"$(touch x).doc", "a;b.doc", "-x.doc", "it's a b&c.doc", "%1 %o.doc", "`touch y`.doc"})
        ExpectMade(Convert(Write(name, name)), name);
    EXPECT_FALSE(folder.Has("x"));
    EXPECT_FALSE(folder.Has("y"));
}

TEST_F(PdfConversionTest, FilesOfOneNameDoNotTakeEachOthersPlace) {
    const std::string first = Write("one/a.doc", "first");
    const std::string second = Write("two/A.doc", "second");
    const std::string third = Write("a.html", "third");
    ExpectMade(Convert(first, {second, third}), "first");
    ExpectMade(Convert(second, {third}), "second");
    ExpectMade(Convert(third), "third");
}

TEST_F(PdfConversionTest, ANameThatIsNoTextIsReplacedForTheProgram) {
    const std::string path = Write("a.doc", "a");
    const std::string odd = folder.PathOf("in/\xE4\xF6.doc");
    if (files.Rename(path, odd, false) != FileResult::kDone) GTEST_SKIP() << "there are no such names here";
    ExpectMade(Convert(odd), "a");
    std::vector<FolderEntry> entries;
    files.ListFolder(folder.PathOf("scratch"), entries);
    EXPECT_EQ(entries.size(), 2U) << "the PDF's folder, and the program's own";
}

TEST_F(PdfConversionTest, BelievesOnlyAWholePdf) {
    ExpectFailure(Convert(Write("a.doc", "garbage")), "what was made is no PDF");
    ExpectFailure(Convert(Write("b.doc", "empty")), "the PDF that was made is empty");
    ExpectFailure(Convert(Write("c.doc", "nothing")), "no PDF was made");
    ExpectFailure(Convert(Write("d.doc", "cut")), "breaks off");
    ExpectFailure(Convert(Write("e.doc", "fail")), "ended with code 3: is wrong \\x1B with it");
    ExpectFailure(Convert(Write("f.doc", "crash")), "ended with code 134");
    ExpectFailure(Convert(folder.PathOf("missing.doc")), "can't be read");
    ExpectMade(Convert(Write("g.doc", "chatter")), "chatter");
}

TEST_F(PdfConversionTest, ACrashCostsItsOwnFile) {
    const Paths paths = {Write("a.doc", "a"), Write("b.doc", "crash"), Write("c.doc", "c"),
                         Write("d.doc", "d")};
    ExpectMade(Convert(paths[0], {paths[1], paths[2], paths[3]}), "a");
    ExpectFailure(Convert(paths[1], {paths[2], paths[3]}), "134");
    ExpectMade(Convert(paths[2], {paths[3]}), "c");
    ExpectMade(Convert(paths[3]), "d");
}

TEST_F(PdfConversionTest, AHangCostsItsOwnFileAndOneLimit) {
    const Paths paths = {Write("a.doc", "a"), Write("b.doc", "hang"), Write("c.doc", "c")};
    const long long start = system.loop->MonotonicMilliseconds();
    ExpectMade(Convert(paths[0], {paths[1], paths[2]}), "a");
    ExpectFailure(Convert(paths[1], {paths[2]}), "did not end in its time of 2 seconds");
    ExpectMade(Convert(paths[2]), "c");
    EXPECT_LT(system.loop->MonotonicMilliseconds() - start, 20'000);
    EXPECT_EQ(Calls(), "3\n1\n");
}

TEST_F(PdfConversionTest, AStopEndsTheProgramAtOnce) {
    command.limitSeconds = 600;
    const long long start = system.loop->MonotonicMilliseconds();
    isStopped = [&] { return !Calls().empty(); };
    EXPECT_EQ(Convert(Write("a.doc", "hang")).end, End::kStopped);
    EXPECT_LT(system.loop->MonotonicMilliseconds() - start, 20'000);
    isStopped = [] { return false; };
    ExpectMade(Convert(Write("a.doc", "a")), "a");
}

TEST_F(PdfConversionTest, WhatAProgramLeavesBehindIsEnded) {
    ExpectMade(Convert(Write("a.doc", "leave")), "leave");
    const std::string beat = "scratch/call1.beat";
    const std::size_t before = folder.Read(beat).size();
    EXPECT_GT(before, 0U);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(folder.Read(beat).size(), before);
}

TEST_F(PdfConversionTest, SaysWhatIsInTheWayOfAProgram) {
    command.words[0] = folder.PathOf("no-such-program");
    ExpectFailure(Convert(Write("a.doc", "a")), "no-such-program can't be started");
    PdfConverter blocked{*system.processes, files, *system.loop, debugLog, folder.PathOf("in/a.doc")};
    ExpectFailure(blocked.Convert(command, Write("b.doc", "b"), {}, isStopped), "can't be made");
}

}  // namespace
}  // namespace quirepress
