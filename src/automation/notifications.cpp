#include "automation/notifications.h"

#include <array>
#include <memory>
#include <utility>

#include "automation/mail_server_text.h"
#include "base/format.h"
#include "logs/debug_log.h"
#include "logs/error_log.h"
#include "platform/event_loop.h"
#include "platform/prompts.h"
#include "transport/mail_sender.h"

namespace quirepress {

namespace {

constexpr const char* kErrorTitle = "Email Error!";
constexpr const char* kTestTitle = "Email Test";
// Longer than a server needs that answers at all.
constexpr long long kSlowMilliseconds = 5'000;
constexpr long long kLeftAloneMilliseconds = 300'000;

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
    const std::string heldBack = kind == kNoticePrintsFinished ? TakeHeldBack() : std::string();
    if (!report.isOff) {
        if (kind == kNoticePrintError) m_services.prompts.ShowStatus("Sending error email.");
        if (kind == kNoticePrintsFinished) m_services.prompts.ShowStatus("Sending email.");
        MailMessage message;
        message.subject = std::string("Quirepress ") + notice->subject;
        message.body = body;
        if (email.m_attach && !attachment.empty()) message.attachments.emplace_back(attachment);
        const bool endsRun = kind == kNoticePrintsFinished;
        if (endsRun) message.body += heldBack;
        const bool isHeldBack = IsLeftAlone(email) && (!endsRun || m_wasStopped);
        report = isHeldBack ? HoldBack(message.subject, endsRun) : Deliver(email, std::move(message), false);
    }
    m_report = report;
}

bool Notifications::IsLeftAlone(const EmailOptions& email) const {
    return email.m_server == m_slowServer && m_services.loop.MonotonicMilliseconds() < m_leftAloneUntil;
}

NotificationReport Notifications::HoldBack(const std::string& subject, bool endsRun) {
    m_services.debugLog.Trace("Email held back: %s\r\n", subject);
    NotificationReport report;
    report.failed = 1;
    report.failure = "the mail server did not answer a short while ago";
    // Of those before it the end tells.
    if (endsRun)
        LogFailure(subject, "", "Email not sent: " + report.failure);
    else
        ++m_heldBack;
    return report;
}

// A line for the mail that ends a run; empty when nothing was held back in it. The error log gets it too.
std::string Notifications::TakeHeldBack() {
    const int count = std::exchange(m_heldBack, 0);
    if (count == 0) return {};
    const std::string text =
        Format("%d earlier message(s) not sent, since the mail server did not answer", count);
    LogFailure("Quirepress", "", text);
    return "\r\n" + text + ".\r\n";
}

void Notifications::NoteSending(const EmailOptions& email, bool isSent, bool wasStopped,
                                long long milliseconds) {
    m_wasStopped = !isSent && wasStopped;
    const bool isSlow = !isSent && (wasStopped || milliseconds >= kSlowMilliseconds);
    m_leftAloneUntil = isSlow ? m_services.loop.MonotonicMilliseconds() + kLeftAloneMilliseconds : 0;
    m_slowServer = isSlow ? email.m_server : std::string();
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
        const long long start = m_services.loop.MonotonicMilliseconds();
        const bool isSent = server->Send(message);
        NoteSending(email, isSent, server->WasStopped(), m_services.loop.MonotonicMilliseconds() - start);
        if (isSent) {
            ++report.sent;
            m_services.debugLog.Trace("Email sent: %s, to: %s\r\n", message.subject, recipient);
            continue;
        }
        const std::string failure = server->FailureText();
        if (report.failed++ == 0) report.failure = failure;
        m_services.debugLog.Trace("Email not sent: %s, to: %s, error: %s\r\n", message.subject, recipient,
                                  failure);
        if (!isTest) {
            LogFailure(message.subject, message.recipient, "Email not sent: " + failure);
            break;
        }
        std::string text = "Error in configuration, message not sent to: ";
        text.append(recipient).append("\n(").append(failure).append(")");
        m_services.prompts.ShowBox(kErrorTitle, text);
    }
    return report;
}

// The subject stands where the log has the document: a document named there would count as handled.
void Notifications::LogFailure(const std::string& subject, const std::string& recipient,
                               const std::string& failure) {
    if (!m_services.options.m_errorLog) return;
    m_services.errorLog.Append({subject, recipient, failure, ""});
}

}  // namespace quirepress
