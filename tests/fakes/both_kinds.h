#pragma once

#include <gtest/gtest.h>

#include <string>

namespace quirepress {

// For contracts that the system's implementation (false) and the fake (true) keep alike.
inline std::string NameOfKind(const testing::TestParamInfo<bool>& kind) {
    return kind.param ? "Fake" : "System";
}

}  // namespace quirepress
