#include "app/application.h"
#include "automation/notifications.h"
#include "platform/event_loop.h"
#include "platform/interrupts.h"
#include "platform/machine.h"
#include "transport/curl_mail_sender.h"

namespace quirepress {

TransferPlace Application::Transfers() {
    TransferPlace place{*m_services.loop, {}};
    m_services.machine->ReadEnvironment("SSL_CERT_FILE", place.certificates);
    return place;
}

void Application::MakeNotifications() {
    LoadEmailOptions(m_emailOptions, Settings());
    m_mailSender = std::make_unique<CurlMailSender>(MailPlace{
        *m_services.files, *m_services.clock, Transfers(), m_services.machine->HostName(), InterruptCount});
    m_notifications = std::make_unique<Notifications>(NotificationServices{
        *m_mailSender, *m_services.loop, *m_prompts, *m_debugLog, *m_errorLog, m_emailOptions, m_options});
}

}  // namespace quirepress
