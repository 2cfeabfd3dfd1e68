#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/files.h"
#include "platform/print_setup.h"

namespace quirepress {

class DebugLog;

// A printer settings file (".prs"): the length of the device mode block (32 bits, lowest byte first), the
// block, and the same for the device names block. Nothing else tells that a file is one.

enum class PrsReading {
    kWhole,
    kWithoutNames,  // ends with the device mode; the names are empty
    kCutShort,      // ends inside a block or a length, or is empty
    kModeTooLong,   // a length that no block has; nothing was read
    kNamesTooLong,  // the same of the second block
    kUnreadable
};

struct PrsBlock {
    std::uint32_t length = 0;  // as the file says
    std::string bytes;         // as many of them as there are
};

struct PrsContent {
    PrsBlock mode;
    PrsBlock names;
};

constexpr std::uint32_t kLongestPrsBlock = 16U << 20;

// Takes no more memory than the file has bytes, whatever its lengths say.
PrsReading ReadPrintSetup(InputFile& file, PrsContent& content);

// `path` becomes a whole file of `setup`, or stays as it was. Failures are traced.
FileResult WritePrintSetup(Files& files, DebugLog& debugLog, std::string_view path, const PrintSetup& setup);

}  // namespace quirepress
