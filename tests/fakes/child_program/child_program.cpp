// A program for tests of processes, locks and connections: does what its first argument says.
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "fakes/child_program/loopback_peer.h"
#include "fakes/child_program/stand_in_converter.h"
#include "fakes/child_program/start_again.h"
#include "platform/files.h"
#include "platform/machine.h"
#include "platform/program_arguments.h"
#include "platform/services.h"
#include "platform/terminal.h"

namespace quirepress {

namespace {

using Words = std::vector<std::string>;

void Sleep(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

int ToNumber(const std::string& text) {
    return std::atoi(text.c_str());
}

bool Say(const std::string& line) {
    return MakeSystemServices().terminal->WriteOutput(line + "\n");
}

int Exit(const Words& words) {
    return ToNumber(words.at(0));
}

int SleepFor(const Words& words) {
    Sleep(ToNumber(words.at(0)));
    return 0;
}

// Sleeps, however politely it is asked to end.
int IgnoreRequests(const Words& words) {
    std::signal(SIGTERM, SIG_IGN);
    std::signal(SIGINT, SIG_IGN);
    Say("ready");
    return SleepFor(words);
}

int EchoLines(const Words&) {
    Services services = MakeSystemServices();
    std::string line;
    int count = 0;
    for (; services.terminal->ReadLine(line); ++count) services.terminal->WriteOutput(line + "\n");
    services.terminal->WriteErrors("lines: " + std::to_string(count) + "\n");
    return 0;
}

int ShowArguments(const Words& words) {
    for (const std::string& word : words) Say("[" + word + "]");
    return 0;
}

int ShowEnvironment(const Words& words) {
    std::string value = "(none)";
    MakeSystemServices().machine->ReadEnvironment(words.at(0), value);
    Say(value);
    return 0;
}

int ShowFolder(const Words&) {
    Say(MakeSystemServices().files->ResolvePath("."));
    return 0;
}

int ShowTerminal(const Words&) {
    const Services services = MakeSystemServices();
    Terminal& terminal = *services.terminal;
    Say(std::to_string(terminal.InputIsTerminal()) + std::to_string(terminal.OutputIsTerminal()) +
        std::to_string(terminal.ErrorsAreTerminal()) + " " + std::to_string(terminal.Columns()));
    return 0;
}

// Exit code 9 when the megabytes cannot be had.
int Allocate(const Words& words) {
    const std::size_t size = static_cast<std::size_t>(ToNumber(words.at(0))) * 1024 * 1024;
    const std::unique_ptr<char[]> memory(new (std::nothrow) char[size]);
    if (!memory) return 9;
    for (std::size_t i = 0; i < size; i += 4096) memory[i] = 1;
    return 0;
}

// Lets a file grow for as long as this program lives (a minute at most).
int Beat(const Words& words) {
    for (int i = 0; i < 6000; ++i) {
        std::ofstream(words.at(0), std::ios::app) << '.';
        Sleep(10);
    }
    return 0;
}

// Starts a further program that beats, and goes on for some milliseconds itself.
int StartBeat(const Words& words) {
    if (!StartAgain({"beat", words.at(0)}, false)) return 1;
    return SleepFor({words.at(1)});
}

// The same with one that leaves this program's group and session, as services do.
int StartDetachedBeat(const Words& words) {
    if (!StartAgain({"beat", words.at(0)}, true)) return 1;
    return SleepFor({words.at(1)});
}

int HoldLock(const Words& words) {
    const Services services = MakeSystemServices();
    FileResult result = FileResult::kDone;
    const auto lock = services.files->TryLock(words.at(0), result);
    Say(lock ? "held" : "busy");
    Sleep(60'000);
    return 0;
}

}  // namespace

}  // namespace quirepress

int main(int argumentCount, char** arguments) {
    using namespace quirepress;
    const std::map<std::string, std::function<int(const Words&)>> commands = {
        {"exit", Exit},          {"sleep", SleepFor},          {"ignore-requests", IgnoreRequests},
        {"echo", EchoLines},     {"arguments", ShowArguments}, {"environment", ShowEnvironment},
        {"folder", ShowFolder},  {"terminal", ShowTerminal},   {"allocate", Allocate},
        {"beat", Beat},          {"start-beat", StartBeat},    {"start-detached-beat", StartDetachedBeat},
        {"hold-lock", HoldLock}, {"accept", RunLoopbackPeer},  {"convert", RunStandInConverter},
    };
    Words words = ReadProgramArguments(argumentCount, arguments);
    if (words.empty() || commands.count(words[0]) == 0) return 99;
    const auto run = commands.at(words[0]);
    words.erase(words.begin());
    return run(words);
}
