#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "transport/mail_sender.h"

namespace quirepress {

// Keeps a record of what it is asked to do; recipients can be made to fail.
class FakeMailSender : public MailSender {
public:
    bool Unlock() override { return m_isAvailable; }
    std::unique_ptr<MailManager> CreateManager() override { return std::make_unique<Manager>(*this); }

    void SetAvailable(bool isAvailable) { m_isAvailable = isAvailable; }
    void HealAll() { m_failures.clear(); }
    void FailFor(const std::string& recipient, const std::string& failure) {
        m_failures[recipient] = failure;
    }

    std::vector<MailMessage> sent;
    std::vector<std::string> asked;      // recipients, those that failed included
    std::function<void()> whileSending;  // may let time go by
    bool wasStopped = false;             // what fails does so because the user has stopped it
    std::string server;                  // of the last manager: "host 465 ssl user:password"

private:
    class Manager : public MailManager {
    public:
        explicit Manager(FakeMailSender& sender) : m_sender(sender) { m_sender.server.clear(); }
        void SetSmtpHost(std::string_view host) override { m_sender.server = host; }
        void SetSsl(bool isOn) override { m_ssl = isOn ? " ssl" : " plain"; }
        void SetSmtpPort(int port) override { m_sender.server += " " + std::to_string(port) + m_ssl; }
        void SetLogin(std::string_view userName, std::string_view password) override {
            m_sender.server += " " + std::string(userName) + ":" + std::string(password);
        }
        bool Send(const MailMessage& message) override {
            m_sender.asked.push_back(message.recipient);
            if (m_sender.whileSending) m_sender.whileSending();
            const auto failure = m_sender.m_failures.find(message.recipient);
            if (failure == m_sender.m_failures.end()) {
                m_sender.sent.push_back(message);
                return true;
            }
            m_failure = failure->second;
            return false;
        }
        std::string FailureText() const override { return m_failure; }
        bool WasStopped() const override { return m_sender.wasStopped && !m_failure.empty(); }

    private:
        FakeMailSender& m_sender;
        std::string m_ssl;
        std::string m_failure;
    };

    bool m_isAvailable = true;
    std::map<std::string, std::string> m_failures;
};

}  // namespace quirepress
