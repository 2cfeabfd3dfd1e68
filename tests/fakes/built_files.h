#pragma once

#include <string>

#include "base/path.h"
#include "platform/machine.h"

namespace quirepress {

// The program of child_program/, which is built beside the tests.
inline std::string TestChildPath(Machine& machine) {
    const std::string program = machine.ProgramPath();
    return JoinPath(FolderOf(program), "test_child") + std::string(FileExtension(program));
}

// The library of test_library/.
inline std::string TestLibraryPath(Machine& machine) {
    return JoinPath(FolderOf(machine.ProgramPath()), "test_library.plg");
}

}  // namespace quirepress
