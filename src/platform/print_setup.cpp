#include "platform/print_setup.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>

#include "base/little_endian.h"
#include "platform/spooler.h"

namespace quirepress {

namespace {

// The device mode block: "QPDM", version, size of the fixed part, size of what the print system added behind
// it, then the fields.
constexpr std::string_view kMagic = "QPDM";
constexpr std::uint16_t kVersion = 1;
constexpr std::size_t kVersionAt = 4;
constexpr std::size_t kFixedSizeAt = 6;
constexpr std::size_t kAddedSizeAt = 8;
constexpr std::size_t kHeaderSize = 12;
constexpr std::size_t kTrayNameAt = 44;
constexpr std::size_t kTrayNameSize = 128;  // zero-padded
constexpr std::size_t kFixedSize = kTrayNameAt + kTrayNameSize;

// A number of the ticket and where it stands. What is not in its range reads as 0: left to the printer.
struct NumberField {
    std::size_t at;
    std::int32_t lowest;
    std::int32_t highest;
    std::int32_t (*read)(const JobTicket& ticket);
    void (*write)(JobTicket& ticket, std::int32_t value);
};

template <auto Member>
constexpr NumberField Field(std::size_t at, std::int32_t lowest, std::int32_t highest) {
    using Value = std::remove_cvref_t<decltype(std::declval<JobTicket>().*Member)>;
    return {at, lowest, highest,
            [](const JobTicket& ticket) { return static_cast<std::int32_t>(ticket.*Member); },
            [](JobTicket& ticket, std::int32_t value) { ticket.*Member = static_cast<Value>(value); }};
}

constexpr std::array<NumberField, 8> kFields = {
    Field<&JobTicket::orientation>(12, 1, 2),
    Field<&JobTicket::color>(16, 1, 2),
    Field<&JobTicket::duplex>(20, 1, 3),
    Field<&JobTicket::quality>(24, 1, 3),
    Field<&JobTicket::scale>(28, 1, 1000),
    Field<&JobTicket::paperSize>(32, 1, 1000),
    Field<&JobTicket::copies>(36, 1, 1'000'000),
    Field<&JobTicket::tray>(40, std::numeric_limits<std::int32_t>::min(),
                            std::numeric_limits<std::int32_t>::max()),
};

std::int32_t ReadNumber(std::string_view block, const NumberField& field) {
    const auto value = static_cast<std::int32_t>(ReadLittle32(block, field.at));
    return value < field.lowest || value > field.highest ? 0 : value;
}

std::string ReadTrayName(std::string_view block) {
    const std::string_view field = block.substr(kTrayNameAt, kTrayNameSize);
    return std::string(field.substr(0, field.find('\0')));
}

JobTicket ReadFields(std::string_view block) {
    JobTicket ticket;
    for (const NumberField& field : kFields) field.write(ticket, ReadNumber(block, field));
    ticket.trayName = ReadTrayName(block);
    return ticket;
}

bool CheckBlock(std::string_view block, std::string& message) {
    const std::size_t known = std::min(block.size(), kMagic.size());
    if (block.substr(0, known) != kMagic.substr(0, known)) {
        message = "The printer settings were made by another print system; they can't be used with this one.";
        return false;
    }
    message = "The printer settings are damaged: their device mode is not whole.";
    if (block.size() < kHeaderSize) return false;
    const std::size_t fixedSize = ReadLittle16(block, kFixedSizeAt);
    if (ReadLittle16(block, kVersionAt) == 0 || fixedSize < kFixedSize || fixedSize > block.size())
        return false;
    if (ReadLittle32(block, kAddedSizeAt) > block.size() - fixedSize) return false;
    message.clear();
    return true;
}

std::string NewBlock() {
    std::string block(kFixedSize, '\0');
    std::copy(kMagic.begin(), kMagic.end(), block.begin());
    WriteLittle16(block, kVersionAt, kVersion);
    WriteLittle16(block, kFixedSizeAt, static_cast<std::uint16_t>(kFixedSize));
    return block;
}

// The names block: four 16-bit numbers, namely where driver, device and port start (from the start of the
// block) and whether it is the default printer; then the zero-terminated names.
constexpr std::size_t kNamesHeaderSize = 8;
constexpr std::size_t kIsDefaultAt = 6;

bool ReadName(std::string_view block, std::size_t offsetAt, std::string& name) {
    const std::size_t start = ReadLittle16(block, offsetAt);
    if (start < kNamesHeaderSize || start >= block.size()) return false;
    // A name without its end may be the start of another printer's.
    const std::size_t end = block.find('\0', start);
    if (end == std::string_view::npos) return false;
    name = block.substr(start, end - start);
    return true;
}

class PortableFormat : public PrintSetupFormat {
public:
    int WriteSetup(const PrinterInfo& printer, const JobTicket& ticket, PrintSetup& setup,
                   std::string& message) override {
        PrintSetup written;
        written.deviceMode = NewBlock();
        if (ChangeTicket(written.deviceMode, ticket, message) != 0) return -1;
        std::string& names = written.deviceNames;
        names.assign(kNamesHeaderSize, '\0');
        std::size_t offsetAt = 0;
        for (const std::string* name : {&printer.driver, &printer.name, &printer.port}) {
            if (names.size() > std::numeric_limits<std::uint16_t>::max()) {
                message = "The names of the printer's driver and port are too long to be kept.";
                return -1;
            }
            WriteLittle16(names, offsetAt, static_cast<std::uint16_t>(names.size()));
            offsetAt += 2;
            names.append(*name).push_back('\0');
        }
        WriteLittle16(names, kIsDefaultAt, printer.isDefault ? 1 : 0);
        setup = std::move(written);
        return 0;
    }

    int ReadNames(std::string_view deviceNames, DeviceNames& names, std::string& message) override {
        DeviceNames read;
        if (!deviceNames.empty()) {
            const bool isWhole = deviceNames.size() >= kNamesHeaderSize &&
                                 ReadName(deviceNames, 0, read.driver) &&
                                 ReadName(deviceNames, 2, read.device) && ReadName(deviceNames, 4, read.port);
            if (!isWhole) {
                message = "The printer settings are damaged: their device names are not whole.";
                return -1;
            }
            read.isDefault = (ReadLittle16(deviceNames, kIsDefaultAt) & 1U) != 0;
        }
        names = std::move(read);
        return 0;
    }

    int ReadTicket(std::string_view deviceMode, JobTicket& ticket, std::string& message) override {
        if (!deviceMode.empty() && !CheckBlock(deviceMode, message)) return -1;
        ticket = deviceMode.empty() ? JobTicket() : ReadFields(deviceMode);
        return 0;
    }

    int ChangeTicket(std::string& deviceMode, const JobTicket& ticket, std::string& message) override {
        if (!deviceMode.empty() && !CheckBlock(deviceMode, message)) return -1;
        if (ticket.trayName.size() > kTrayNameSize) {
            message = "The name of the tray is too long to be kept.";
            return -1;
        }
        std::string block = deviceMode.empty() ? NewBlock() : deviceMode;
        for (const NumberField& field : kFields)
            if (field.read(ticket) != ReadNumber(block, field))
                WriteLittle32(block, field.at, static_cast<std::uint32_t>(field.read(ticket)));
        std::string trayName = ticket.trayName;
        trayName.resize(kTrayNameSize, '\0');
        block.replace(kTrayNameAt, kTrayNameSize, trayName);
        deviceMode = std::move(block);
        return 0;
    }
};

}  // namespace

PrintSetupFormat& PortableSetupFormat() {
    static PortableFormat format;
    return format;
}

}  // namespace quirepress
