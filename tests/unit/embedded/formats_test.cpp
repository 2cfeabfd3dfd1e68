#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/text.h"
#include "platform/embedded/job_record.h"
#include "platform/embedded/printer_port.h"
#include "platform/embedded/printer_settings.h"

namespace quirepress {
namespace {

TEST(PrinterPort, IsReadInEveryForm) {
    PrinterPort port;
    std::string message;
    ASSERT_TRUE(ParsePrinterPort("folder:", port, message));
    EXPECT_EQ(port.kind, PrinterPort::Kind::kFolder);
    EXPECT_EQ(port.folder, "");
    ASSERT_TRUE(ParsePrinterPort("folder:/srv/out put", port, message));
    EXPECT_EQ(port.folder, "/srv/out put");
    ASSERT_TRUE(ParsePrinterPort("null:", port, message));
    EXPECT_EQ(port.kind, PrinterPort::Kind::kNull);
    const auto hostAndPort = [&](std::string_view text) {
        EXPECT_TRUE(ParsePrinterPort(text, port, message)) << message;
        EXPECT_EQ(port.kind, PrinterPort::Kind::kSocket);
        return port.host + " " + std::to_string(port.port);
    };
    EXPECT_EQ(hostAndPort("socket://printer.local"), "printer.local 9100");
    EXPECT_EQ(hostAndPort("socket://10.0.0.7:1/"), "10.0.0.7 1");
    EXPECT_EQ(hostAndPort("socket://[fe80::1]:65535"), "fe80::1 65535");
    EXPECT_EQ(hostAndPort("socket://[::1]"), "::1 9100");
    EXPECT_EQ(hostAndPort("socket://::1"), "::1 9100");
    const auto lpdParts = [&](std::string_view text) {
        EXPECT_TRUE(ParsePrinterPort(text, port, message)) << message;
        EXPECT_EQ(port.kind, PrinterPort::Kind::kLpd);
        return port.host + " " + std::to_string(port.port) + " " + port.queue;
    };
    EXPECT_EQ(lpdParts("lpd://printer.local/raw"), "printer.local 515 raw");
    EXPECT_EQ(lpdParts("lpd://[fe80::1]:1515/PASSTHRU:1/a"), "fe80::1 1515 PASSTHRU:1/a");
    for (const char* bad : {"lpd://", "lpd://host", "lpd://host/", "lpd:///raw", "lpd://host:0/raw",
                            "lpd://host/two words", "lpd://user@host/raw", "lpd://host/a\nb"})
        EXPECT_FALSE(ParsePrinterPort(bad, port, message)) << bad;
}

TEST(PrinterSettings, AreReadPastGarbage) {
    const PrinterSettings settings = ReadPrinterSettings(
        "\x01\xff;;\nPORTS;x\nPORT;null:\r\nSTATUS;4194304\nPAUSED\nBIN;7;Upper "
        "tray\nBIN;x\nBIN\nDRIVER;Laser\nBIN;15;Large\n");
    EXPECT_EQ(settings.port.kind, PrinterPort::Kind::kNull);
    EXPECT_EQ(settings.statusBits, printer_status::kDoorOpen);
    EXPECT_TRUE(settings.paused);
    EXPECT_EQ(settings.driver, "Laser");
    ASSERT_EQ(settings.bins.size(), 2U);
    EXPECT_EQ(settings.bins[1].number, 15);
    EXPECT_EQ(settings.bins[0].name, "Upper tray");
    EXPECT_EQ(ReadPrinterSettings("").portText, "folder:");
    EXPECT_NE(ReadPrinterSettings("PORT;lpt1:").portError, "");
}

TEST(PrinterSettings, OnlyThePausedFlagChanges) {
    const std::string text = "# mine\r\nPORT;null:\nPAUSEDLY\n" + std::string(400, 'x') + "\nlast";
    const std::string paused = WithPausedFlag(text, true);
    EXPECT_TRUE(ReadPrinterSettings(paused).paused);
    EXPECT_EQ(WithPausedFlag(paused, true), paused);
    EXPECT_EQ(WithPausedFlag(paused, false), text);
    EXPECT_EQ(WithPausedFlag("PORT;null:\nPAUSED;1\r\nx", false), "PORT;null:\nx");
}

TEST(JobRecord, KeepsEveryByteAndTellsWhenItIsNotWhole) {
    JobRecord record;
    record.document = "a;b\n%0A\x7f\xff" + std::string(1, '\0') + "%";
    record.user = "u";
    record.machine = "m";
    record.dataType = "RAW";
    record.submitted = {2024, 5, 6, 7, 8, 9};
    const std::string text = WriteJobRecord(record);
    JobRecord read;
    ASSERT_TRUE(ReadJobRecord(text, read));
    EXPECT_EQ(read.document, record.document);
    EXPECT_EQ(read.user, "u");
    EXPECT_EQ(read.submitted, record.submitted);
    for (std::size_t size = 0; size + 1 < text.size(); ++size)
        EXPECT_FALSE(ReadJobRecord(text.substr(0, size), read)) << size;
    EXPECT_FALSE(ReadJobRecord("x" + text, read));
}

TEST(OutputName, IsTheIdAndTheTitle) {
    EXPECT_EQ(OutputName(12, "/docs/Report (1).ps"), "00000012-Report (1).ps");
    EXPECT_EQ(OutputName(12, "Report.ps", 3), "00000012-Report (3).ps");
    EXPECT_EQ(OutputName(99'999'999, "a\tb\n"), "99999999-a_b_");
    EXPECT_EQ(OutputName(1, "/docs/"), "00000001-document");
    EXPECT_EQ(OutputName(1, ".."), "00000001-..");
    EXPECT_EQ(OutputName(1, "C:\\docs\\a.ps").find('\\'), std::string::npos);
}

TEST(OutputName, IsCutBetweenCharactersAndKeepsItsExtension) {
    for (std::size_t ascii = 0; ascii < 4; ++ascii) {
        std::string title(ascii, 'x');
        while (title.size() < 300) title += "\xF0\x9F\x96\xA8";
        const std::string name = OutputName(1, title + ".pdf");
        EXPECT_LE(name.size(), 255U);
        EXPECT_GT(name.size(), 251U);
        EXPECT_TRUE(name.ends_with(".pdf"));
        EXPECT_TRUE(IsValidUtf8(name));
    }
    EXPECT_EQ(OutputName(1, std::string(400, '\x80')).size(), 255U);
    EXPECT_EQ(OutputName(1, "a." + std::string(400, 'b'), 2).size(), 255U);
    EXPECT_EQ(OutputName(1, std::string(246, 'a')).size(), 255U);
}

}  // namespace
}  // namespace quirepress
