#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace quirepress {

// What IPP says of jobs and printers as the bits that are the same on every print system. Reasons are
// keywords, perhaps with "-report", "-warning" or "-error" behind them, perhaps cut short by a server.

// job_status bits. `reasons` are the job's own, `printerReasons` those that its printer had for it last.
std::uint32_t JobStatusOf(int state, const std::vector<std::string_view>& reasons,
                          const std::vector<std::string_view>& printerReasons);

// printer_status bits.
std::uint32_t PrinterStatusOf(int state, const std::vector<std::string_view>& reasons, bool isAccepting);

// Our priorities are 1 to 99, those of IPP 1 to 100.
int PriorityFromIpp(int priority);

}  // namespace quirepress
