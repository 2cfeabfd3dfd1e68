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
    kWithoutNames,   // ends with the device mode; the names are empty
    kNamesCutShort,  // ends behind it, but before its time; the names are empty
    kModeCutShort,   // ends inside the device mode or its length
    kModeTooLong,    // a length that no block has
    kNamesTooLong,   // the same of the second block
    kUnreadable
};

// Whether what was read can be used: a whole device mode, and names if there are any.
bool HasPrintSetup(PrsReading reading);

struct PrsBlock {
    std::uint32_t length = 0;  // as the file says
    std::string bytes;         // as many of them as there are
};

struct PrsContent {
    PrsBlock mode;
    PrsBlock names;
};

constexpr std::uint32_t kLongestPrsBlock = 16U << 20;

// `content` gets what there is. Takes no more memory than the file has bytes, whatever its lengths say.
PrsReading ReadPrintSetup(InputFile& file, PrsContent& content);

// The same for a file by its path. `message` says what is wrong with it, or is empty.
PrsReading ReadPrintSetup(Files& files, std::string_view path, PrsContent& content, std::string& message);

// `path` becomes a whole file of `setup`, or stays as it was. Failures are traced.
FileResult WritePrintSetup(Files& files, DebugLog& debugLog, std::string_view path, const PrintSetup& setup);

}  // namespace quirepress
