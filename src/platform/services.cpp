#include "platform/services.h"

#include "platform/clock.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/libraries.h"
#include "platform/machine.h"
#include "platform/network.h"
#include "platform/processes.h"
#include "platform/registry.h"
#include "platform/shell.h"
#include "platform/terminal.h"

namespace quirepress {

Services::Services() = default;
Services::Services(Services&&) noexcept = default;
Services::~Services() = default;

}  // namespace quirepress
