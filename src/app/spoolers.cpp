#include "app/application.h"
#include "backends/balance.h"
#include "backends/color_split.h"
#include "backends/direct_print.h"
#include "backends/printer_selection.h"
#include "backends/queue_watch.h"
#include "core/print_list.h"
#include "core/print_run.h"
#include "core/scratch_folder.h"
#include "documents/page_colors.h"
#include "documents/pdf_counter.h"
#include "documents/pdf_worker.h"
#include "logs/debug_log.h"
#include "logs/error_log.h"
#include "platform/clock.h"
#include "platform/cups/open_cups_spooler.h"
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
#include "platform/terminal.h"

namespace quirepress {

int Application::OpenSpooler(std::string_view name, bool& wasNamed, std::string& message) {
    std::string chosen(name);
    if (chosen.empty() && !m_services.machine->ReadEnvironment("QUIREPRESS_SPOOLER", chosen)) chosen.clear();
    wasNamed = !chosen.empty();
    if (chosen == "cups" || !wasNamed) OpenCups(wasNamed, message);
    if (chosen == "embedded" || (!wasNamed && !m_spooler)) OpenEmbedded(message);
    if (!m_spooler) {
        if (message.empty())
            message = "There is no print spooler \"" + chosen + "\" here; \"embedded\" is one.";
        return -1;
    }
    MakeRun();
    return 0;
}

void Application::MakeRun() {
    Files& files = *m_services.files;
    EventLoop& loop = *m_services.loop;
    m_colorSplit = std::make_unique<ColorSplit>(*m_pageColors, *m_pdfWorker, files);
    m_directPrinter = std::make_unique<DirectPrinter>(*m_spooler, files, loop, *m_debugLog);
    m_selection = std::make_unique<PrinterSelection>(PrinterSelectionServices{
        *m_spooler, files, loop, *m_prompts, *m_debugLog, m_options, m_request.workingFolder});
    m_watch = std::make_unique<QueueWatch>(*m_spooler, files, *m_prompts, *m_debugLog, m_options);
    m_balance = std::make_unique<PrinterBalance>(*m_spooler, loop, *m_prompts, *m_debugLog, m_balanceOptions);
    m_run = std::make_unique<PrintRun>(
        PrintRunServices{*m_list, *m_spooler, *m_directPrinter, files, loop, *m_prompts, *m_debugLog,
                         *m_errorLog, *m_selection, *m_watch, *m_balance, *m_snapshot, *m_colorSplit,
                         *m_pdfWorker, m_options, m_balanceOptions, m_colorOptions, m_request.workingFolder});
}

// Unless it was named, only one that is ready to print.
void Application::OpenCups(bool wasNamed, std::string& message) {
    m_spooler = OpenCupsSpooler(*m_services.files, *m_services.loop, *m_services.clock,
                                wasNamed ? CupsNeed::kServer : CupsNeed::kPrinterAtOnce, message);
}

void Application::OpenEmbedded(std::string& message) {
    auto embedded =
        std::make_unique<EmbeddedSpooler>(*m_services.files, *m_services.loop, *m_services.network,
                                          *m_services.clock, *m_services.machine, m_request.workingFolder);
    if (embedded->Open(message) != 0) return;
    m_embedded = embedded.get();
    m_spooler = std::move(embedded);
}

PrinterAdministration* Application::Administration() {
    return m_embedded;
}

DeliveryProgress Application::Delivery() {
    if (m_embedded == nullptr) return {};
    const DeliveryState state = m_embedded->WaitingJobs();
    return {m_embedded->IsIdle(), state.waiting, state.bytesSent, state.bytesTotal};
}

}  // namespace quirepress
