#include "settings/balance_options.h"

#include "settings/color_printer_options.h"
#include "settings_fixture.h"

namespace quirepress {
namespace {

class BalanceOptionsTest : public SettingsTest {};

TEST_F(BalanceOptionsTest, KeepsTenPrintersInTheirOrder) {
    BalanceOptions options;
    EXPECT_EQ(LoadBalanceOptions(options, m_place), kSettingsNotRead);
    options.m_printers[0] = {"Laser", "C:\\set\\a.prs", 3};
    options.m_printers[4] = {"Fifth", "", 0};
    options.m_printers[9] = {"Tenth", "j.prs", 12};
    options.m_roundRobin = true;
    ASSERT_EQ(SaveBalanceOptions(options, m_place), kSettingsDone);
    EXPECT_EQ(m_folder.Read("balancedprinters.ini"),
              AsWritten("PRINTER1;Laser\nPRINTER5;Fifth\nPRINTER10;Tenth\nPRS1;C:\\set\\a.prs\nPRS10;j.prs\n"
                        "SPOOL1;3\nSPOOL10;12\nROUNDROBIN\n"));
    BalanceOptions read;
    read.m_printers[2] = {"of an earlier load", "x", 5};
    ASSERT_EQ(LoadBalanceOptions(read, m_place), kSettingsDone);
    for (std::size_t i = 0; i < kBalancedPrinters; ++i) {
        EXPECT_EQ(read.m_printers[i].name, options.m_printers[i].name) << i;
        EXPECT_EQ(read.m_printers[i].prs, options.m_printers[i].prs) << i;
        EXPECT_EQ(read.m_printers[i].spool, options.m_printers[i].spool) << i;
    }
    EXPECT_TRUE(read.m_roundRobin);
}

TEST_F(BalanceOptionsTest, AFailedSaveNamesTheFileOfTheColourSplit) {
    m_folder.Write("balancedprinters.ini", "PRINTER1;A\n");
    m_files.FailAlways(FaultyFiles::Call::kOpenForWriting, FileResult::kNoAccess);
    EXPECT_EQ(SaveBalanceOptions({}, m_place), kSettingsNotWritten);
    EXPECT_EQ(SaveColorPrinterOptions({}, m_place), kSettingsNotWritten);
    ASSERT_EQ(m_prompts.boxes.size(), 2U);
    for (const FakePrompts::Box& box : m_prompts.boxes)
        EXPECT_TRUE(StartsWith(box.text, "Can't open pdfcolorprinters.ini file.")) << box.text;
    EXPECT_EQ(m_folder.Read("balancedprinters.ini"), "PRINTER1;A\n");
}

TEST_F(BalanceOptionsTest, TheColourSplitSurvivesASave) {
    ColorPrinterOptions options;
    options.m_split = options.m_duplex = options.m_wholeDocuments = true;
    options.m_colorPrinter = "Ink";
    options.m_colorPrs = "ink.prs";
    options.m_monoPrinter = "Laser";
    options.m_monoPrs = "laser.prs";
    options.m_leastMonoPages = 4;
    options.m_grayTolerance = 2;
    ASSERT_EQ(SaveColorPrinterOptions(options, m_place), kSettingsDone);
    EXPECT_EQ(m_folder.Read("pdfcolorprinters.ini"),
              AsWritten("PDC_SPLIT\nPDC_COLORPRINTER;Ink\nPDC_COLORPRS;ink.prs\nPDC_MONOPRINTER;Laser\n"
                        "PDC_MONOPRS;laser.prs\nPDC_MINMONOPAGES;4\nPDC_GRAYTOLERANCE;2\nPDC_DUPLEX\n"
                        "PDC_WHOLEDOCUMENTS\n"));
    ColorPrinterOptions read;
    ASSERT_EQ(LoadColorPrinterOptions(read, m_place), kSettingsDone);
    ASSERT_EQ(SaveColorPrinterOptions(read, m_place), kSettingsDone);
    EXPECT_TRUE(read.m_split && read.m_duplex && read.m_wholeDocuments);
    EXPECT_EQ(read.m_monoPrs, "laser.prs");
    EXPECT_EQ(read.m_leastMonoPages, 4);
}

}  // namespace
}  // namespace quirepress
