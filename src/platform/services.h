#pragma once

#include <memory>

namespace quirepress {

class Clock;
class EventLoop;
class Files;
class Libraries;
class Machine;
class Network;
class Processes;
class Registry;
class Shell;
class Terminal;

// The services of the system that the program runs on.
struct Services {
    Services();
    Services(Services&&) noexcept;
    ~Services();
    std::unique_ptr<Clock> clock;
    std::unique_ptr<EventLoop> loop;
    std::unique_ptr<Files> files;
    std::unique_ptr<Libraries> libraries;
    std::unique_ptr<Machine> machine;
    std::unique_ptr<Network> network;
    std::unique_ptr<Processes> processes;
    std::unique_ptr<Registry> registry;
    std::unique_ptr<Shell> shell;
    std::unique_ptr<Terminal> terminal;
};

// Real ones, each with nothing started yet. Built for the system at hand.
Services MakeSystemServices();

}  // namespace quirepress
