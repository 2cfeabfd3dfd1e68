#pragma once

#include <memory>

#include "platform/services.h"

namespace quirepress {

// Each implementation of a service, built by its own source.
std::unique_ptr<Clock> MakeClock();
std::unique_ptr<EventLoop> MakeEventLoop();
std::unique_ptr<Files> MakeFiles();
std::unique_ptr<Libraries> MakeLibraries(Files& files);
std::unique_ptr<Machine> MakeMachine();
std::unique_ptr<Network> MakeNetwork();
std::unique_ptr<Processes> MakeProcesses();
std::unique_ptr<Registry> MakeRegistry(Files& files, Machine& machine);
std::unique_ptr<Shell> MakeShell(Files& files);
std::unique_ptr<Terminal> MakeTerminal();

}  // namespace quirepress
