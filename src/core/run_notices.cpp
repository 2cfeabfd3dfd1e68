#include "core/run_notices.h"

#include "base/format.h"

namespace quirepress {

std::string ErrorNoticeBody(const LocalTime& time, std::string_view status, std::string_view fileName) {
    return Format("Date/Time:%s\r\nStatus: %s\r\nFilename:%s", FormatDateTime(time), status, fileName);
}

}  // namespace quirepress
