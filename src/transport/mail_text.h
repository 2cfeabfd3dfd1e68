#pragma once

#include <string>
#include <string_view>

#include "base/date_time.h"

namespace quirepress {

// The texts of a message's header fields. Whatever they are given, they answer one field: no line end but
// those that fold it.

struct Mailbox {
    std::string name;     // may be empty
    std::string address;  // "a@example.org"
};

// From "a@example.org" or "Name <a@example.org>". False, and `mailbox` untouched, when there is no address
// in it, or a line end, blank or angle bracket within the address.
bool ParseMailbox(std::string_view text, Mailbox& mailbox);
std::string FormatMailbox(const Mailbox& mailbox);

// A free text, in encoded words where it is not plain ASCII.
std::string EncodeHeaderText(std::string_view text);

// "Content-Disposition: attachment; filename=..." for a file of this name.
std::string FormatAttachmentField(std::string_view fileName);

// "Sat, 21 Nov 2026 18:13:31 +0000".
std::string FormatMailDate(Instant instant);

// The lines of a body as they travel: UTF-8, each ended by CR LF.
std::string ToMailLines(std::string_view body);

}  // namespace quirepress
