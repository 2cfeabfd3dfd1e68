#pragma once

#include <string>
#include <vector>

#include "settings/keyword_table.h"

namespace quirepress {

// Which notifications are sent, to whom and through which server; email_setup.ini.
struct EmailOptions {
    bool m_scheduledJob = false;
    bool m_printerAlert = false;
    bool m_printError = false;
    bool m_printsFinished = false;
    bool m_printsReady = false;
    bool m_attach = false;
    bool m_attachType = false;
    std::vector<std::string> m_recipients;
    std::string m_sender;
    std::string m_server;  // "mail.example.org", "ssl:mail.example.org:465"
    std::string m_userName;
    std::string m_password;
};

const KeywordTable<EmailOptions>& EmailKeywords();

int LoadEmailOptions(EmailOptions& options, const SettingsPlace& place);
int SaveEmailOptions(const EmailOptions& options, const SettingsPlace& place);

}  // namespace quirepress
