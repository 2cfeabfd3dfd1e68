#include "platform/print_setup.h"

#include <gtest/gtest.h>

#include "base/little_endian.h"
#include "platform/spooler.h"

namespace quirepress {
namespace {

JobTicket FullTicket() {
    JobTicket ticket;
    ticket.orientation = JobTicket::Orientation::kLandscape;
    ticket.color = JobTicket::Color::kColor;
    ticket.duplex = JobTicket::Duplex::kHorizontal;
    ticket.quality = JobTicket::Quality::kHigh;
    ticket.scale = 1000;
    ticket.paperSize = 9;
    ticket.copies = 1'000'000;
    ticket.tray = -7;
    ticket.trayName = "Oberes Fach \xC3\xBC";
    return ticket;
}

class PortableSetup : public testing::Test {
protected:
    PrintSetup Write(const JobTicket& ticket) {
        PrinterInfo printer;
        printer.name = "Office";
        printer.port = "socket://192.0.2.7:9100";
        printer.driver = "Laser";
        printer.isDefault = true;
        PrintSetup setup;
        EXPECT_EQ(m_format.WriteSetup(printer, ticket, setup, m_message), 0) << m_message;
        return setup;
    }

    // Reading and changing refuse the block and leave everything as it was.
    void ExpectRefusedMode(std::string block) {
        const std::string before = block;
        JobTicket ticket = FullTicket();
        m_message.clear();
        EXPECT_EQ(m_format.ReadTicket(block, ticket, m_message), -1);
        EXPECT_NE(m_message, "");
        EXPECT_EQ(ticket, FullTicket());
        EXPECT_EQ(m_format.ChangeTicket(block, {}, m_message), -1);
        EXPECT_EQ(block, before);
    }

    void ExpectRefusedNames(std::string_view block) {
        DeviceNames names{"a", "b", "c", true};
        m_message.clear();
        EXPECT_EQ(m_format.ReadNames(block, names, m_message), -1) << block.size();
        EXPECT_NE(m_message, "");
        EXPECT_EQ(names, (DeviceNames{"a", "b", "c", true}));
    }

    PrintSetupFormat& m_format = PortableSetupFormat();
    std::string m_message;
};

TEST_F(PortableSetup, ComesBackAsItWasWritten) {
    const PrintSetup setup = Write(FullTicket());
    JobTicket ticket;
    DeviceNames names;
    EXPECT_EQ(m_format.ReadTicket(setup.deviceMode, ticket, m_message), 0) << m_message;
    EXPECT_EQ(ticket, FullTicket());
    EXPECT_EQ(m_format.ReadNames(setup.deviceNames, names, m_message), 0) << m_message;
    EXPECT_EQ(names, (DeviceNames{"Laser", "Office", "socket://192.0.2.7:9100", true}));
    EXPECT_EQ(m_format.ReadTicket("", ticket, m_message), 0);
    EXPECT_EQ(ticket, JobTicket());
    EXPECT_EQ(m_format.ReadNames("", names, m_message), 0);
    EXPECT_EQ(names, DeviceNames());
}

TEST_F(PortableSetup, IsRefusedWhenCutShortAnywhere) {
    const PrintSetup setup = Write(FullTicket());
    for (std::size_t size = 1; size < setup.deviceMode.size(); ++size)
        ExpectRefusedMode(setup.deviceMode.substr(0, size));
    for (std::size_t size = 1; size < setup.deviceNames.size(); ++size)
        ExpectRefusedNames(std::string_view(setup.deviceNames).substr(0, size));
}

TEST_F(PortableSetup, IsRefusedWhenItLies) {
    const PrintSetup setup = Write(FullTicket());
    const auto with16 = [](std::string block, std::size_t at, std::uint16_t value) {
        WriteLittle16(block, at, value);
        return block;
    };
    ExpectRefusedMode(with16(setup.deviceMode, 4, 0));
    for (const unsigned size : {0U, 12U, 171U, 173U, 65535U})
        ExpectRefusedMode(with16(setup.deviceMode, 6, static_cast<std::uint16_t>(size)));
    for (const std::uint32_t added : {1U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        std::string block = setup.deviceMode;
        WriteLittle32(block, 8, added);
        ExpectRefusedMode(block);
    }
    for (const std::size_t at : {0U, 2U, 4U})
        for (const std::size_t start :
             {std::size_t{0}, std::size_t{7}, setup.deviceNames.size(), std::size_t{65535}})
            ExpectRefusedNames(with16(setup.deviceNames, at, static_cast<std::uint16_t>(start)));
}

TEST_F(PortableSetup, OfAnotherPrintSystemIsRefused) {
    // Those begin with the printer's name.
    std::string other(220, '\0');
    other.replace(0, 6, "Office");
    WriteLittle16(other, 32, 0x0401);
    WriteLittle16(other, 36, 220);
    ExpectRefusedMode(other);
    EXPECT_NE(m_message.find("another print system"), std::string::npos) << m_message;
    ExpectRefusedMode("QPDX" + Write({}).deviceMode.substr(4));
}

TEST_F(PortableSetup, KeepsWhatItDoesNotKnow) {
    // A later version, with a field more, what the print system added, and the rest of a larger memory block.
    std::string block = Write(FullTicket()).deviceMode;
    WriteLittle16(block, 4, 2);
    WriteLittle16(block, 6, static_cast<std::uint16_t>(block.size() + 4));
    WriteLittle32(block, 8, 5);
    WriteLittle32(block, 24, 9);      // a quality that there is not yet
    WriteLittle32(block, 28, 70000);  // beyond every scale
    block += "new!added" + std::string(100, '\x55');
    JobTicket ticket;
    ASSERT_EQ(m_format.ReadTicket(block, ticket, m_message), 0) << m_message;
    EXPECT_EQ(ticket.quality, JobTicket::Quality::kUnset);
    EXPECT_EQ(ticket.scale, 0);
    EXPECT_EQ(ticket.copies, 1'000'000);

    ticket.duplex = JobTicket::Duplex::kSimplex;
    ticket.trayName = "B";
    std::string expected = block;
    WriteLittle32(expected, 20, 1);
    expected.replace(44, 128, "B" + std::string(127, '\0'));
    ASSERT_EQ(m_format.ChangeTicket(block, ticket, m_message), 0) << m_message;
    EXPECT_EQ(block, expected);
}

TEST_F(PortableSetup, RefusesNamesThatDoNotFit) {
    JobTicket ticket;
    ticket.trayName = std::string(128, 't');
    JobTicket read;
    EXPECT_EQ(m_format.ReadTicket(Write(ticket).deviceMode, read, m_message), 0);
    EXPECT_EQ(read.trayName, ticket.trayName);
    ticket.trayName += 't';
    std::string block;
    EXPECT_EQ(m_format.ChangeTicket(block, ticket, m_message), -1);
    EXPECT_EQ(block, "");
    PrinterInfo printer;
    printer.driver = std::string(65'528, 'd');
    PrintSetup setup;
    EXPECT_EQ(m_format.WriteSetup(printer, {}, setup, m_message), -1);
    EXPECT_TRUE(setup.IsEmpty());
}

TEST(OptionsText, TellsWhatIsAskedFor) {
    EXPECT_EQ(OptionsText({}, ""), "");
    JobTicket ticket = FullTicket();
    ticket.trayName = "Upper tray";
    EXPECT_EQ(OptionsText(ticket, "1-3,7"),
              "media=A4 sides=two-sided-short-edge color=color orientation=landscape quality=high scale=1000 "
              "copies=1000000 pages=1-3,7 tray=Upper tray");
    JobTicket codes;
    codes.paperSize = 119;
    codes.tray = 4;
    EXPECT_EQ(OptionsText(codes, ""), "media=119 tray=4");
}

}  // namespace
}  // namespace quirepress
