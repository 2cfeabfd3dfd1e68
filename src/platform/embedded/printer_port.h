#pragma once

#include <string>
#include <string_view>

namespace quirepress {

// Where a printer's documents go.
struct PrinterPort {
    enum class Kind { kFolder, kSocket, kLpd, kNull } kind = Kind::kFolder;
    std::string folder;  // kFolder; empty: the printer's own "Output"
    std::string host;    // kSocket, kLpd
    int port = 0;        // kSocket, kLpd
    std::string queue;   // kLpd
};

// Reads "folder:", "folder:DIR", "socket://HOST[:PORT]", "lpd://HOST[:PORT]/QUEUE" (an IPv6 address in
// brackets; ports 9100 and 515 where none is given) or "null:". False when it is none of them; `message` then
// says so in a sentence.
bool ParsePrinterPort(std::string_view text, PrinterPort& port, std::string& message);

// Whether a printer may be called `name`; if not, `message` says why in a sentence.
bool CheckPrinterName(std::string_view name, std::string& message);

}  // namespace quirepress
