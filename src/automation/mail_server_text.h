#pragma once

#include <string>
#include <string_view>

namespace quirepress {

struct MailServer {
    std::string host;
    bool isSsl = false;
    int port = 0;  // 0: the usual one
};

// From "HOST", "HOST:PORT", each with "ssl:" in front for an encrypted connection.
MailServer ParseMailServer(std::string_view text);

}  // namespace quirepress
