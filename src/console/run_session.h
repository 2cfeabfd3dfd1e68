#pragma once

#include <functional>
#include <string>

namespace quirepress {

class Application;
class Context;
class PrintRun;
class ProgressLine;
struct RunSummary;

// Whether the printer exists; the reason why not is the command's result then.
bool CheckPrinterExists(Context& context, Application& application, const std::string& printer);

// Whether each part of the text (of --balanced-printers) is a printer of the balancing; else a message is the
// command's result.
bool CheckBalancedPrinters(Context& context, Application& application, const std::string& names);

// One print run as a command shows it: Ctrl-C ends it in order, the progress line follows it, the embedded
// spooler then delivers, and the rows and counts are printed. The command's exit code.
int RunAndReport(Context& context, Application& application, const std::string& printer,
                 ProgressLine& progress, const std::function<RunSummary(PrintRun& run)>& start);

// The log, the mail and the report tell that nothing of the list was printed.
void TellRefusedRun(Application& application, const std::string& printer, int copies, const std::string& why);

}  // namespace quirepress
