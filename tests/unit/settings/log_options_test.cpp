#include "settings/log_options.h"

#include "settings/monitor_value.h"
#include "settings_fixture.h"

namespace quirepress {
namespace {

class LogOptionsTest : public SettingsTest {};

TEST_F(LogOptionsTest, TheFileHasItsKeysInOrder) {
    LogOptions options;
    EXPECT_EQ(LoadLogOptions(options, m_place), kSettingsNotRead);
    EXPECT_EQ(SaveLogOptions(options, m_place), kSettingsDone);
    EXPECT_EQ(m_folder.Read("log_setup.ini"),
              AsWritten("EVERY;1\nOLDEREVERY;1\nEVERYCTRL;0\nOLDEREVERYCTRL;0\n"));
    const std::string full = AsWritten(
        "NOLONGER\nKEEPLOGS\nCLEAROLDER\nEVERY;2\nOLDEREVERY;3\nEVERYCTRL;4\nOLDEREVERYCTRL;5\n"
        "RUNSTARTUP\nRUNMONITOR\n");
    m_folder.Write("log_setup.ini", full);
    EXPECT_EQ(LoadLogOptions(options, m_place), kSettingsDone);
    EXPECT_EQ(options.m_every, 2);
    EXPECT_EQ(options.m_olderThan, 3);
    EXPECT_EQ(options.m_everyUnit, 4);
    EXPECT_EQ(options.m_olderThanUnit, 5);
    EXPECT_EQ(SaveLogOptions(options, m_place), kSettingsDone);
    EXPECT_EQ(m_folder.Read("log_setup.ini"), full);
}

TEST_F(LogOptionsTest, TheSwitchesAreReadPastADateAndSavedWithoutIt) {
    m_folder.Write("printlogcheck.ini", "2024-03-01 12:00:00\nNOFILESIZE\nNOMODIFIEDDATE\n");
    LogCheckOptions options;
    EXPECT_EQ(LoadLogCheckOptions(options, m_place), kSettingsDone);
    EXPECT_EQ(options, (LogCheckOptions{true, false, true, false}));
    EXPECT_EQ(SaveLogCheckOptions(options, m_place), kSettingsDone);
    EXPECT_EQ(m_folder.Read("printlogcheck.ini"), AsWritten("NOFILESIZE\nNOMODIFIEDDATE\n"));
    m_folder.Write("printlogcheck.ini", "2024-03-01 12:00:00\n");
    EXPECT_EQ(LoadLogCheckOptions(options, m_place), kSettingsDone);
    EXPECT_EQ(options, LogCheckOptions());
}

TEST_F(LogOptionsTest, AMonitoredFoldersValueIsFoundByItsIndex) {
    EXPECT_EQ(ReadMonitorValue(m_place, "MONCHECK_LOG", 0), "");
    m_folder.Write("setup.ini",
                   "MONITOR;1\r\nMONCHECK_LOG;0;1\r\nMONCHECK_LOG;10;1\r\nMONCHECK_LOG;1;0\r\n"
                   "MONCHECK_LOGS;2;1\r\nMONCHECK_LOG;2\r\nMONCHECK_LOG;1;yes\r\n");
    EXPECT_EQ(ReadMonitorValue(m_place, "MONCHECK_LOG", 0), "1");
    EXPECT_EQ(ReadMonitorValue(m_place, "MONCHECK_LOG", 1), "yes");
    EXPECT_EQ(ReadMonitorValue(m_place, "MONCHECK_LOG", 2), "");
    EXPECT_EQ(ReadMonitorValue(m_place, "MONCHECK_LOG", 10), "1");
}

}  // namespace
}  // namespace quirepress
