#include <fcntl.h>
#include <unistd.h>

#include <csignal>

#include "platform/clock.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/libraries.h"
#include "platform/linux/make_services.h"
#include "platform/machine.h"
#include "platform/network.h"
#include "platform/processes.h"
#include "platform/registry.h"
#include "platform/services.h"
#include "platform/shell.h"
#include "platform/terminal.h"

namespace quirepress {

namespace {

// A program started without a standard stream would give its number to the first file that it opens.
void FillStandardStreams() {
    int last = open("/dev/null", O_RDWR);
    while (last >= 0 && last <= STDERR_FILENO) last = open("/dev/null", O_RDWR);
    close(last);
}

}  // namespace

Services MakeSystemServices() {
    FillStandardStreams();
    // A peer that has gone away, or a file that may not grow, is a failed write and not the program's end.
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
    Services services;
    services.clock = MakeClock();
    services.loop = MakeEventLoop();
    services.files = MakeFiles();
    services.libraries = MakeLibraries(*services.files);
    services.machine = MakeMachine();
    services.network = MakeNetwork();
    services.processes = MakeProcesses();
    services.registry = MakeRegistry(*services.files, *services.machine);
    services.shell = MakeShell(*services.files);
    services.terminal = MakeTerminal();
    return services;
}

}  // namespace quirepress
