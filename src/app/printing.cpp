#include "app/application.h"
#include "automation/notifications.h"
#include "backends/balance.h"
#include "backends/color_split.h"
#include "backends/dialog_rules.h"
#include "backends/direct_print.h"
#include "backends/printer_selection.h"
#include "backends/queue_watch.h"
#include "backends/shell_print.h"
#include "backends/viewer_windows.h"
#include "core/pdf_preparation.h"
#include "core/post_print.h"
#include "core/print_list.h"
#include "core/print_run.h"
#include "core/print_run_documents.h"
#include "core/print_run_scripts.h"
#include "core/print_run_shell.h"
#include "core/print_run_ways.h"
#include "core/processing_defaults.h"
#include "core/run_downloads.h"
#include "core/run_outcomes.h"
#include "core/run_separators.h"
#include "core/run_snapshot.h"
#include "documents/page_colors.h"
#include "documents/pdf_worker.h"
#include "logs/debug_log.h"
#include "logs/error_log.h"
#include "logs/hang_log.h"
#include "logs/print_log.h"
#include "platform/app_windows.h"
#include "platform/clock.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/machine.h"
#include "platform/processes.h"
#include "platform/prompts.h"
#include "platform/shell.h"
#include "settings/print_commands.h"
#include "transport/transfer.h"

namespace quirepress {

// What prints needs the spooler.
void Application::MakePrinting() {
    Files& files = *m_services.files;
    EventLoop& loop = *m_services.loop;
    m_colorSplit = std::make_unique<ColorSplit>(*m_pageColors, *m_pdfWorker, files);
    m_directPrinter = std::make_unique<DirectPrinter>(*m_spooler, files, loop, *m_debugLog);
    m_selection = std::make_unique<PrinterSelection>(PrinterSelectionServices{
        *m_spooler, files, loop, *m_prompts, *m_debugLog, m_options, m_request.workingFolder});
    m_watch = std::make_unique<QueueWatch>(*m_spooler, files, *m_prompts, *m_debugLog, m_options);
    m_balance =
        std::make_unique<PrinterBalance>(*m_spooler, files, loop, *m_prompts, *m_debugLog, m_balanceOptions);
    m_printCommands = std::make_unique<PrintCommandFile>(Settings());
    m_shellPrinter = std::make_unique<ShellPrinter>(
        ShellPrinterServices{*m_services.shell, *m_services.processes, files, *m_spooler, *m_selection,
                             *m_printCommands, *m_debugLog, m_options});
    MakeDialogs();
    MakeRowServices();
    MakeRun();
}

// The windows of the programs that print.
void Application::MakeDialogs() {
    EventLoop& loop = *m_services.loop;
    m_appWindows = MakeAppWindows(*m_services.processes, loop, *m_services.machine);
    LoadPrintToFileSettings(m_printToFile, Settings());
    m_dialogs = std::make_unique<DialogRules>(
        DialogServices{*m_appWindows, *m_services.files, loop, *m_debugLog, m_options, m_printToFile});
    m_viewers = std::make_unique<ViewerWindows>(*m_appWindows, loop, m_options);
    m_shellPrinter->UseDialogs(m_dialogs.get());
    m_watch->UseDocumentWindows(m_viewers.get());
}

// Of a night without a print system there is something to tell, too.
void Application::MakeOutcomes() {
    Files& files = *m_services.files;
    EventLoop& loop = *m_services.loop;
    Clock& clock = *m_services.clock;
    m_printLog = std::make_unique<PrintLog>(files, clock, *m_prompts, *m_debugLog, PathOf(kPrintLogName));
    m_hangLog = std::make_unique<HangLog>(files, clock, PathOf(kHangLogName));
    m_postPrint = std::make_unique<PostPrint>(PostPrintServices{
        files, loop, clock, *m_prompts, *m_debugLog, *m_errorLog, m_options, m_request.workingFolder});
    m_postPrint->UseNotices(m_notifications.get());
    m_outcomes = std::make_unique<RunOutcomes>(
        RunOutcomeServices{files, clock, loop, *m_services.machine, *m_prompts, *m_printLog, *m_errorLog,
                           *m_postPrint, *m_notifications, m_options, m_request.workingFolder});
}

void Application::MakeRowServices() {
    Files& files = *m_services.files;
    EventLoop& loop = *m_services.loop;
    Clock& clock = *m_services.clock;
    m_processing = std::make_unique<ProcessingDefaults>(files);
    m_downloads = std::make_unique<RunDownloads>(RunDownloadServices{
        files, clock, *m_prompts, *m_transferLogs, Transfers(), m_options, m_request.workingFolder});
    m_separators = std::make_unique<RunSeparators>(
        RunSeparatorServices{*m_list, files, clock, *m_services.machine, loop, *m_debugLog, *m_spooler,
                             *m_selection, m_options, m_separatorOptions, m_request.workingFolder});
}

void Application::MakeRun() {
    Files& files = *m_services.files;
    EventLoop& loop = *m_services.loop;
    RunWays ways;
    ways.push_back(
        MakeScriptWay({*m_services.shell, *m_services.processes, loop, *m_services.clock, *m_debugLog}, files,
                      *m_printCommands));
    ways.push_back(MakeProcessingWay(*m_processing));
    ways.push_back(MakeSettingsWay(*m_selection));
    RunWays documents;
    documents.push_back(MakeDirectWay({*m_directPrinter, *m_spooler, *m_watch, *m_debugLog, m_options}));
    documents.push_back(MakeColorWay({*m_spooler, *m_watch, *m_selection, *m_colorSplit, files, m_options,
                                      m_colorOptions, m_request.workingFolder}));
    documents.push_back(MakeSpoolerWay(*m_spooler, *m_watch));
    documents.push_back(
        MakeShellWay({*m_shellPrinter, *m_list, *m_spooler, *m_watch, *m_services.processes, files, loop,
                      *m_debugLog, *m_preparation, m_options, m_request.workingFolder}));
    ways.push_back(MakeDocumentWay({*m_preparation, files, *m_debugLog, m_options}, std::move(documents)));
    m_run = std::make_unique<PrintRun>(PrintRunServices{*m_list,
                                                        *m_spooler,
                                                        files,
                                                        loop,
                                                        *m_prompts,
                                                        *m_debugLog,
                                                        *m_selection,
                                                        *m_watch,
                                                        *m_balance,
                                                        *m_snapshot,
                                                        *m_viewers,
                                                        *m_processing,
                                                        *m_downloads,
                                                        *m_separators,
                                                        *m_outcomes,
                                                        *m_hangLog,
                                                        m_options,
                                                        m_balanceOptions,
                                                        {*m_list, files, *m_services.clock, *m_debugLog,
                                                         *m_pdfWorker, m_options, m_request.workingFolder}},
                                       std::move(ways));
}

}  // namespace quirepress
