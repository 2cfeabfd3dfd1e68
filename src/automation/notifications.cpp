#include "automation/notifications.h"

#include <array>
#include <memory>

#include "automation/mail_server_text.h"
#include "logs/debug_log.h"
#include "logs/error_log.h"
#include "platform/prompts.h"
#include "transport/mail_sender.h"

namespace quirepress {

namespace {

constexpr const char* kErrorTitle = "Email Error!";
constexpr const char* kTestTitle = "Email Test";

struct NoticeKind {
    const char* subject;
    bool EmailOptions::*isOn;  // none: always
};

constexpr std::array<NoticeKind, kLastNotice> kKinds = {{
    {"Scheduled Job Finished", &EmailOptions::m_scheduledJob},
    {"Print Error", &EmailOptions::m_printError},
    {"Printer Alert", &EmailOptions::m_printerAlert},
    {"Prints Finished", &EmailOptions::m_printsFinished},
    {"Prints Finished", nullptr},
    {"Prints Ready", &EmailOptions::m_printsReady},
}};

std::unique_ptr<MailManager> OpenServer(MailSender& mail, const EmailOptions& email) {
    const MailServer server = ParseMailServer(email.m_server);
    std::unique_ptr<MailManager> manager = mail.CreateManager();
    manager->SetSmtpHost(server.host);
    manager->SetSsl(server.isSsl);
    manager->SetSmtpPort(server.port);
    manager->SetLogin(email.m_userName, email.m_password);
    return manager;
}

}  // namespace

void Notifications::SendNotification(int kind, std::string_view body, std::string_view attachment) {
    NotificationReport report;
    const bool isKnown = kind >= kFirstNotice && kind <= kLastNotice;
    const EmailOptions email = m_services.email;  // they may be loaded anew while a message is on its way
    const NoticeKind* const notice = isKnown ? &kKinds.at(static_cast<std::size_t>(kind - 1)) : nullptr;
    report.isOff = notice == nullptr || (notice->isOn != nullptr && !(email.*notice->isOn));
    if (!report.isOff) {
        MailMessage message;
        message.subject = std::string("Quirepress ") + notice->subject;
        message.body = body;
        if (email.m_attach && !attachment.empty()) message.attachments.emplace_back(attachment);
        report = Deliver(email, std::move(message), false);
    }
    m_report = report;
}

void Notifications::SendTestMessage() {
    MailMessage message;
    message.subject = "Quirepress Test Message";
    message.body = "This is a test message";
    m_report = Deliver(EmailOptions(m_services.email), std::move(message), true);
    if (m_report.sent > 0) m_services.prompts.ShowBox(kTestTitle, "Message(s) Sent Successfully.");
}

NotificationReport Notifications::Deliver(const EmailOptions& email, MailMessage message, bool isTest) {
    NotificationReport report;
    if (email.m_recipients.empty()) return report;
    if (!m_services.mail.Unlock()) {
        report.failure = "Mail Component unlock failed";
        report.failed = 1;
        m_services.prompts.ShowBox(kErrorTitle, report.failure);
        return report;
    }
    const std::unique_ptr<MailManager> server = OpenServer(m_services.mail, email);
    message.sender = email.m_sender;
    for (const std::string& recipient : email.m_recipients) {
        message.recipient = recipient;
        if (server->Send(message)) {
            ++report.sent;
            m_services.debugLog.Trace("Email sent: %s, to: %s\r\n", message.subject, recipient);
            continue;
        }
        const std::string failure = server->FailureText();
        if (report.failed++ == 0) report.failure = failure;
        m_services.debugLog.Trace("Email not sent: %s, to: %s, error: %s\r\n", message.subject, recipient,
                                  failure);
        if (!isTest) {
            LogFailure(message, failure);
            break;
        }
        std::string text = "Error in configuration, message not sent to: ";
        text.append(recipient).append("\n(").append(failure).append(")");
        m_services.prompts.ShowBox(kErrorTitle, text);
    }
    return report;
}

// The subject stands where the log has the document: a document named there would count as handled.
void Notifications::LogFailure(const MailMessage& message, const std::string& failure) {
    if (!m_services.options.m_errorLog) return;
    m_services.errorLog.Append({message.subject, message.recipient, "Email not sent: " + failure, ""});
}

}  // namespace quirepress
