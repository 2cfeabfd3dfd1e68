#pragma once

#include <algorithm>
#include <cstddef>

namespace quirepress {

// What a page, or a part of it, puts on paper. Of two parts the higher one holds for both.
enum class PageColor { kMono, kUndecided, kColor };

inline PageColor Both(PageColor left, PageColor right) {
    return std::max(left, right);
}

// What counts as grey.
struct GreyRule {
    double spread = 8.0 / 255;  // between the components of a colour, of their range of 1
};

// The colour of red, green and blue, or of any others of which equal parts are grey, from 0 to 1.
PageColor JudgeAdditive(const double* components, std::size_t count, const GreyRule& rule);

// The colour of cyan, magenta, yellow and black.
PageColor JudgeProcessInks(double cyan, double magenta, double yellow, double black, const GreyRule& rule);

}  // namespace quirepress
