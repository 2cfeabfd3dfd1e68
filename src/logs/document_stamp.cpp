#include "logs/document_stamp.h"

#include "platform/clock.h"
#include "platform/files.h"

namespace quirepress {

namespace {

std::string TimeText(Instant instant, Clock& clock) {
    return instant == kNoInstant ? std::string() : FormatDateTime(clock.ToLocal(instant));
}

}  // namespace

DocumentStamp StampDocument(std::string_view path, const FileFacts& facts, Clock& clock) {
    DocumentStamp stamp;
    stamp.path = path;
    if (!facts.readable) return stamp;
    stamp.size = facts.size;
    stamp.created = TimeText(facts.created, clock);
    stamp.written = TimeText(facts.written, clock);
    return stamp;
}

}  // namespace quirepress
