#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quirepress {

// The one word for a printer's whole status value; empty for a value of several bits. No status at all with
// jobs waiting is "Error - Printing".
std::string_view PrinterStatusWord(std::uint32_t statusBits, std::uint32_t jobs);

// The words of a job's status bits (job_status), joined by ", "; "Waiting" for none.
std::string JobStatusWords(std::uint32_t statusBits);

}  // namespace quirepress
