#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/registry.h"

namespace quirepress {

// What the registry file holds. A line is "number;KEY;NAME;VALUE" or "text;KEY;NAME;VALUE", where "%" and two
// hexadecimal digits stand for a byte. A line of any other kind is kept as it is.
struct RegistryText {
    std::map<std::pair<std::string, std::string>, RegistryValue> values;  // by key and name
    std::vector<std::string> otherLines;
};

RegistryText ParseRegistry(std::string_view text);
std::string WriteRegistry(const RegistryText& registry);

}  // namespace quirepress
