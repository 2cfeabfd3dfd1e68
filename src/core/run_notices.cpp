#include "core/run_notices.h"

#include "base/credentials.h"
#include "base/format.h"
#include "base/text.h"

namespace quirepress {

std::string NameInNotice(std::string_view path) {
    return ToPrintableLine(HideCredentials(path));
}

std::string ErrorNoticeBody(const LocalTime& time, std::string_view status, std::string_view fileName) {
    return Format("Date/Time:%s\r\nStatus: %s\r\nFilename:%s", FormatDateTime(time), status,
                  NameInNotice(fileName));
}

}  // namespace quirepress
