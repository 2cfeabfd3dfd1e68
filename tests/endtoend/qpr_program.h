#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "fakes/temporary_folder.h"
#include "platform/processes.h"
#include "platform/services.h"

namespace quirepress {

struct ProgramResult {
    int exitCode = -1;
    std::string output;
    std::string errors;

    nlohmann::json Json() const { return nlohmann::json::parse(output); }
};

// The built qpr, each with a working folder of its own.
class QprProgram {
public:
    QprProgram();
    ~QprProgram();

    // Runs "qpr --home FOLDER --spooler embedded ARGUMENTS..." to its end; after a minute it counts as hung
    // (exit code -1).
    ProgramResult Run(std::vector<std::string> arguments);
    ProgramResult RunBare(std::vector<std::string> arguments);  // without the two options
    std::unique_ptr<ChildProcess> Start(std::vector<std::string> arguments);
    ProgramResult Finish(ChildProcess& process);

    TemporaryFolder m_home;
    TemporaryFolder m_work;
    Services m_services;

    // Names of the files that the default printer has put out, in order.
    std::vector<std::string> OutputNames(const std::string& printer = "Quirepress");
    std::string ReadOutput(const std::string& name, const std::string& printer = "Quirepress");
};

}  // namespace quirepress
