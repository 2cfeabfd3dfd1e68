#pragma once

#include <fstream>
#include <iterator>
#include <string>

namespace quirepress {

// The bytes of a file of golden/.
inline std::string ReadGolden(const std::string& name) {
    std::ifstream in(std::string(QUIREPRESS_TEST_DATA "/") + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace quirepress
