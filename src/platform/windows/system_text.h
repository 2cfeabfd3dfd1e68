#pragma once

#include <string>
#include <string_view>

namespace quirepress {

// The system's texts are UTF-16, ours UTF-8. A text of ours that is no UTF-8 is read in the system's
// single-byte code page, half a surrogate pair of the system's becomes U+FFFD.
std::wstring Widen(std::string_view text);
std::string Narrow(std::wstring_view text);

// The system's own words for an error number, without a line end: "The system cannot find the file
// specified."
std::string DescribeSystemError(unsigned long error);

}  // namespace quirepress
