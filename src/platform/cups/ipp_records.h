#pragma once

#include <string>
#include <vector>

#include "platform/cups/ipp_message.h"
#include "platform/spooler.h"

namespace quirepress {

class Clock;

// What has to be known of a printer before a document is sent to it.
struct CupsPrinterFacts {
    bool isAccepting = false;
    bool renders = false;              // false: a queue that passes bytes on as they are
    std::vector<std::string> formats;  // document formats it takes
    std::vector<std::string> sources;  // media sources, in the printer's order
    std::vector<std::string> members;  // of a class
};

// Answers of a server as our records, and what has to be asked for to get them. An answer may lack anything.
extern const std::vector<const char*> kPrinterAttributes;
std::vector<PrinterInfo> ReadPrinters(ipp_t* answer);

extern const std::vector<const char*> kFactAttributes;
CupsPrinterFacts ReadPrinterFacts(ipp_t* answer);

// In queue order: what is at work first, then by priority, then by age.
extern const std::vector<const char*> kJobAttributes;
std::vector<JobInfo> ReadJobs(ipp_t* answer, Clock& clock);

// Those of them that are over, by their numbers.
extern const std::vector<const char*> kOverJobAttributes;
std::vector<JobInfo> ReadOverJobs(ipp_t* answer, Clock& clock);
// 0 when there is none.
std::int64_t HighestJobNumber(ipp_t* answer);

// The printer that a job belongs to, from its "job-printer-uri".
std::string PrinterOfJob(ipp_t* answer);

}  // namespace quirepress
