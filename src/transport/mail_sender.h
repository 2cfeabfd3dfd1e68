#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "transport/mail_message.h"

namespace quirepress {

// Sends messages through one server: first it is told about the server, then it sends one after another.
class MailManager {
public:
    virtual ~MailManager() = default;  // takes leave of the server. May pump.

    virtual void SetSmtpHost(std::string_view host) = 0;
    virtual void SetSsl(bool isOn) = 0;      // encrypted from the first byte; else where the server offers it
    virtual void SetSmtpPort(int port) = 0;  // 0: the usual one
    virtual void SetLogin(std::string_view userName, std::string_view password) = 0;  // no name: no login

    // False when the server did not take the message. An attachment that cannot be read, or is larger than
    // mail servers take, is left out, and the body says so. May pump.
    virtual bool Send(const MailMessage& message) = 0;
    virtual std::string FailureText() const = 0;  // why the last Send failed, for the user
    virtual bool WasStopped() const = 0;          // by the user, who would not wait for the server
};

class MailSender {
public:
    virtual ~MailSender() = default;
    // False when no mail can be sent from this system at all.
    virtual bool Unlock() = 0;
    virtual std::unique_ptr<MailManager> CreateManager() = 0;
};

}  // namespace quirepress
