#pragma once

#include <string>
#include <vector>

namespace quirepress {

// What is sent to one recipient. Sender and recipient are "a@example.org" or "Name <a@example.org>".
struct MailMessage {
    std::string subject;
    std::string body;
    std::string sender;
    std::string recipient;
    std::vector<std::string> attachments;  // paths
};

}  // namespace quirepress
