#include "platform/services.h"

#include <windows.h>

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
#include "platform/windows/make_services.h"

namespace quirepress {

Services MakeSystemServices() {
    // No box of the system's own stops the night: not for a drive without a disk, not for a crash of a
    // program that we start (it inherits this).
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    Services services;
    services.clock = MakeClock();
    services.loop = MakeEventLoop();
    services.files = MakeFiles();
    services.libraries = MakeLibraries();
    services.machine = MakeMachine();
    services.network = MakeNetwork();
    services.processes = MakeProcesses();
    services.registry = MakeRegistry();
    services.shell = MakeShell();
    services.terminal = MakeTerminal();
    return services;
}

}  // namespace quirepress
