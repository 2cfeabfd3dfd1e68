#include "base/credentials.h"

#include <algorithm>

namespace quirepress {

namespace {

constexpr std::string_view kHidden = "***";

bool IsPort(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// Where the "@" behind the user and the password is that `rest`, what follows "://", begins with.
std::size_t FindUserEnd(std::string_view rest) {
    const std::string_view host = rest.substr(0, rest.find_first_of("/?#\r\n"));
    const std::size_t at = host.rfind('@');
    const std::size_t colon = host.find(':');
    // A host in brackets has colons of its own.
    if (at != std::string_view::npos || colon == std::string_view::npos || host.front() == '[') return at;
    // What is no port is a password with a "/" in it: no good address, and a secret all the same.
    if (IsPort(host.substr(colon + 1))) return at;
    return rest.substr(0, rest.find_first_of(" \r\n")).rfind('@');
}

}  // namespace

std::string HideCredentials(std::string_view text) {
    constexpr std::string_view kStart = "://";
    std::string shown;
    for (std::size_t start = text.find(kStart); start != std::string_view::npos; start = text.find(kStart)) {
        shown += text.substr(0, start + kStart.size());
        text.remove_prefix(start + kStart.size());
        const std::size_t end = FindUserEnd(text);
        if (end == std::string_view::npos) continue;
        const std::size_t colon = text.find(':');
        if (colon < end) shown += text.substr(0, colon + 1);
        shown += kHidden;
        text.remove_prefix(end);
    }
    return shown.append(text);
}

}  // namespace quirepress
