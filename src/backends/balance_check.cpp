#include "backends/balance_check.h"

#include <algorithm>
#include <array>
#include <optional>

#include "base/format.h"
#include "base/numbers.h"
#include "base/text.h"

namespace quirepress {

namespace {

constexpr int kLast = static_cast<int>(kBalancedPrinters);

const BalancedPrinter& PrinterAt(const BalanceOptions& options, int number) {
    return options.m_printers[static_cast<std::size_t>(number - 1)];
}

bool IsUsed(const BalanceOptions& options, int number) {
    return !PrinterAt(options, number).name.empty();
}

bool IsEmpty(const BalanceOptions& options, int number) {
    return !IsUsed(options, number);
}

bool HasLimit(const BalanceOptions& options, int number) {
    return PrinterAt(options, number).spool > 0;
}

bool HasNoLimit(const BalanceOptions& options, int number) {
    return !HasLimit(options, number);
}

bool HasLimitWithoutPrinter(const BalanceOptions& options, int number) {
    return IsEmpty(options, number) && HasLimit(options, number);
}

// Takes every document, so that those behind it never get one.
bool ShadowsLaterOnes(const BalanceOptions& options, int number) {
    if (IsEmpty(options, number) || HasLimit(options, number)) return false;
    for (int later = number + 1; later <= kLast; ++later)
        if (IsUsed(options, later) || HasLimit(options, later)) return true;
    return false;
}

bool IsLastWithLimit(const BalanceOptions& options, int number) {
    for (int later = number + 1; later <= kLast; ++later)
        if (IsUsed(options, later)) return false;
    return IsUsed(options, number) && HasLimit(options, number);
}

struct BalanceRule {
    int first, last;  // the numbers of the printers that it is about
    bool (*isBroken)(const BalanceOptions& options, int number);
    const char* message;  // the number, and the next one, may stand in it
    int highestNext = kLast;
};

// In the order in which they are told. The fifth spool is named as the next one behind every later spool.
constexpr std::array<BalanceRule, 8> kRules = {{
    {1, 1, IsEmpty, "Printer %d not set, click Close if you don't wish to use printer balancing."},
    {2, 2, IsEmpty, "Printer %d not set, if you don't wish to use printer balancing click Close."},
    {1, 1, HasNoLimit,
     "Setting first printer to spool limit 0 means all so printer balancing is not needed, either correct "
     "this "
     "or click Close."},
    {1, 1, HasNoLimit,
     "Setup error!, spool limit for printer %d is 0 for all so no other printers will be used!, please "
     "correct"},
    {2, kLast, HasLimitWithoutPrinter,
     "Setup error!, spool limit for printer %d greater than 0 and no printer set, please correct"},
    {1, kLast - 1, ShadowsLaterOnes,
     "Setup error!, need to set spool %d to value greater than 0 if you need to use the next spool %d "
     "setting, "
     "please correct",
     5},
    {1, kLast - 1, IsLastWithLimit, "Setup error!, need to set spool %d to 0 for all, please correct"},
    {1, kLast, IsLastWithLimit,
     "Setup error!, need to set the last printer to spool limit 0 otherwise it will use last printer used if "
     "no "
     "printers available (will not wait), please correct"},
}};

std::string_view TrimBlanks(std::string_view text) {
    const std::size_t start = text.find_first_not_of(' ');
    return start == std::string_view::npos ? std::string_view() : TrimTrailingBlanks(text.substr(start));
}

// The numbers and names of the text.
std::vector<std::string_view> WordsOf(std::string_view text) {
    std::vector<std::string_view> words;
    for (const std::string_view part : SplitAt(text, ','))
        for (const std::string_view word : SplitAt(part, ';'))
            if (!TrimBlanks(word).empty()) words.push_back(TrimBlanks(word));
    return words;
}

BalancedSet PrintersOf(std::string_view word, const BalanceOptions& options) {
    BalancedSet printers;
    if (const auto number = ParseWholeNumber(word, 1, kLast))
        return printers.set(static_cast<std::size_t>(*number - 1));
    for (std::size_t i = 0; i < kBalancedPrinters; ++i)
        if (options.m_printers[i].name == word) printers.set(i);
    return printers;
}

}  // namespace

std::vector<std::string> CheckBalanceOptions(const BalanceOptions& options) {
    std::vector<std::string> messages;
    for (const BalanceRule& rule : kRules)
        for (int number = rule.first; number <= rule.last; ++number)
            if (rule.isBroken(options, number))
                messages.push_back(Format(rule.message, number, std::min(number + 1, rule.highestNext)));
    return messages;
}

BalancedSet ParseBalancedPrinters(std::string_view text, const BalanceOptions& options) {
    BalancedSet allowed;
    if (TrimBlanks(text).empty()) return allowed.set();
    for (const std::string_view word : WordsOf(text)) allowed |= PrintersOf(word, options);
    return allowed;
}

std::string FindUnknownBalancedPrinter(std::string_view text, const BalanceOptions& options) {
    for (const std::string_view word : WordsOf(text))
        if (!HasBalancedPrinter(PrintersOf(word, options), options))
            return "\"" + std::string(word) + "\" is no printer of balancedprinters.ini.";
    if (!TrimBlanks(text).empty() && WordsOf(text).empty())
        return "\"" + std::string(text) + "\" names no printer.";
    return "";
}

bool HasBalancedPrinter(BalancedSet printers, const BalanceOptions& options) {
    for (std::size_t i = 0; i < kBalancedPrinters; ++i)
        if (printers[i] && !options.m_printers[i].name.empty()) return true;
    return false;
}

std::string TextOfBalancedPrinters(const BalanceOptions& options) {
    std::string text;
    for (std::size_t i = 0; i < options.m_printers.size(); ++i) {
        if (options.m_printers[i].name.empty()) continue;
        if (!text.empty()) text += ',';
        text += std::to_string(i + 1);  // a name may hold the separators
    }
    return text;
}

}  // namespace quirepress
