#include "settings/balance_options.h"

#include "settings/keyword_file.h"

namespace quirepress {

namespace {

using Keys = std::array<const char*, kBalancedPrinters>;

constexpr Keys kPrinterKeys = {"PRINTER1", "PRINTER2", "PRINTER3", "PRINTER4", "PRINTER5",
                               "PRINTER6", "PRINTER7", "PRINTER8", "PRINTER9", "PRINTER10"};
constexpr Keys kPrsKeys = {"PRS1", "PRS2", "PRS3", "PRS4", "PRS5", "PRS6", "PRS7", "PRS8", "PRS9", "PRS10"};
constexpr Keys kSpoolKeys = {"SPOOL1", "SPOOL2", "SPOOL3", "SPOOL4", "SPOOL5",
                             "SPOOL6", "SPOOL7", "SPOOL8", "SPOOL9", "SPOOL10"};

std::vector<KeywordRowFor<BalanceOptions>> MakeRows() {
    constexpr auto kPrinters = &BalanceOptions::m_printers;
    std::vector<KeywordRowFor<BalanceOptions>> rows;
    for (std::size_t i = 0; i < kBalancedPrinters; ++i)
        rows.push_back(Text(kPrinterKeys[i], kPrinters, i, &BalancedPrinter::name,
                            "The printer of this number, in order of preference; empty: unused.")
                           .WrittenWhenNotEmpty());
    for (std::size_t i = 0; i < kBalancedPrinters; ++i)
        rows.push_back(Text(kPrsKeys[i], kPrinters, i, &BalancedPrinter::prs,
                            "Printer settings file (.prs) that is loaded when the printer is chosen; empty: "
                            "it is made the default printer instead.")
                           .WrittenWhenNotEmpty());
    for (std::size_t i = 0; i < kBalancedPrinters; ++i)
        rows.push_back(Number(kSpoolKeys[i], kPrinters, i, &BalancedPrinter::spool,
                              "Spool limit: the printer is passed over while its queue holds so many jobs; "
                              "0: no limit.")
                           .WrittenWhenAtLeast(1));
    rows.push_back(Flag("ROUNDROBIN", &BalanceOptions::m_roundRobin,
                        "Take the printers that have room in turn, not the first of them."));
    return rows;
}

}  // namespace

const KeywordTable<BalanceOptions>& BalanceKeywords() {
    // The message names the file of the colour split, as it always has.
    static const KeywordTable<BalanceOptions> table(
        {"balancedprinters.ini", "Can't open pdfcolorprinters.ini file."}, MakeRows());
    return table;
}

int LoadBalanceOptions(BalanceOptions& options, const SettingsPlace& place) {
    return LoadSettings(BalanceKeywords(), place, options);
}

int SaveBalanceOptions(const BalanceOptions& options, const SettingsPlace& place) {
    return SaveSettings(BalanceKeywords(), place, options);
}

}  // namespace quirepress
