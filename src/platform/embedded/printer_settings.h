#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/embedded/printer_port.h"
#include "platform/spooler.h"

namespace quirepress {

// A printer.ini.
struct PrinterSettings {
    std::string portText = "folder:";
    PrinterPort port;
    std::string portError;  // why `portText` is no port; empty when it is one
    std::string driver;
    std::uint32_t statusBits = 0;  // as they stand in the file
    bool paused = false;
    std::vector<BinInfo> bins;
};

// Lines that mean nothing are passed over.
PrinterSettings ReadPrinterSettings(std::string_view text);

// A new printer's file.
std::string WritePrinterSettings(std::string_view port);

// `text` with the flag or without it, everything else as it stands.
std::string WithPausedFlag(std::string_view text, bool paused);

}  // namespace quirepress
