#include "app/application.h"

#include "backends/printer_selection.h"
#include "platform/clock.h"
#include "platform/cups/open_cups_spooler.h"
#include "platform/embedded/embedded_spooler.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/machine.h"
#include "platform/network.h"

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
    MakePrinting();
    m_selection->BringDefaultBack();
    return 0;
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
