#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quirepress {

// Texts are byte strings, UTF-8 by intention. Nothing here looks at the user's locale.

bool StartsWith(std::string_view text, std::string_view start);
bool EndsWith(std::string_view text, std::string_view end);
bool Contains(std::string_view text, std::string_view part);

// Only A to Z change; bytes above 127 stay.
std::string ToLowerAscii(std::string_view text);
bool EqualIgnoringAsciiCase(std::string_view left, std::string_view right);

std::string_view TrimTrailingBlanks(std::string_view text);

// Splits at each separator; "a;;b" gives three parts, "" gives one.
std::vector<std::string_view> SplitAt(std::string_view text, char separator);

// Every occurrence of `from` (not empty) becomes `to`.
std::string ReplaceAll(std::string_view text, std::string_view from, std::string_view to);

bool IsValidUtf8(std::string_view text);

// UTF-8 code points of `text`, and the bytes of the first `count` of them.
std::size_t CountCharacters(std::string_view text);
std::size_t BytesOfCharacters(std::string_view text, std::size_t count);

// The longest start of at most `size` bytes that ends with a whole UTF-8 sequence.
std::string_view CutToSize(std::string_view text, std::size_t size);

// `text` when it is valid UTF-8; else its bytes read as Windows-1252, the five bytes that this code page
// leaves open as U+0081, U+008D, U+008F, U+0090 and U+009D.
std::string ToUtf8ForDisplay(std::string_view text);

// `text` on one line for a terminal: as ToUtf8ForDisplay, control characters as "\n", "\t" or "\x1B".
std::string ToPrintableLine(std::string_view text);

}  // namespace quirepress
