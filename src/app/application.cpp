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
#include "base/path.h"
#include "core/pdf_preparation.h"
#include "core/post_print.h"
#include "core/print_list.h"
#include "core/print_run.h"
#include "core/processing_defaults.h"
#include "core/run_downloads.h"
#include "core/run_outcomes.h"
#include "core/run_separators.h"
#include "core/run_snapshot.h"
#include "core/scratch_folder.h"
#include "documents/page_colors.h"
#include "documents/page_renderer.h"
#include "documents/pdf_counter.h"
#include "documents/pdf_worker.h"
#include "logs/debug_log.h"
#include "logs/error_log.h"
#include "logs/hang_log.h"
#include "logs/print_log.h"
#include "logs/transfer_logs.h"
#include "logs/unattended_prompts.h"
#include "platform/app_windows.h"
#include "platform/clock.h"
#include "platform/embedded/embedded_spooler.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/libraries.h"
#include "platform/machine.h"
#include "platform/network.h"
#include "platform/processes.h"
#include "platform/prompts.h"
#include "platform/registry.h"
#include "platform/shell.h"
#include "settings/general_settings.h"
#include "settings/print_commands.h"
#include "transport/mail_sender.h"

namespace quirepress {

int PrepareWorkingFolder(Services& services, std::string_view named, std::string& folder,
                         std::string& message) {
    std::string chosen(named);
    if (chosen.empty() && !services.machine->ReadEnvironment("QUIREPRESS_HOME", chosen)) chosen.clear();
    if (chosen.empty()) chosen = services.machine->DataFolder();
    const FileResult made = services.files->MakePrivateFolders(chosen);
    if (made != FileResult::kDone) {
        message = "The working folder " + chosen + " can't be made: " + DescribeFileResult(made) + ".";
        return -1;
    }
    // What is kept in it must stay to be found wherever a program changes to.
    const std::string resolved = services.files->ResolvePath(chosen);
    folder = WithTrailingSeparator(resolved.empty() ? chosen : resolved);
    return 0;
}

Application::Application(Services& services, Prompts& userPrompts, ApplicationRequest request)
    : m_services(services), m_request(std::move(request)), m_prompts(&userPrompts) {
    Files& files = *m_services.files;
    m_errorLog = std::make_unique<ErrorLog>(files, *m_services.clock, PathOf("error.log"));
    if (m_request.unattended) {
        m_unattendedPrompts = std::make_unique<UnattendedPrompts>(*m_errorLog, userPrompts);
        m_prompts = m_unattendedPrompts.get();
    }
    m_debugLog = std::make_unique<DebugLog>();
    m_transferLogs =
        std::make_unique<TransferLogs>(files, *m_services.clock, *m_debugLog, m_request.workingFolder);
    m_pdfWorker = std::make_unique<PdfWorker>(*m_services.processes, *m_services.loop, files,
                                              m_services.machine->ProgramPath());
    const auto isStopped = [this] {
        return m_run && m_run->IsRunning() ? m_run->IsStopped() : !m_request.keepLoading();
    };
    m_pdfWorker->UseStop(isStopped);
    m_pdfCounter = std::make_unique<PdfCounter>(files, *m_pdfWorker);
    m_preparation = std::make_unique<PdfPreparation>(
        PdfPreparationServices{files, *m_pdfWorker, *m_pdfWorker, *m_pdfWorker, *m_pdfCounter, *m_debugLog,
                               m_options, m_request.workingFolder});
    m_list = std::make_unique<PrintList>(PrintListServices{
        files, *m_services.shell, *m_services.clock, *m_services.machine, *m_services.loop, *m_prompts,
        *m_debugLog, *m_pdfCounter, m_options, m_request.workingFolder, m_request.keepLoading});
    m_snapshot = std::make_unique<RunSnapshot>(files, m_request.workingFolder);
    LoadGeneralOptions(m_options, Settings(), m_services.machine->Family(), m_request.unattended);
    MakeNotifications();
    MakeOutcomes();
    LoadBalanceOptions(m_balanceOptions, Settings());
    LoadColorPrinterOptions(m_colorOptions, Settings());
    LoadSeparatorOptions(m_separatorOptions, Settings());
    m_pageRenderer = std::make_unique<PageRenderer>(*m_services.processes, *m_services.loop, files);
    m_pageRenderer->UseStop(isStopped);
    m_pageColors = std::make_unique<PageColors>(*m_pdfWorker, *m_pageRenderer, *m_services.loop, files,
                                                TemporaryFolderOf(m_options, m_request.workingFolder));
    if (m_request.debug && m_debugLog->Open(files, PathOf("qpr.log")) != 0)
        m_prompts->ShowBox("Log File Error", "Can't open qpr.log for append");
}

Application::~Application() = default;

SettingsPlace Application::Settings() {
    return {*m_services.files, *m_prompts, m_request.workingFolder, m_services.machine->SystemCodePage()};
}

}  // namespace quirepress
