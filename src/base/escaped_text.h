#pragma once

#include <string>
#include <string_view>

namespace quirepress {

// Control characters and "%" as "%0A", so that any text fits into a line of a file of ours.
std::string EscapeControls(std::string_view text);
// What EscapeControls was given; a "%" without two digits (0-9, A-F) behind it stays.
std::string UnescapeControls(std::string_view text);

bool IsControlCharacter(char c);

}  // namespace quirepress
