#pragma once

#include <string_view>

namespace quirepress {

// Whether a file name matches a mask: "*" stands for any bytes, "?" for one, letters A to Z for both cases;
// "*.*" and an empty mask match every name.
bool MatchesMask(std::string_view name, std::string_view mask);

}  // namespace quirepress
