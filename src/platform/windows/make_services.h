#pragma once

#include <memory>

#include "platform/services.h"

namespace quirepress {

// One per service, as MakeSystemServices puts them together.
std::unique_ptr<Clock> MakeClock();
std::unique_ptr<EventLoop> MakeEventLoop();
std::unique_ptr<Files> MakeFiles();
std::unique_ptr<Libraries> MakeLibraries();
std::unique_ptr<Machine> MakeMachine();
std::unique_ptr<Network> MakeNetwork();
std::unique_ptr<Processes> MakeProcesses();
std::unique_ptr<Registry> MakeRegistry();
std::unique_ptr<Shell> MakeShell();
std::unique_ptr<Terminal> MakeTerminal();

}  // namespace quirepress
