// What stands in the settings files beside the general one.
#include <filesystem>

#include "settings/balance_options.h"
#include "settings/color_printer_options.h"
#include "settings/email_options.h"
#include "settings/log_options.h"
#include "settings/misc_options.h"
#include "settings/monitor_value.h"
#include "settings/settings_catalog.h"
#include "settings_fixture.h"

namespace quirepress {
namespace {

class OptionFilesTest : public SettingsTest {};

TEST_F(OptionFilesTest, AFullFileIsWrittenAsItWasRead) {
    struct Case {
        const char* name;
        const char* file;
        const char* text;
    };
    for (const Case& item :
         {Case{"balance", "balancedprinters.ini",
               "PRINTER1;Laser\nPRINTER5;Fifth\nPRINTER10;Tenth\nPRS1;C:\\set\\a.prs\nPRS10;j.prs\n"
               "SPOOL1;3\nSPOOL10;12\nROUNDROBIN\n"},
          Case{"colorprinters", "pdfcolorprinters.ini",
               "PDC_SPLIT\nPDC_COLORPRINTER;Ink\nPDC_COLORPRS;ink.prs\nPDC_MONOPRINTER;Laser\n"
               "PDC_MONOPRS;laser.prs\nPDC_MINMONOPAGES;4\nPDC_GRAYTOLERANCE;2\nPDC_DUPLEX\n"
               "PDC_WHOLEDOCUMENTS\n"},
          Case{"email", "email_setup.ini",
               "JOBSCHED\nPRINTERROR\nERROR\nJOB\nPRINTSREADY\nJOBATTACH\nJOBATTACHTYPE\n"
               "EMAILTO;a@example.org\nEMAILTO;B <b@example.org>\nEMAILFROM;qpr@example.org\n"
               "SMTP;ssl:mail.example.org:465\nEMAILUSERNAME;user\nEMAILPASSWORD; p\xC3\xA4ss \n"},
          Case{"log", "log_setup.ini",
               "NOLONGER\nKEEPLOGS\nCLEAROLDER\nEVERY;2\nOLDEREVERY;3\nEVERYCTRL;4\nOLDEREVERYCTRL;5\n"
               "RUNSTARTUP\nRUNMONITOR\n"},
          Case{"misc", "misc.ini", "BULKLOADDIR;/srv/in\nREPORTFONTHEIGHT;-12\nREPORTFONTWIDTH;8\n"}}) {
        folder.Write(item.file, item.text);
        EXPECT_EQ(OpenSettings(item.name, m_place)->Save(), kSettingsDone) << item.name;
        EXPECT_EQ(folder.Read(item.file), AsWritten(item.text));
    }
    BalanceOptions balance;
    balance.m_printers[2] = {"of an earlier load", "x", 5};
    ASSERT_EQ(LoadBalanceOptions(balance, m_place), kSettingsDone);
    EXPECT_EQ(balance.m_printers[2].name, "");
    EXPECT_EQ(balance.m_printers[9].name, "Tenth");
    EXPECT_EQ(balance.m_printers[9].prs, "j.prs");
    EXPECT_EQ(balance.m_printers[9].spool, 12);
    ColorPrinterOptions colors;
    ASSERT_EQ(LoadColorPrinterOptions(colors, m_place), kSettingsDone);
    EXPECT_EQ(colors.m_colorPrinter + colors.m_colorPrs, "Inkink.prs");
    EXPECT_EQ(colors.m_leastMonoPages, 4);
    EmailOptions email;
    email.m_recipients = {"of an earlier load"};
    ASSERT_EQ(LoadEmailOptions(email, m_place), kSettingsDone);
    EXPECT_EQ(email.m_recipients, (std::vector<std::string>{"a@example.org", "B <b@example.org>"}));
    EXPECT_EQ(email.m_server, "ssl:mail.example.org:465");
    EXPECT_EQ(email.m_password, " p\xC3\xA4ss ");
    LogOptions log;
    ASSERT_EQ(LoadLogOptions(log, m_place), kSettingsDone);
    EXPECT_EQ(log.m_every, 2);
    EXPECT_EQ(log.m_olderThan, 3);
    EXPECT_EQ(log.m_everyUnit, 4);
    ASSERT_EQ(SaveLogOptions({}, m_place), kSettingsDone);
    EXPECT_EQ(folder.Read("log_setup.ini"),
              AsWritten("EVERY;1\nOLDEREVERY;1\nEVERYCTRL;0\nOLDEREVERYCTRL;0\n"));
}

TEST_F(OptionFilesTest, AFailedSaveLeavesTheFileAndNamesOne) {
    folder.Write("balancedprinters.ini", "PRINTER1;A\n");
    files.FailAlways(FaultyFiles::Call::kOpenForWriting, FileResult::kNoAccess);
    EXPECT_EQ(SaveBalanceOptions({}, m_place), kSettingsNotWritten);
    EXPECT_EQ(SaveColorPrinterOptions({}, m_place), kSettingsNotWritten);
    EXPECT_EQ(SaveEmailOptions({}, m_place), kSettingsNotWritten);
    EXPECT_EQ(SaveMiscOptions({}, m_place), kSettingsNotWritten);
    ASSERT_EQ(prompts.boxes.size(), 4U);
    for (const std::size_t box : {0U, 1U})
        EXPECT_TRUE(StartsWith(prompts.boxes[box].text, "Can't open pdfcolorprinters.ini file."));
    EXPECT_EQ(prompts.boxes[2].text, "Can't save to general_setup.ini file.");
    EXPECT_EQ(prompts.boxes[3].text, "Can't save to misc.ini file.");
    EXPECT_EQ(folder.Read("balancedprinters.ini"), "PRINTER1;A\n");
}

TEST_F(OptionFilesTest, NobodyElseReadsThePasswordOfTheMail) {
    namespace fs = std::filesystem;
    const fs::path path = folder.Write("email_setup.ini", "EMAILPASSWORD;old\n");
    fs::permissions(path, fs::perms(0644));
    ASSERT_EQ(SaveEmailOptions({}, m_place), kSettingsDone);
    if (PlatformSeparator() == '/') {
        EXPECT_EQ(fs::status(path).permissions(), fs::perms(0600));
    }
}

TEST_F(OptionFilesTest, RecipientsAreChangedTogether) {
    const auto document = OpenSettings("email", m_place);
    ASSERT_NE(document, nullptr);
    std::string message;
    std::vector<std::string> notes;
    EXPECT_EQ(document->ChangeKey("EMAILTO", {"a@example.org", "b@example.org"}, message, notes), 0);
    EXPECT_EQ(document->ChangeKey("EMAILTO", {}, message, notes), 1);
    ASSERT_EQ(document->Save(), kSettingsDone);
    EXPECT_TRUE(Contains(folder.Read("email_setup.ini"),
                         AsWritten("EMAILTO;a@example.org\nEMAILTO;b@example.org\n")));
}

TEST_F(OptionFilesTest, TheSwitchesOfTheLogCheckAreReadPastADateAndSavedWithoutIt) {
    folder.Write("printlogcheck.ini", "2024-03-01 12:00:00\nNOFILESIZE\nNOMODIFIEDDATE\n");
    LogCheckOptions options;
    EXPECT_EQ(LoadLogCheckOptions(options, m_place), kSettingsDone);
    EXPECT_EQ(options, (LogCheckOptions{true, false, true, false}));
    EXPECT_EQ(SaveLogCheckOptions(options, m_place), kSettingsDone);
    EXPECT_EQ(folder.Read("printlogcheck.ini"), AsWritten("NOFILESIZE\nNOMODIFIEDDATE\n"));
    folder.Write("printlogcheck.ini", "2024-03-01 12:00:00\n");
    EXPECT_EQ(LoadLogCheckOptions(options, m_place), kSettingsDone);
    EXPECT_EQ(options, LogCheckOptions());
}

TEST_F(OptionFilesTest, AMonitoredFoldersValueIsFoundByItsIndex) {
    EXPECT_EQ(ReadMonitorValue(m_place, "MONCHECK_LOG", 0), "");
    folder.Write("setup.ini",
                 "MONITOR;1\r\nMONCHECK_LOG;0;1\r\nMONCHECK_LOG;10;1\r\nMONCHECK_LOG;1;0\r\n"
                 "MONCHECK_LOGS;2;1\r\nMONCHECK_LOG;2\r\nMONCHECK_LOG;1;yes\r\n");
    for (const auto& [index, value] :
         {std::pair(0, "1"), std::pair(1, "yes"), std::pair(2, ""), std::pair(10, "1")})
        EXPECT_EQ(ReadMonitorValue(m_place, "MONCHECK_LOG", index), value) << index;
}

}  // namespace
}  // namespace quirepress
