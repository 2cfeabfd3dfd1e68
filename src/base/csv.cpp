#include "base/csv.h"

#include <cstdint>

#include "base/numbers.h"
#include "base/text.h"

namespace quirepress {

std::string SafeCsvCell(std::string_view text) {
    constexpr std::string_view kFormulaStarts = "=+-@\t\r";
    constexpr std::int64_t kMost = INT64_C(999'999'999'999'999);
    const std::size_t start = text.find_first_not_of(' ');
    const bool isFormula = start != std::string_view::npos &&
                           kFormulaStarts.find(text[start]) != std::string_view::npos &&
                           !ParseWholeNumber(text, -kMost, kMost);
    std::string cell = (isFormula ? "'" : "") + std::string(text);
    if (cell.find_first_of(",\";\t\r\n") == std::string::npos) return cell;
    return '"' + ReplaceAll(cell, "\"", "\"\"") + '"';
}

}  // namespace quirepress
