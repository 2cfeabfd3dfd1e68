#include "documents/archive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <filesystem>

#include "base/path.h"
#include "base/text.h"
#include "fakes/archive_writer.h"
#include "fakes/golden.h"
#include "fakes/surroundings.h"
#include "platform/file_tools.h"

namespace quirepress {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class ArchiveTest : public testing::Test, protected Surroundings {
protected:
    ArchiveOutcome Unpack(std::string_view bytes, const ArchiveLimits& limits = {}) {
        const std::string path = folder.Write("in/archive", bytes);
        return UnpackArchive(files, path, folder.PathOf("out"), limits, m_keepGoing);
    }

    // The outcome's files without their folder; fails for one that is not below it.
    std::vector<std::string> NamesOf(const ArchiveOutcome& outcome) const {
        const std::string start = WithTrailingSeparator(folder.PathOf("out"));
        std::vector<std::string> names;
        for (const std::string& file : outcome.files) {
            EXPECT_TRUE(StartsWith(file, start)) << file;
            names.push_back(ReplaceAll(file.substr(start.size()), "\\", "/"));
        }
        return names;
    }

    // Regular files anywhere below the temporary folder, the archive aside.
    int CountFilesOnDisk() const {
        int count = 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.Path()))
            if (entry.is_regular_file()) ++count;
        return count - 1;
    }

    std::string Read(std::string_view name) const { return folder.Read("out/" + std::string(name)); }

    std::function<bool()> m_keepGoing = [] { return true; };
};

TEST_F(ArchiveTest, UnpacksEveryKindInTheArchivesOrder) {
    const std::vector<ArchiveMember> members = {{"b.txt", "second letter"},
                                                {"sub/", "", AE_IFDIR},
                                                {"sub/a.pdf", std::string(700'000, 'x')},
                                                {"empty.ps", ""}};
    const std::vector<std::pair<std::string, std::string>> kinds = {
        {"zip", ""},        {"7zip", ""},  {"ustar", ""},    {"ustar", "gzip"},
        {"ustar", "bzip2"}, {"pax", "xz"}, {"ustar", "zstd"}};
    for (const auto& [format, filter] : kinds) {
        SCOPED_TRACE(format + " " + filter);
        EraseTree(files, folder.PathOf("out"));
        const ArchiveOutcome outcome = Unpack(MakeArchive(format, members, filter));
        EXPECT_EQ(outcome.result, 0) << outcome.message;
        EXPECT_EQ(outcome.message, "");
        EXPECT_EQ(outcome.leftOut, 0);
        // 7z keeps files without data at its end.
        EXPECT_THAT(NamesOf(outcome), testing::UnorderedElementsAre("b.txt", "sub/a.pdf", "empty.ps"));
        EXPECT_EQ(NamesOf(outcome)[0], "b.txt");
        EXPECT_EQ(Read("b.txt"), "second letter");
        EXPECT_EQ(Read("sub/a.pdf"), std::string(700'000, 'x'));
    }
}

TEST_F(ArchiveTest, UnpacksBothKindsOfRar) {
    const ArchiveOutcome four = Unpack(ReadGolden("archives/stored4.rar"));
    EXPECT_EQ(four.result, 0) << four.message;
    EXPECT_EQ(Read("four.txt"), "stored in four");
    const ArchiveOutcome five = Unpack(ReadGolden("archives/stored5.rar"));
    EXPECT_EQ(five.result, 0) << five.message;
    EXPECT_EQ(Read("five.txt"), "stored in five");
}

TEST_F(ArchiveTest, KeepsUtf8NamesAndBytesThatAreNone) {
    const std::string name =
        "gr\xC3\xB6\xC3\x9F"
        "e \xE2\x82\xAC.txt";
    // Its name is marked as UTF-8.
    EXPECT_THAT(NamesOf(Unpack(ReadGolden("archives/utf8_name.zip"))), ElementsAre(name));
    // The library writes such names only where the system has a locale for them.
    const std::string localeBefore = std::setlocale(LC_CTYPE, nullptr);
    const bool canWrite = std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr;
    std::setlocale(LC_CTYPE, localeBefore.c_str());
    for (const std::string format : {"zip", "7zip", "pax"}) {
        if (!canWrite) continue;
        EraseTree(files, folder.PathOf("out"));
        EXPECT_THAT(NamesOf(Unpack(MakeArchive(format, {{name, "x"}}))), ElementsAre(name)) << format;
    }
    EXPECT_THAT(NamesOf(Unpack(MakeArchive("ustar", {{"latin-\xE9.txt", "x"}}))),
                ElementsAre("latin-\xE9.txt"));
}

TEST_F(ArchiveTest, NoEntryLeavesTheFolder) {
    const ArchiveOutcome outcome = Unpack(MakeArchive("ustar", {{"../up.txt", "1"},
                                                                {"a/../../up.txt", "2"},
                                                                {"/root/abs.txt", "3"},
                                                                {"C:\\win\\d.txt", "4"},
                                                                {"..\\up.txt", "5"},
                                                                {"./plain.txt", "6"},
                                                                {"link", "", AE_IFLNK, "/etc/passwd"},
                                                                {"link/through.txt", "7"},
                                                                {"hard", "", AE_IFREG, "/etc/passwd"},
                                                                {"pipe", "", AE_IFIFO}}));
    EXPECT_EQ(outcome.result, 0) << outcome.message;
    EXPECT_THAT(NamesOf(outcome), ElementsAre("root/abs.txt", "win/d.txt", "plain.txt", "link/through.txt"));
    EXPECT_EQ(outcome.leftOut, 6);
    EXPECT_EQ(CountFilesOnDisk(), 4);
}

TEST_F(ArchiveTest, NeverReplacesAFile) {
    folder.Write("out/same.txt", "mine");
    const ArchiveOutcome outcome =
        Unpack(MakeArchive("zip", {{"same.txt", "1"}, {"same.txt", "2"}, {"SAME.txt", "3"}}));
    EXPECT_EQ(outcome.result, 0) << outcome.message;
    EXPECT_THAT(NamesOf(outcome), ElementsAre("same_2.txt", "same_3.txt", "SAME_4.txt"));
    EXPECT_EQ(Read("same.txt"), "mine");
    EXPECT_EQ(Read("same_3.txt"), "2");
}

TEST_F(ArchiveTest, LimitsEndItWithAMessageThatNamesThem) {
    const std::vector<ArchiveMember> members = {{"1", "abc"}, {"2", "abc"}, {"3", "abc"}};
    ArchiveLimits few;
    few.entries = 2;
    const ArchiveOutcome entries = Unpack(MakeArchive("zip", members), few);
    EXPECT_EQ(entries.result, -1);
    EXPECT_EQ(entries.message, "The archive holds more than 2 entries, the limit");
    EXPECT_THAT(NamesOf(entries), ElementsAre("1", "2"));

    ArchiveLimits small;
    small.bytes = 5;
    const ArchiveOutcome bytes = Unpack(MakeArchive("zip", members), small);
    EXPECT_EQ(bytes.message, "The archive unpacks to more than 5 bytes, the limit");
    EXPECT_THAT(NamesOf(bytes), ElementsAre("1_2"));

    ArchiveLimits tight;
    tight.ratio = 50;
    const std::string bomb = MakeArchive("zip", {{"bomb", std::string(std::size_t{70} << 20, '\0')}});
    const ArchiveOutcome ratio = Unpack(bomb, tight);
    EXPECT_EQ(ratio.message, "The archive unpacks to more than 50 times its size, the limit");
    EXPECT_TRUE(ratio.files.empty());
    EXPECT_FALSE(folder.Has("out/bomb"));

    ArchiveLimits flat;
    flat.folderDepth = 2;
    EXPECT_EQ(Unpack(MakeArchive("zip", {{"a/b/x", ""}, {"a/b/c/x", ""}}), flat).message,
              "The archive holds folders deeper than 2, the limit");
}

TEST_F(ArchiveTest, ADamagedArchiveKeepsWhatCameOutWhole) {
    const std::vector<ArchiveMember> members = {
        {"good.txt", std::string(1000, 'g')}, {"bad.txt", std::string(1000, 'b')}, {"last.txt", "last"}};
    std::string flipped = MakeArchive("zip", members, "", "zip:compression=store");
    flipped[flipped.find("bbbb") + 500] = '!';
    const ArchiveOutcome checked = Unpack(flipped);
    EXPECT_EQ(checked.result, -1);
    EXPECT_EQ(checked.message, "The archive is damaged, only 2 of its files came out whole");
    EXPECT_THAT(NamesOf(checked), ElementsAre("good.txt", "last.txt"));
    EXPECT_FALSE(folder.Has("out/bad.txt"));

    for (const std::string format : {"zip", "ustar"}) {
        EraseTree(files, folder.PathOf("out"));
        std::string cut = MakeArchive(format, members, "", format == "zip" ? "zip:compression=store" : "");
        cut.resize(cut.find("bbbb") + 300);
        const ArchiveOutcome outcome = Unpack(cut);
        EXPECT_THAT(outcome.message, HasSubstr("only 1 of its files came out whole")) << format;
        EXPECT_THAT(NamesOf(outcome), ElementsAre("good.txt")) << format;
        EXPECT_EQ(CountFilesOnDisk(), 1) << format;
    }
}

TEST_F(ArchiveTest, ProtectedArchivesSaySo) {
    const std::vector<ArchiveMember> members = {{"secret.txt", "data"}};
    for (const std::string options : {"zip:encryption=zipcrypt", "zip:encryption=aes256"}) {
        const ArchiveOutcome outcome = Unpack(MakeArchive("zip", members, "", options, "password"));
        EXPECT_EQ(outcome.message, "The archive is protected by a password") << options;
        EXPECT_EQ(CountFilesOnDisk(), 0);
    }
}

TEST_F(ArchiveTest, WhatIsNoArchiveSaysSo) {
    for (const std::string_view bytes : {"", "no archive at all", "PK", "Rar!"}) {
        const ArchiveOutcome outcome = Unpack(bytes);
        EXPECT_EQ(outcome.result, -1) << bytes;
        EXPECT_EQ(outcome.message, "It is no archive of a known kind, or damaged") << bytes;
    }
    const ArchiveOutcome missing =
        UnpackArchive(files, folder.PathOf("none.zip"), folder.PathOf("out"), {}, m_keepGoing);
    EXPECT_EQ(missing.message, "The archive can't be opened: it does not exist");
    files.FailAlways(FaultyFiles::Call::kReadAt, FileResult::kFailed);
    EXPECT_EQ(Unpack(MakeArchive("zip", {{"a", "1"}})).result, -1);
}

TEST_F(ArchiveTest, StopsBetweenBlocksAndLeavesNothingHalf) {
    int asked = 0;
    m_keepGoing = [&] { return ++asked < 4; };
    const ArchiveOutcome outcome =
        Unpack(MakeArchive("ustar", {{"small", "1"}, {"large", std::string(3'000'000, 'l')}}));
    EXPECT_EQ(outcome.message, "Stopped");
    EXPECT_THAT(NamesOf(outcome), ElementsAre("small"));
    EXPECT_FALSE(folder.Has("out/large"));
}

TEST_F(ArchiveTest, AFullDiskEndsItAndLeavesNothingHalf) {
    const std::string archive =
        MakeArchive("ustar", {{"one", "1"}, {"two", std::string(9000, '2')}, {"three", "3"}});
    files.FillDiskAfter(5000);
    const ArchiveOutcome outcome = Unpack(archive);
    EXPECT_EQ(outcome.message, "Can't write two: no space is left on the disk");
    EXPECT_THAT(NamesOf(outcome), ElementsAre("one"));
    EXPECT_EQ(CountFilesOnDisk(), 1);

    files.Heal();
    EraseTree(files, folder.PathOf("out"));
    files.FailOnce(FaultyFiles::Call::kClose, FileResult::kNoSpace);
    EXPECT_THAT(Unpack(archive).message, HasSubstr("Can't write one: no space is left"));
    EXPECT_FALSE(folder.Has("out/one"));
}

}  // namespace
}  // namespace quirepress
