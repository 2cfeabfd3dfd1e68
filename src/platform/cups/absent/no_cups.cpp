#include "platform/cups/open_cups_spooler.h"
#include "platform/spooler.h"

namespace quirepress {

std::unique_ptr<Spooler> OpenCupsSpooler(Files&, EventLoop&, Clock&, CupsNeed, std::string& message) {
    message = "This program was built without CUPS.";
    return nullptr;
}

}  // namespace quirepress
