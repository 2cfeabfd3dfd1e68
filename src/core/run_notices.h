#pragma once

#include <string>
#include <string_view>

#include "base/date_time.h"

namespace quirepress {

// Kinds of notices; the numbers are those of the mails that they become.
constexpr int kNoticePrintError = 2;
constexpr int kNoticePrintsFinished = 4;
constexpr int kNoticeFilesHandled = 5;

// Told what somebody may want a mail about.
class RunNotices {
public:
    virtual ~RunNotices() = default;
    // `attachment` is a file's path, or empty. May pump.
    virtual void Notify(int kind, std::string_view body, std::string_view attachment) = 0;
};

// A path or an address as a notice names it: on one line whatever is in it, without its password.
std::string NameInNotice(std::string_view path);

// "Date/Time:", the time, and lines "Status: " and "Filename:".
std::string ErrorNoticeBody(const LocalTime& time, std::string_view status, std::string_view fileName);

}  // namespace quirepress
