#include "automation/mail_server_text.h"

#include "base/numbers.h"
#include "base/text.h"

namespace quirepress {

MailServer ParseMailServer(std::string_view text) {
    constexpr std::string_view kSslMark = "ssl:";
    MailServer server;
    server.isSsl = StartsWith(text, kSslMark);
    server.host = server.isSsl ? ReplaceAll(text, kSslMark, "") : std::string(text);
    const std::size_t colon = server.host.find(':');
    if (colon == std::string::npos) return server;
    server.port = ParseLong(std::string_view(server.host).substr(colon + 1));
    server.host.resize(colon);
    return server;
}

}  // namespace quirepress
