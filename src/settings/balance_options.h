#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "settings/keyword_table.h"

namespace quirepress {

struct BalancedPrinter {
    std::string name;        // empty: unused
    std::string prs;         // printer settings file; empty: the printer is made the default one instead
    std::int32_t spool = 0;  // so many jobs fill its queue; 0 or less: it always has room
};

constexpr std::size_t kBalancedPrinters = 10;

// The printers over which a run may spread its documents, in order of preference; balancedprinters.ini.
struct BalanceOptions {
    std::array<BalancedPrinter, kBalancedPrinters> m_printers;
    bool m_roundRobin = false;
};

const KeywordTable<BalanceOptions>& BalanceKeywords();

int LoadBalanceOptions(BalanceOptions& options, const SettingsPlace& place);
int SaveBalanceOptions(const BalanceOptions& options, const SettingsPlace& place);

}  // namespace quirepress
