#include "qpr_program.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "platform/clock.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/libraries.h"
#include "platform/machine.h"
#include "platform/network.h"
#include "platform/registry.h"
#include "platform/shell.h"
#include "platform/terminal.h"

namespace quirepress {

QprProgram::QprProgram() : m_services(MakeSystemServices()) {}
QprProgram::~QprProgram() = default;

std::unique_ptr<ChildProcess> QprProgram::Start(std::vector<std::string> arguments) {
    ProcessRequest request;
    request.arguments = std::move(arguments);
    request.arguments.insert(request.arguments.begin(), QUIREPRESS_QPR);
    request.folder = m_work.Path();
    request.pipes = true;
    int systemError = 0;
    auto process = m_services.processes->Start(request, systemError);
    EXPECT_NE(process, nullptr) << "error " << systemError;
    return process;
}

ProgramResult QprProgram::Finish(ChildProcess& process) {
    constexpr long long kLongest = 60'000;
    ProgramResult result;
    const long long start = m_services.loop->MonotonicMilliseconds();
    process.CloseInput();
    for (bool isOpen = true; isOpen;) {
        const bool hasOutput = process.ReadOutput(result.output);
        isOpen = process.ReadErrors(result.errors) || hasOutput;
        if (m_services.loop->MonotonicMilliseconds() - start > kLongest) return result;
        if (isOpen) m_services.loop->Wait(1);
    }
    if (WaitForProcess(*m_services.loop, process, kLongest)) result.exitCode = process.ExitCode();
    return result;
}

ProgramResult QprProgram::RunBare(std::vector<std::string> arguments) {
    const auto process = Start(std::move(arguments));
    return process ? Finish(*process) : ProgramResult();
}

ProgramResult QprProgram::Run(std::vector<std::string> arguments) {
    const std::vector<std::string> start = {"--home", m_home.Path(), "--spooler", "embedded"};
    arguments.insert(arguments.begin(), start.begin(), start.end());
    return RunBare(std::move(arguments));
}

std::vector<std::string> QprProgram::OutputNames(const std::string& printer) {
    std::vector<FolderEntry> entries;
    m_services.files->ListFolder(m_home.PathOf("Printers/" + printer + "/Output"), entries);
    std::vector<std::string> names;
    for (const FolderEntry& entry : entries) names.push_back(entry.name);
    std::sort(names.begin(), names.end());
    return names;
}

std::string QprProgram::ReadOutput(const std::string& name, const std::string& printer) {
    return m_home.Read("Printers/" + printer + "/Output/" + name);
}

}  // namespace quirepress
