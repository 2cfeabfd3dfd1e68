#include "fakes/built_files.h"

#include "base/path.h"
#include "platform/machine.h"

namespace quirepress {

std::string TestChildPath(Machine& machine) {
    const std::string program = machine.ProgramPath();
    return JoinPath(FolderOf(program), "test_child") + std::string(FileExtension(program));
}

std::string TestLibraryPath(Machine& machine) {
    return JoinPath(FolderOf(machine.ProgramPath()), "test_library.plg");
}

}  // namespace quirepress
