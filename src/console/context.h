#pragma once

#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

#include "platform/services.h"

namespace quirepress {

class Application;
class ConsolePrompts;

constexpr int kExitDone = 0;
constexpr int kExitNotAllDone = 1;
constexpr int kExitUsage = 2;
constexpr int kExitNoPrinter = 3;
constexpr int kExitStopped = 130;

// The options that stand before every command.
struct GlobalOptions {
    std::string home;
    std::string spooler;
    int stallLimit = 600;  // seconds; 0: none
    bool unattended = false;
    bool debug = false;
    bool json = false;
};

// What a command needs: the application, once it asks for it, and the three streams by their rules.
class Context {
public:
    explicit Context(Services& services);
    ~Context();

    GlobalOptions m_global;

    Services& System() { return m_services; }

    // The application with its working folder; null when there can be none (which is the command's result).
    Application* OpenApplication();
    // The application with its spooler; null when there is none (which is the command's result).
    // With `failure`, this is why not.
    Application* OpenApplicationWithSpooler(std::string* failure = nullptr);

    bool WantsJson() const { return m_global.json; }
    // Colours and moving text on a stream that is a terminal, unless NO_COLOR says otherwise.
    bool OutputHasColours();
    bool ErrorsHaveColours();

    void Print(std::string_view text);               // results
    void PrintJson(const nlohmann::json& document);  // the one document of --json
    void Complain(std::string_view text);            // "qpr: TEXT" on standard error
    // The closing of a command that failed, or has no JSON shape of its own: {"result": n, "message": TEXT},
    // or the message alone.
    void PrintResult(int result, std::string_view message);
    // False once standard output is closed or full: what was printed is not all there.
    bool OutputIsWhole() const { return m_outputIsWhole; }

private:
    Services& m_services;
    std::unique_ptr<ConsolePrompts> m_prompts;
    std::unique_ptr<Application> m_application;
    bool m_outputIsWhole = true;
};

}  // namespace quirepress
