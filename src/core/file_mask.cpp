#include "core/file_mask.h"

#include "base/text.h"

namespace quirepress {

bool MatchesMask(std::string_view name, std::string_view mask) {
    if (mask.empty() || mask == "*.*") return true;
    std::size_t n = 0;
    std::size_t m = 0;
    // Where to go on when the bytes behind the last "*" do not match: that "*" takes one byte more.
    std::size_t star = std::string_view::npos;
    std::size_t taken = 0;
    while (n < name.size()) {
        if (m < mask.size() && mask[m] == '*') {
            star = m++;
            taken = n;
        } else if (m < mask.size() &&
                   (mask[m] == '?' || EqualIgnoringAsciiCase(mask.substr(m, 1), name.substr(n, 1)))) {
            ++m;
            ++n;
        } else if (star != std::string_view::npos) {
            m = star + 1;
            n = ++taken;
        } else {
            return false;
        }
    }
    return mask.find_first_not_of('*', m) == std::string_view::npos;
}

}  // namespace quirepress
