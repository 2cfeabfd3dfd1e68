#pragma once

#include <string>
#include <string_view>

namespace quirepress {

class Machine;

// The program of child_program/, which is built beside the tests.
std::string TestChildPath(Machine& machine);

// The library of test_library/.
std::string TestLibraryPath(Machine& machine);

}  // namespace quirepress
