#pragma once

#include <string>
#include <string_view>

namespace quirepress {

// The address of a desktop entry of Type=Link: a path for a file, else the address as it stands. Empty when
// `entry` is none or what it names is neither.
std::string ReadLinkEntry(std::string_view entry);

}  // namespace quirepress
