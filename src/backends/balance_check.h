#pragma once

#include <bitset>
#include <string>
#include <string_view>
#include <vector>

#include "settings/balance_options.h"

namespace quirepress {

// What is wrong with the options of the balancing, in sentences for the user; empty when they are sound.
std::vector<std::string> CheckBalanceOptions(const BalanceOptions& options);

// Bit i: the printer PRINTER(i + 1).
using BalancedSet = std::bitset<kBalancedPrinters>;

// The printers that a row's column "Balanced Printers" allows: numbers or names, separated by ",", or ";".
// All of them for a blank text; none when nothing in it names one. A number may be that of no printer.
BalancedSet ParseBalancedPrinters(std::string_view text, const BalanceOptions& options);
// A sentence about the first part of such a text that names no printer of the options; empty when all do.
std::string FindUnknownBalancedPrinter(std::string_view text, const BalanceOptions& options);
// Whether one of the printers has a name.
bool HasBalancedPrinter(BalancedSet printers, const BalanceOptions& options);
// Such a text for all printers that the options name; empty when they name none.
std::string TextOfBalancedPrinters(const BalanceOptions& options);

}  // namespace quirepress
