#pragma once

#include <string>
#include <string_view>

#include "core/run_notices.h"
#include "settings/email_options.h"
#include "settings/general_options.h"
#include "transport/mail_message.h"

namespace quirepress {

class DebugLog;
class ErrorLog;
class EventLoop;
class MailManager;
class MailSender;
class Prompts;

constexpr int kFirstNotice = 1;
constexpr int kLastNotice = 6;

struct NotificationServices {
    MailSender& mail;
    EventLoop& loop;
    Prompts& prompts;
    DebugLog& debugLog;
    ErrorLog& errorLog;
    const EmailOptions& email;
    const GeneralOptions& options;
};

// What became of a notification.
struct NotificationReport {
    bool isOff = false;  // its kind is switched off
    int sent = 0;        // recipients who have got it
    int failed = 0;
    std::string failure;  // the first one
};

// The mails that tell somebody what the program has done. One that cannot be sent stops nothing: it is
// written to the debug log, and to the error log when there is one. A server that has kept the program
// waiting in vain is left alone for some minutes: what is held back meanwhile is counted, and told in the
// mail at the end of the run, which is tried all the same, and in the error log. Where the user has stopped
// the waiting, the mail at the end is held back, too.
class Notifications : public RunNotices {
public:
    explicit Notifications(const NotificationServices& services) : m_services(services) {}

    // Sends a notification of this kind (1 to 6) to every recipient, if the kind is switched on. The first
    // recipient whose server does not take it is the last one. May pump.
    void SendNotification(int kind, std::string_view body, std::string_view attachment);
    void Notify(int kind, std::string_view body, std::string_view attachment) override {
        SendNotification(kind, body, attachment);
    }

    // Sends the test message to every recipient, whatever is switched on, and shows how that went. May pump.
    void SendTestMessage();

    // Of the last of either that has come to its end.
    const NotificationReport& LastReport() const { return m_report; }

private:
    NotificationReport Deliver(const EmailOptions& email, MailMessage message, bool isTest);
    bool IsLeftAlone(const EmailOptions& email) const;
    NotificationReport HoldBack(const std::string& subject, bool endsRun);
    std::string TakeHeldBack();
    void NoteSending(const EmailOptions& email, bool isSent, bool wasStopped, long long milliseconds);
    void LogFailure(const std::string& subject, const std::string& recipient, const std::string& failure);

    NotificationServices m_services;
    NotificationReport m_report;
    std::string m_slowServer;        // as the options name it
    bool m_wasStopped = false;       // the user has not waited for it
    long long m_leftAloneUntil = 0;  // the loop's milliseconds
    int m_heldBack = 0;              // notifications, since the last run ended
};

}  // namespace quirepress
