#pragma once

#include <string_view>

namespace quirepress {

// "application/pdf" for a path that ends in ".pdf"; "application/octet-stream" for what is not known.
std::string_view MediaTypeOf(std::string_view path);

// ".pdf" for "application/pdf; charset=x"; empty for what is not known.
std::string_view ExtensionOf(std::string_view mediaType);

}  // namespace quirepress
