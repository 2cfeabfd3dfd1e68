#pragma once

#include <map>
#include <string>

#include "platform/machine.h"

namespace quirepress {

// A machine whose facts are set by the test.
class FakeMachine : public Machine {
public:
    std::string HostName() override { return hostName; }
    std::string LoginName() override { return loginName; }
    std::string ProgramPath() override { return programPath; }
    std::string TemporaryFolder() override { return temporaryFolder; }
    std::string DataFolder() override { return dataFolder; }
    SystemFamily Family() override { return family; }
    std::string SystemVersion() override { return systemVersion; }
    bool ReadEnvironment(std::string_view name, std::string& value) override {
        const auto found = environment.find(std::string(name));
        if (found == environment.end()) return false;
        value = found->second;
        return true;
    }

    std::string hostName = "machine";
    std::string loginName = "user";
    std::string programPath = "/programs/qpr";
    std::string temporaryFolder = "/temporary/";
    std::string dataFolder = "/data/";
    SystemFamily family = SystemFamily::kWindowsXpOrLater;
    std::string systemVersion = "Fake 1.0";
    std::map<std::string, std::string> environment;
};

}  // namespace quirepress
