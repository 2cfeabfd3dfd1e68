#include <cstdio>
#include <exception>

#include "console/command_line.h"
#include "platform/program_arguments.h"
#include "platform/services.h"

int main(int argumentCount, char** arguments) {
    try {
        quirepress::Services services = quirepress::MakeSystemServices();
        return quirepress::RunConsole(services, quirepress::ReadProgramArguments(argumentCount, arguments));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "qpr: %s\n", error.what());
        return 1;
    }
}
