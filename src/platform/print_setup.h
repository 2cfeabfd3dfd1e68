#pragma once

#include <string>
#include <string_view>

#include "platform/job_ticket.h"

namespace quirepress {

struct PrinterInfo;

// A printer with its settings, as its print system writes them; both blocks are empty when none is set.
struct PrintSetup {
    std::string deviceMode;
    std::string deviceNames;

    bool IsEmpty() const { return deviceMode.empty() && deviceNames.empty(); }
    bool operator==(const PrintSetup&) const = default;
};

// What a device names block says.
struct DeviceNames {
    std::string driver;
    std::string device;  // the printer's name
    std::string port;
    bool isDefault = false;

    bool operator==(const DeviceNames&) const = default;
};

// How a print system writes the blocks of a set-up. A block may be longer than its content says, and may come
// from anywhere: cut short, damaged, of another print system. Results are 0, or -1 with the reason as a
// sentence in `message`; what was to be filled or changed then stays as it was.
class PrintSetupFormat {
public:
    virtual ~PrintSetupFormat() = default;
    // The printer's own settings, and on top of them what the ticket asks for.
    virtual int WriteSetup(const PrinterInfo& printer, const JobTicket& ticket, PrintSetup& setup,
                           std::string& message) = 0;
    // An empty block has empty names.
    virtual int ReadNames(std::string_view deviceNames, DeviceNames& names, std::string& message) = 0;
    // An empty block asks for nothing.
    virtual int ReadTicket(std::string_view deviceMode, JobTicket& ticket, std::string& message) = 0;
    // Makes the block ask for `ticket`. All else in it stays: what the print system added, what is of a later
    // version, and every value that the ticket does not change.
    virtual int ChangeTicket(std::string& deviceMode, const JobTicket& ticket, std::string& message) = 0;
};

// The format of the print systems that have none of their own (docs/formats-printer-settings.md).
PrintSetupFormat& PortableSetupFormat();

}  // namespace quirepress
