#include "documents/pdf_page_color.h"

namespace quirepress {

PageColor JudgeAdditive(const double* components, std::size_t count, const GreyRule& rule) {
    if (count == 0) return PageColor::kUndecided;
    double lowest = 1;
    double highest = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const double value = std::clamp(components[i], 0.0, 1.0);
        lowest = std::min(lowest, value);
        highest = std::max(highest, value);
    }
    return highest - lowest <= rule.spread ? PageColor::kMono : PageColor::kColor;
}

// Equal parts of the three, and anything below full black, look grey or nearly so, which depends on how the
// inks are mixed.
PageColor JudgeProcessInks(double cyan, double magenta, double yellow, double black, const GreyRule& rule) {
    const double inks[] = {cyan, magenta, yellow};
    if (std::max({cyan, magenta, yellow}) <= rule.spread) return PageColor::kMono;
    if (black >= 1 || JudgeAdditive(inks, 3, rule) == PageColor::kMono) return PageColor::kUndecided;
    return PageColor::kColor;
}

}  // namespace quirepress
