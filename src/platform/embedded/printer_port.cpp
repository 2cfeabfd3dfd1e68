#include "platform/embedded/printer_port.h"

#include <algorithm>
#include <optional>

#include "base/keyword_lines.h"
#include "base/numbers.h"
#include "base/text.h"

namespace quirepress {

namespace {

constexpr std::size_t kLongestName = 100;
constexpr std::string_view kFolderScheme = "folder:";
constexpr std::string_view kSocketScheme = "socket://";
constexpr std::string_view kLpdScheme = "lpd://";
constexpr int kRawPort = 9100;
constexpr int kLpdPort = 515;
constexpr std::string_view kPortKey = "PORT;";

bool IsControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

bool HasControls(std::string_view text) {
    return std::any_of(text.begin(), text.end(), IsControl);
}

// "HOST", "HOST:PORT", "[ADDRESS]", "[ADDRESS]:PORT"; a bare IPv6 address has no port.
bool ParseHostAndPort(std::string_view text, PrinterPort& port) {
    std::string_view host = text;
    std::string_view rest;
    if (StartsWith(text, "[")) {
        const std::size_t end = text.find(']');
        if (end == std::string_view::npos) return false;
        host = text.substr(1, end - 1);
        rest = text.substr(end + 1);
    } else if (std::count(text.begin(), text.end(), ':') == 1) {
        host = text.substr(0, text.find(':'));
        rest = text.substr(host.size());
    }
    if (host.empty() || host.find_first_of(" /[]@") != std::string_view::npos) return false;
    port.host = host;
    if (rest.empty()) return true;
    const std::optional<std::int64_t> number =
        rest[0] == ':' ? ParseWholeNumber(rest.substr(1), 1, 65535) : std::nullopt;
    if (!number) return false;
    port.port = static_cast<int>(*number);
    return true;
}

bool ParseSocketPort(std::string_view address, PrinterPort& port) {
    port.kind = PrinterPort::Kind::kSocket;
    port.port = kRawPort;
    if (EndsWith(address, "/")) address.remove_suffix(1);
    return ParseHostAndPort(address, port);
}

// White space ends a queue's name where the protocol names it.
bool ParseLpdPort(std::string_view address, PrinterPort& port) {
    port.kind = PrinterPort::Kind::kLpd;
    port.port = kLpdPort;
    const std::size_t slash = std::min(address.find('/'), address.size());
    port.queue = address.substr(std::min(slash + 1, address.size()));
    return !port.queue.empty() && !Contains(port.queue, " ") &&
           ParseHostAndPort(address.substr(0, slash), port);
}

}  // namespace

bool ParsePrinterPort(std::string_view text, PrinterPort& port, std::string& message) {
    const std::string shown = "The port \"" + ToPrintableLine(text) + "\" ";
    port = {};
    if (text.size() + kPortKey.size() > kKeywordLineLimit || Contains(text, ";") || HasControls(text)) {
        message = shown + "can't be kept: it is too long, or holds \";\" or a control character.";
        return false;
    }
    if (StartsWith(text, kFolderScheme)) {
        port.folder = text.substr(kFolderScheme.size());
        return true;
    }
    if (text == "null:") {
        port.kind = PrinterPort::Kind::kNull;
        return true;
    }
    if (StartsWith(text, kSocketScheme)) {
        if (ParseSocketPort(text.substr(kSocketScheme.size()), port)) return true;
        message = shown + "is not socket://HOST:PORT with a PORT from 1 to 65535.";
        return false;
    }
    if (StartsWith(text, kLpdScheme)) {
        if (ParseLpdPort(text.substr(kLpdScheme.size()), port)) return true;
        message =
            shown + "is not lpd://HOST:PORT/QUEUE with a PORT from 1 to 65535 and a QUEUE without a blank.";
        return false;
    }
    message = shown + "is none of folder:, folder:DIR, socket://HOST:PORT, lpd://HOST/QUEUE and null:.";
    return false;
}

bool CheckPrinterName(std::string_view name, std::string& message) {
    const std::string shown = "\"" + ToPrintableLine(name) + "\" can't be a printer's name: ";
    if (name.empty())
        message = "A printer needs a name.";
    else if (name.size() > kLongestName)
        message = shown + "it is longer than 100 bytes.";
    else if (name.find_first_of("/\\") != std::string_view::npos || HasControls(name))
        message = shown + "it holds \"/\", \"\\\" or a control character.";
    else if (name == "." || name == "..")
        message = shown + "it stands for a folder.";
    else
        return true;
    return false;
}

}  // namespace quirepress
