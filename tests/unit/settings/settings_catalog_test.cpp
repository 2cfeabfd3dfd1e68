#include "settings/settings_catalog.h"

#include "fakes/golden.h"
#include "settings_fixture.h"

namespace quirepress {
namespace {

using TextList = std::vector<std::string>;

class SettingsCatalogTest : public SettingsTest {
protected:
    std::unique_ptr<SettingsDocument> Open() { return OpenSettings("general", m_place); }

    SettingValue ValueOf(const std::string& key) {
        for (const auto& [name, value] : Open()->Values())
            if (name == key) return value;
        ADD_FAILURE() << key;
        return {};
    }

    // Changes one key and saves; what was said about it.
    TextList Set(const std::string& key, const TextList& values) {
        const auto document = Open();
        std::string message;
        TextList notes;
        const int result = document->ChangeKey(key, values, message, notes);
        if (result != 0) return {message};
        EXPECT_EQ(document->Save(), kSettingsDone);
        return notes;
    }
    void Unset(const std::string& key) {
        const auto document = Open();
        std::string message;
        EXPECT_EQ(document->ClearKey(key, message), 0) << message;
        EXPECT_EQ(document->Save(), kSettingsDone);
    }
    std::string File() { return folder.Read("general_setup.ini"); }
};

TEST_F(SettingsCatalogTest, ShowsEveryKeyWithItsDefault) {
    EXPECT_EQ(OpenSettings("unknown", m_place), nullptr);
    for (const std::string& name : SettingsNames()) {
        const auto document = OpenSettings(name, m_place);
        ASSERT_NE(document, nullptr) << name;
        EXPECT_EQ(document->LoadResult(), kSettingsNotRead);
        EXPECT_FALSE(document->Values().empty());
    }
    EXPECT_EQ(ValueOf("DONTCLOSEACROBAT"), SettingValue(false));
    EXPECT_EQ(ValueOf("TIMEALLOW"), SettingValue(14000));
    EXPECT_EQ(ValueOf("TEMPFOLDER"), SettingValue(std::string("Temp")));
    EXPECT_EQ(ValueOf("STARTUPRECT"), SettingValue(std::vector<std::int32_t>{0, 0, 0, 0}));
}

TEST_F(SettingsCatalogTest, EachFlagHasAFieldOfItsOwn) {
    const auto defaults = Open()->Values();
    for (const auto& [key, value] : defaults) {
        if (!std::holds_alternative<bool>(value) || key == "GENERATEANDPRINTLIST")
            continue;  // which never stays
        folder.Write("general_setup.ini", key + "\n");
        const auto values = Open()->Values();
        for (std::size_t i = 0; i < values.size(); ++i)
            EXPECT_EQ(values[i].second != defaults[i].second, values[i].first == key) << key;
    }
}

TEST_F(SettingsCatalogTest, ChangesOneKeyAndLeavesTheOthers) {
    folder.Write("general_setup.ini", "REMOVEITEM\nPAUSEMOVE;4\n");
    EXPECT_EQ(Set("DONTCLOSEACROBAT", {}), TextList());
    EXPECT_EQ(Set("PAGEMASK", {"on"}), TextList());
    EXPECT_EQ(Set("PRINTPRIORITY", {"99"}), TextList());
    EXPECT_EQ(Set("UNZIPFOLDER", {""}), TextList());
    EXPECT_EQ(Set("SCREEN", {"Current Size"}), TextList());
    EXPECT_EQ(Set("STARTUPRECT", {"1", "2", "-3", "4"}), TextList());
    EXPECT_TRUE(Contains(File(), AsWritten("DONTCLOSEACROBAT\nREMOVEITEM\nPAGEMASK\n")));
    EXPECT_TRUE(Contains(File(), AsWritten("PAUSEMOVE;4\n")));
    EXPECT_TRUE(Contains(File(), AsWritten("STARTUPRECT;1;2;-3;4\n")));
    EXPECT_EQ(ValueOf("DONTCLOSEACROBAT"), SettingValue(true));
    Unset("DONTCLOSEACROBAT");
    Unset("PAUSEMOVE");
    EXPECT_EQ(Set("PAGEMASK", {"false"}), TextList());
    EXPECT_FALSE(Contains(File(), "DONTCLOSEACROBAT"));
    EXPECT_FALSE(Contains(File(), "PAUSEMOVE"));
    EXPECT_FALSE(Contains(File(), "PAGEMASK"));
}

TEST_F(SettingsCatalogTest, WhatIsNoValueChangesNothing) {
    const struct {
        const char* key;
        TextList values;
        const char* said;
    } cases[] = {
        {"pagemask", {}, "general_setup.ini has no key \"pagemask\"."},
        {"PAGEMASK", {"maybe"}, "PAGEMASK is a flag: it takes no value, or on or off."},
        {"PAUSEMOVE", {}, "PAUSEMOVE takes one value."},
        {"PAUSEMOVE", {"4x"}, "PAUSEMOVE takes whole numbers of 32 bits, which \"4x\" is not."},
        {"STARTUPRECT", {"1", "2"}, "STARTUPRECT takes 4 values, in their order."},
        {"UNZIPFOLDER", {"a;b"}, "The value of UNZIPFOLDER holds a \";\", a line end or a NUL."},
        {"UNZIPFOLDER",
         {std::string(300, 'x')},
         "The value of UNZIPFOLDER makes its line longer than 254 bytes."},
    };
    for (const auto& each : cases) {
        const auto document = Open();
        const auto before = document->Values();
        std::string message;
        TextList notes;
        EXPECT_EQ(document->ChangeKey(each.key, each.values, message, notes), 1);
        EXPECT_EQ(message, each.said);
        EXPECT_EQ(document->Values(), before);
    }
    EXPECT_TRUE(prompts.boxes.empty());
}

TEST_F(SettingsCatalogTest, TellsWhatWillNotStay) {
    EXPECT_EQ(Set("TIMEALLOW", {"4000"}),
              TextList{"TIMEALLOW will not stay 4000: the next start reads 14000."});
    EXPECT_EQ(Set("PRINTCOPIES", {"0"}), TextList{"PRINTCOPIES will not stay 0: the next start reads 1."});
    EXPECT_EQ(Set("TEMPFOLDER", {""}),
              TextList{"TEMPFOLDER will not stay empty: the next start reads \"Temp\"."});
    EXPECT_EQ(Set("STARTUPRECT", {"1", "2", "3", "4"}),
              TextList{"STARTUPRECT will not stay 1;2;3;4: the next start reads 0;0;0;0."});
    EXPECT_EQ(Set("PAUSEMOVE", {"0"}), TextList());
    EXPECT_EQ(Set("GENERATEANDPRINTLIST", {}),
              TextList{"GENERATEANDPRINTLIST will not stay on: the next start reads off."});
    EXPECT_TRUE(Contains(File(), "GENERATEANDPRINTLIST"));
    EXPECT_EQ(ValueOf("GENERATEANDPRINTLIST"), SettingValue(false));
}

TEST_F(SettingsCatalogTest, TellsWhatTheDialogWouldChangeToo) {
    const std::string retry = "The options dialog would also set DONTRETRYPDF to on; it stays as it is here.";
    EXPECT_EQ(Set("DONTPRINTPDFIFZEROCOUNT", {}), TextList{retry});
    EXPECT_EQ(
        Set("USEOPENPASSWORD", {"x"}),
        (TextList{
            retry,
            "The options dialog would also set DONTPRINTPDFIFZEROCOUNT to off; it stays as it is here."}));
    EXPECT_EQ(ValueOf("DONTRETRYPDF"), SettingValue(false));
    EXPECT_EQ(Set("PAGEMASK", {}), TextList());
    EXPECT_EQ(Set("DONTUSEINTPRINTINGPDF", {}), TextList());
}

TEST_F(SettingsCatalogTest, AFileThatCannotBeReadIsLeftAlone) {
    folder.Write("general_setup.ini", "REMOVEITEM\n");
    files.FailAlways(FaultyFiles::Call::kOpenForReading, FileResult::kNoAccess);
    const auto document = Open();
    EXPECT_EQ(document->LoadResult(), kSettingsNotRead);
    EXPECT_EQ(document->Save(), kSettingsNotWritten);
    EXPECT_EQ(prompts.boxes,
              (std::vector<FakePrompts::Box>{
                  {"Save Error!", "general_setup.ini can't be read, so it is left as it is."}}));
    EXPECT_EQ(File(), "REMOVEITEM\n");
}

TEST(SettingsReferenceTest, ThePageInDocsIsTheTables) {
    EXPECT_EQ(ReadGolden("../../docs/settings.md"), RenderSettingsReference())
        << "make it anew: qpr reference settings > docs/settings.md";
}

}  // namespace
}  // namespace quirepress
