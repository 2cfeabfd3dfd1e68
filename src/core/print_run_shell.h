#pragma once

#include <memory>
#include <string>

#include "core/run_way.h"

namespace quirepress {

class DebugLog;
class EventLoop;
class Files;
class PdfPreparation;
class PrintList;
class Processes;
class QueueWatch;
class ShellPrinter;
class Spooler;
struct GeneralOptions;

struct ShellWayServices {
    ShellPrinter& shellPrinter;
    PrintList& list;
    Spooler& spooler;
    QueueWatch& watch;
    Processes& processes;
    Files& files;
    EventLoop& loop;
    DebugLog& debugLog;
    PdfPreparation& preparation;
    const GeneralOptions& options;
    std::string workingFolder;
};

// Documents that neither the printer nor the print system takes: by the command that is registered for their
// type. It takes every document, so it comes last, and says what is wrong where there is no such command.
std::unique_ptr<RunWay> MakeShellWay(ShellWayServices services);

constexpr std::string_view kStatusNoAssociation = "No print association setup for that file type, see:";
constexpr std::string_view kStatusBrokenAssociation = "Problem with print association setup, see:";
constexpr std::string_view kStatusBadPdf = "Error - Can't Print - Bad PDF File";

}  // namespace quirepress
