#include "settings/general_settings.h"

#include <filesystem>

#include "fakes/golden.h"
#include "settings_fixture.h"

namespace quirepress {
namespace {

constexpr const char* kFile = "general_setup.ini";
constexpr SystemFamily kModern = SystemFamily::kWindowsXpOrLater;

class GeneralSettingsTest : public SettingsTest {
protected:
    GeneralOptions Load(std::string_view text, SystemFamily family = kModern, bool isUnattended = false) {
        folder.Write(kFile, text);
        GeneralOptions options;
        EXPECT_EQ(LoadGeneralOptions(options, m_place, family, isUnattended), kSettingsDone);
        return options;
    }
    std::string Save(const GeneralOptions& options) {
        EXPECT_EQ(SaveGeneralOptions(options, m_place, false), kSettingsDone);
        return folder.Read(kFile);
    }
};

TEST_F(GeneralSettingsTest, AFullFileIsWrittenAsItWasRead) {
    const std::string golden = ReadGolden(kFile);
    ASSERT_FALSE(golden.empty());
    GeneralOptions options = Load(golden);
    EXPECT_FALSE(options.m_generateAndPrintList);
    EXPECT_EQ(options.m_startupBottom, 2);
    EXPECT_EQ(options.m_startupLeft, -3);
    options.m_generateAndPrintList = true;
    EXPECT_EQ(Save(options), AsWritten(golden));
}

TEST_F(GeneralSettingsTest, TheDefaultsWriteTheKeysThatAlwaysStand) {
    EXPECT_EQ(Save(GeneralOptions()),
              AsWritten("CLOSEOFFICEPASSWORDBOX;20\nTEMPFOLDER;Temp\nTIMEALLOW;14000\nSCREEN;Default Size\n"
                        "PRINTCOPIES;1\nPRINTCOPIESREPEAT;1\nSETUPINI;\nLOGFONTSIZE;7\nUNZIPFOLDER;\n"
                        "USEOPENPASSWORD;\n"));
}

TEST_F(GeneralSettingsTest, KeysWithoutAValueFallBack) {
    const GeneralOptions options = Load(
        "PAUSE1BEFORE;6\nPAUSE1BEFORE\nPAUSE1AFTER;6\nPAUSE1AFTER;\nCLOSEOFFICEPASSWORDBOX;6\n"
        "CLOSEOFFICEPASSWORDBOX\nPAUSEMOVE;6\nPAUSEMOVE\nTEMPFOLDER;x\nTEMPFOLDER;\nUSEOPENPASSWORD;x\n"
        "USEOPENPASSWORD;\nTIMEALLOW;6000\nTIMEALLOW;\n");
    EXPECT_EQ(options.m_pauseBefore, 0);
    EXPECT_EQ(options.m_pauseAfter, 2);
    EXPECT_EQ(options.m_closeOfficePasswordBox, 20);
    EXPECT_EQ(options.m_pauseMove, 0);
    EXPECT_EQ(options.m_tempFolder, "Temp");
    EXPECT_EQ(options.m_openPassword, "x");
    EXPECT_EQ(options.m_timeAllow, 6000);
    // That of one key clears another one.
    const GeneralOptions after =
        Load("PRINTCHANGEDELAYALLOWANCE;3\nPAUSE1AFTER;5\nPRINTCHANGEDELAYALLOWANCE;\n");
    EXPECT_EQ(after.m_pauseAfter, 0);
    EXPECT_EQ(after.m_printerChangeDelay, 3);
}

TEST_F(GeneralSettingsTest, AnOldSystemKnowsNoInternalPdfEngine) {
    const std::string_view text = "PDFFITTOPAPER\nDONTPDFAUTOROTATE\nUSEOPENPASSWORD;x\nREMOVEITEM\n";
    const GeneralOptions options = Load(text, SystemFamily::kWindows2000);
    EXPECT_TRUE(options.m_dontUseIntPrintingPdf);
    EXPECT_FALSE(options.m_pdfFitToPaper);
    EXPECT_FALSE(options.m_dontPdfAutoRotate);
    EXPECT_EQ(options.m_openPassword, "");
    EXPECT_TRUE(options.m_removeItem);
    EXPECT_TRUE(Load("\n", SystemFamily::kWindows9x).m_dontUseIntPrintingPdf);
    EXPECT_FALSE(Load("", SystemFamily::kWindows9x).m_dontUseIntPrintingPdf);
    EXPECT_FALSE(Load(text).m_dontUseIntPrintingPdf);
}

TEST_F(GeneralSettingsTest, UnattendedTheErrorLogIsOn) {
    EXPECT_TRUE(Load("REMOVEITEM", kModern, true).m_errorLog);
    GeneralOptions options;
    files.Erase(folder.PathOf(kFile));
    EXPECT_EQ(LoadGeneralOptions(options, m_place, kModern, true), kSettingsNotRead);
    EXPECT_TRUE(options.m_errorLog);
}

TEST_F(GeneralSettingsTest, TheFileWithThePasswordIsForItsOwnerOnly) {
    Save({});
    if (PlatformSeparator() == '/') {
        EXPECT_EQ(std::filesystem::status(folder.PathOf(kFile)).permissions(), std::filesystem::perms(0600));
    }
}

TEST_F(GeneralSettingsTest, SavingIsInhibitedOrRefusedWithTheOwnersMessage) {
    files.FailAlways(FaultyFiles::Call::kOpenForWriting, FileResult::kNoAccess);
    EXPECT_EQ(SaveGeneralOptions({}, m_place, true), kSettingsDone);
    EXPECT_TRUE(prompts.boxes.empty());
    EXPECT_EQ(SaveGeneralOptions({}, m_place, false), kSettingsNotWritten);
    EXPECT_EQ(prompts.boxes,
              (std::vector<FakePrompts::Box>{{"Save Error!", "Can't save to general_setup.ini file."}}));
}

}  // namespace
}  // namespace quirepress
