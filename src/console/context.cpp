#include "console/context.h"

#include <nlohmann/json.hpp>

#include "app/application.h"
#include "base/text.h"
#include "console/console_prompts.h"
#include "platform/clock.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/interrupts.h"
#include "platform/libraries.h"
#include "platform/machine.h"
#include "platform/network.h"
#include "platform/processes.h"
#include "platform/registry.h"
#include "platform/shell.h"
#include "platform/spooler.h"
#include "platform/terminal.h"

namespace quirepress {

namespace {

bool HasColours(Services& services, bool isTerminal) {
    std::string value;
    return isTerminal && !(services.machine->ReadEnvironment("NO_COLOR", value) && !value.empty());
}

}  // namespace

Context::Context(Services& services)
    : m_services(services), m_prompts(std::make_unique<ConsolePrompts>(*services.terminal)) {}

Context::~Context() = default;

Application* Context::OpenApplication() {
    if (m_application) return m_application.get();
    ApplicationRequest request;
    request.unattended = m_global.unattended;
    request.debug = m_global.debug;
    request.keepLoading = [] { return InterruptCount() == 0; };
    std::string message;
    if (PrepareWorkingFolder(m_services, m_global.home, request.workingFolder, message) != 0) {
        PrintResult(-1, message);
        return nullptr;
    }
    m_application = std::make_unique<Application>(m_services, *m_prompts, std::move(request));
    return m_application.get();
}

Application* Context::OpenApplicationWithSpooler(std::string* failure) {
    Application* application = OpenApplication();
    if (application == nullptr) return nullptr;
    bool wasNamed = false;
    std::string message;
    if (application->OpenSpooler(m_global.spooler, wasNamed, message) != 0) {
        PrintResult(-1, message);
        if (failure != nullptr) *failure = message;
        return nullptr;
    }
    if (!wasNamed)
        Complain("using the " + application->PrintSpooler().SystemName() +
                 " spooler (--spooler names another)");
    return application;
}

bool Context::OutputHasColours() {
    return HasColours(m_services, m_services.terminal->OutputIsTerminal());
}

bool Context::ErrorsHaveColours() {
    return HasColours(m_services, m_services.terminal->ErrorsAreTerminal());
}

void Context::Print(std::string_view text) {
    if (!m_services.terminal->WriteOutput(text)) m_outputIsWhole = false;
}

void Context::PrintJson(const nlohmann::json& document) {
    Print(document.dump(2) + "\n");
}

void Context::Complain(std::string_view text) {
    m_services.terminal->WriteErrors("qpr: " + ToPrintableLine(text) + "\n");
}

void Context::PrintResult(int result, std::string_view message) {
    if (WantsJson()) {
        PrintJson({{"result", result}, {"message", ToUtf8ForDisplay(message)}});
    } else if (result != 0) {
        Complain(message);
    } else if (!message.empty()) {
        Print(ToPrintableLine(message) + "\n");
    }
}

}  // namespace quirepress
