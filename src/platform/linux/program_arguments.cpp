#include "platform/program_arguments.h"

namespace quirepress {

std::vector<std::string> ReadProgramArguments(int argumentCount, char** arguments) {
    if (argumentCount < 1) return {};
    return {arguments + 1, arguments + argumentCount};
}

}  // namespace quirepress
