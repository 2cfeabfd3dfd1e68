#include "settings/keyword_file.h"

#include "settings_fixture.h"

namespace quirepress {
namespace {

using namespace std::string_view_literals;

struct Sample {
    bool m_flag = false;
    bool m_flagLonger = false;
    bool m_option = true;
    std::int32_t m_number = 7;
    std::int32_t m_kept = 1;
    std::int32_t m_first = 0;
    std::int32_t m_second = 0;
    std::string m_text = "default";
    std::vector<std::string> m_recipients;
};

const KeywordTable<Sample>& SampleKeywords() {
    static const KeywordTable<Sample> table(
        {"sample.ini", "Can't save the sample."},
        {
            Flag("FLAG", &Sample::m_flag, ""),
            Flag("FLAGLONGER", &Sample::m_flagLonger, ""),
            NegativeFlag("DONTOPTION", &Sample::m_option, ""),
            Number("NUMBER", &Sample::m_number, ""),
            Number("KEPT", &Sample::m_kept, "").WrittenWhenAtLeast(5).KeptByLoad(),
            Numbers("PAIR", {&Sample::m_first, &Sample::m_second}, "")
                .WrittenWhen([](const Sample& sample) { return sample.m_first != 0; }, "set"),
            Text("TEXT", &Sample::m_text, ""),
            Texts("EMAILTO", &Sample::m_recipients, ""),
        });
    return table;
}

class KeywordFileTest : public SettingsTest {
protected:
    Sample Load(std::string_view text) {
        folder.Write("sample.ini", text);
        Sample sample;
        EXPECT_EQ(LoadSettings(SampleKeywords(), m_place, sample), kSettingsDone);
        return sample;
    }
    int Save(const Sample& sample) { return SaveSettings(SampleKeywords(), m_place, sample); }
    std::string Saved() { return folder.Read("sample.ini"); }
};

TEST_F(KeywordFileTest, ReadsWholeWordsInAnyOrderAndTheLaterLineWins) {
    const Sample sample = Load(
        "TEXT;a b \r\nFLAGLONGER;ignored\nDONTOPTION\nflag\n FLAG\n;;\n\nFLAGS\nPAIR;3;-4;5\nNUMBER;  12abc");
    EXPECT_FALSE(sample.m_flag);
    EXPECT_TRUE(sample.m_flagLonger);
    EXPECT_FALSE(sample.m_option);
    EXPECT_EQ(sample.m_text, "a b ");
    EXPECT_EQ(sample.m_first, 3);
    EXPECT_EQ(sample.m_second, -4);
    EXPECT_EQ(sample.m_number, 12);
    const Sample twice = Load("NUMBER;3\nTEXT;x\nNUMBER;5\nTEXT;y\nEMAILTO;a@x\nEMAILTO;b@x\n");
    EXPECT_EQ(twice.m_number, 5);
    EXPECT_EQ(twice.m_text, "y");
    EXPECT_EQ(twice.m_recipients, (std::vector<std::string>{"a@x", "b@x"}));
}

TEST_F(KeywordFileTest, AMissingValueLeavesTheFieldAndAWordIsZero) {
    for (const char* line : {"NUMBER", "NUMBER;", "NUMBER;;"}) EXPECT_EQ(Load(line).m_number, 7) << line;
    EXPECT_EQ(Load("NUMBER;abc").m_number, 0);
    EXPECT_EQ(Load("NUMBER; ").m_number, 0);
    EXPECT_EQ(Load("NUMBER;;;8").m_number, 8);
    EXPECT_EQ(Load("TEXT;").m_text, "default");
    EXPECT_TRUE(Load("EMAILTO;").m_recipients.empty());
    const Sample sample = Load("PAIR;3");
    EXPECT_EQ(sample.m_first, 3);
    EXPECT_EQ(sample.m_second, 0);
}

TEST_F(KeywordFileTest, AnUnreadableFileLeavesTheDefaults) {
    Sample sample;
    sample.m_number = 1;
    sample.m_kept = 9;
    EXPECT_EQ(LoadSettings(SampleKeywords(), m_place, sample), kSettingsNotRead);
    EXPECT_EQ(sample.m_number, 7);
    EXPECT_EQ(sample.m_kept, 9);
    files.MakeFolders(folder.PathOf("sample.ini"));
    EXPECT_EQ(LoadSettings(SampleKeywords(), m_place, sample), kSettingsNotRead);
    EXPECT_TRUE(prompts.boxes.empty());
}

TEST_F(KeywordFileTest, GarbageCostsItsOwnLine) {
    const std::string_view garbage =
        "\xEF\xBB\xBF"
        "FLAG\n\0\0\nTEXT;a\0b\nNUMBER;4\r\r\n\x1A\nPAIR;9;9\rKEPT;9"sv;
    const Sample sample = Load(garbage);
    EXPECT_TRUE(sample.m_flag);
    EXPECT_EQ(sample.m_text, "a");
    EXPECT_EQ(sample.m_number, 4);
    EXPECT_EQ(sample.m_second, 9);
    EXPECT_EQ(sample.m_kept, 1);
    EXPECT_EQ(Save(sample), kSettingsDone);
    const std::string tooLong(250, 'x');
    EXPECT_EQ(Load("NUMBER;1\nTEXT;" + tooLong + "\nNUMBER;2\n").m_number, 1) << "the reading ends there";
    for (const char* text : {"TEXT;a\r\r\n", "TEXT;a\rb\n", "TEXT;a\r"}) EXPECT_EQ(Load(text).m_text, "a");
}

TEST_F(KeywordFileTest, WritesByTheRowsConditions) {
    Sample sample;
    EXPECT_EQ(Save(sample), kSettingsDone);
    EXPECT_EQ(Saved(), AsWritten("NUMBER;7\nTEXT;default\n"));
    sample.m_flag = true;
    sample.m_option = false;
    sample.m_number = -2147483647 - 1;
    sample.m_kept = 5;
    sample.m_first = 1;
    sample.m_text = "";
    sample.m_recipients = {"a@x", "b@x"};
    EXPECT_EQ(Save(sample), kSettingsDone);
    EXPECT_EQ(Saved(), AsWritten("FLAG\nDONTOPTION\nNUMBER;-2147483648\nKEPT;5\nPAIR;1;0\nTEXT;\n"
                                 "EMAILTO;a@x\nEMAILTO;b@x\n"));
}

TEST_F(KeywordFileTest, WhatTheFormatCannotHoldIsRefused) {
    folder.Write("sample.ini", "FLAG\n");
    Sample sample;
    for (const std::string& text : {std::string("a;b"), std::string("a\nb"), std::string("a\r"),
                                    std::string("a\0b", 3), std::string(250, 'x')}) {
        sample.m_text = text;
        EXPECT_EQ(Save(sample), kSettingsNotWritten);
        EXPECT_EQ(Saved(), "FLAG\n");
    }
    ASSERT_EQ(prompts.boxes.size(), 5U);
    EXPECT_EQ(
        prompts.boxes.back(),
        (FakePrompts::Box{"Save Error!",
                          "Can't save the sample. The value of TEXT makes its line longer than 254 bytes."}));
    sample.m_text = std::string(249, 'x');
    EXPECT_EQ(Save(sample), kSettingsDone);
}

TEST_F(KeywordFileTest, AFailedWriteLeavesTheOldFile) {
    folder.Write("sample.ini", "FLAG\n");
    using Call = FaultyFiles::Call;
    for (const Call call :
         {Call::kOpenForWriting, Call::kWrite, Call::kFlushToDisk, Call::kClose, Call::kRename}) {
        files.FailAlways(call, FileResult::kNoAccess);
        EXPECT_EQ(Save(Sample()), kSettingsNotWritten);
        files.Heal();
    }
    files.FillDiskAfter(4);
    EXPECT_EQ(Save(Sample()), kSettingsNotWritten);
    EXPECT_EQ(Saved(), "FLAG\n");
    ASSERT_EQ(prompts.boxes.size(), 6U);
    EXPECT_EQ(prompts.boxes.back(), (FakePrompts::Box{"Save Error!", "Can't save the sample."}));
    std::vector<FolderEntry> entries;
    files.ListFolder(folder.Path(), entries);
    EXPECT_EQ(entries.size(), 1U);
}

TEST_F(KeywordFileTest, ACodePageFileStaysOneWhileItsTextsFit) {
    Sample sample = Load(
        "TEXT;Stra\xDF"
        "e \x80\x81\n");
    EXPECT_EQ(sample.m_text, "Straße €\xC2\x81");
    EXPECT_EQ(Save(sample), kSettingsDone);
    EXPECT_EQ(Saved(), AsWritten("NUMBER;7\nTEXT;Stra\xDF"
                                 "e \x80\x81\n"));
    sample.m_text += "Ж";
    EXPECT_EQ(Save(sample), kSettingsDone);
    EXPECT_EQ(Saved(), AsWritten("NUMBER;7\nTEXT;Straße €\xC2\x81Ж\n"));
    EXPECT_EQ(Load(Saved()).m_text, sample.m_text);
    m_place.codePage.highBytes[0xC6 - 0x80] = 0x0416;
    EXPECT_EQ(Load("TEXT;\xC6\n").m_text, "Ж") << "the system's code page counts";
}

TEST_F(KeywordFileTest, BytesThatAreNoUtf8GoOutAsTheyCameIn) {
    Sample sample;
    sample.m_text = "/srv/caf\xE9";
    EXPECT_EQ(Save(sample), kSettingsDone);
    EXPECT_EQ(Saved(), AsWritten("NUMBER;7\nTEXT;/srv/caf\xE9\n"));
}

TEST_F(KeywordFileTest, ACodePageFileNeverTurnsIntoOneThatReadsAsUtf8) {
    // Only a line that nobody knows shows that the file is in the code page.
    const Sample sample = Load("TEXT;\xC3\xA9\nJUNK\xFF\n");
    EXPECT_EQ(sample.m_text, "Ã©");
    EXPECT_EQ(Save(sample), kSettingsDone);
    EXPECT_EQ(Load(Saved()).m_text, "Ã©");
}

}  // namespace
}  // namespace quirepress
