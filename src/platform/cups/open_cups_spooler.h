#pragma once

#include <memory>
#include <string>

namespace quirepress {

class Clock;
class EventLoop;
class Files;
class Spooler;

enum class CupsNeed {
    kServer,         // that the server answers; it is waited for as for any call
    kPrinterAtOnce,  // that it answers at once and has a printer
};

// The print system CUPS of this environment (CUPS_SERVER and what else libcups reads). Null with `message`
// when it is not what is needed, and where this program was built without it. May pump.
std::unique_ptr<Spooler> OpenCupsSpooler(Files& files, EventLoop& loop, Clock& clock, CupsNeed need,
                                         std::string& message);

}  // namespace quirepress
