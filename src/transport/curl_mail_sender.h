#pragma once

#include <functional>

#include "transport/mail_sender.h"
#include "transport/transfer.h"

namespace quirepress {

class Clock;
class Files;

struct MailPlace {
    Files& files;
    Clock& clock;
    TransferPlace transfer;
    std::string hostName;  // of this machine
    // How often the user has asked to stop; once more gives up what is being sent.
    std::function<int()> countInterrupts;
    TransferLimits limits = {15'000, 30, 300'000};
};

// Mail over libcurl. All messages of one manager go over one connection.
class CurlMailSender : public MailSender {
public:
    explicit CurlMailSender(MailPlace place) : m_place(std::move(place)) {}
    bool Unlock() override { return Transfer::IsAvailable(); }
    std::unique_ptr<MailManager> CreateManager() override;

private:
    MailPlace m_place;
};

}  // namespace quirepress
