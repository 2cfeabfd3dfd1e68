#include "app/application.h"
#include "backends/direct_print.h"
#include "core/print_list.h"
#include "core/print_run.h"
#include "documents/pdf_counter.h"
#include "logs/debug_log.h"
#include "logs/error_log.h"
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
#include "platform/terminal.h"

namespace quirepress {

int Application::OpenSpooler(std::string_view name, bool& wasNamed, std::string& message) {
    std::string chosen(name);
    if (chosen.empty() && !m_services.machine->ReadEnvironment("QUIREPRESS_SPOOLER", chosen)) chosen.clear();
    wasNamed = !chosen.empty();
    if (chosen.empty()) chosen = "embedded";
    if (chosen != "embedded") {
        message = "There is no print spooler \"" + chosen + "\" here; \"embedded\" is one.";
        return -1;
    }
    auto embedded =
        std::make_unique<EmbeddedSpooler>(*m_services.files, *m_services.loop, *m_services.network,
                                          *m_services.clock, *m_services.machine, m_request.workingFolder);
    if (embedded->Open(message) != 0) return -1;
    m_embedded = embedded.get();
    m_spooler = std::move(embedded);
    m_directPrinter =
        std::make_unique<DirectPrinter>(*m_spooler, *m_services.files, *m_services.loop, *m_debugLog);
    m_run = std::make_unique<PrintRun>(PrintRunServices{*m_list, *m_spooler, *m_directPrinter,
                                                        *m_services.files, *m_services.loop, *m_prompts,
                                                        *m_debugLog, *m_errorLog, m_options});
    return 0;
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
