#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/date_time.h"

namespace quirepress {

class Clock;
class Files;
class Machine;

// What a separator says of the file that it stands for; times in the user's own zone.
struct SeparatorFacts {
    std::string path;              // empty: the separator stands for no file
    std::vector<std::string> set;  // paths of the files that belong together, in list order
    long long pages = 0;
    long long size = 0;  // bytes
    LocalTime now, created, modified, accessed;
    std::string machine;
    std::string user;
};

// The facts of the file as it is on the disk; of one that is missing, size 0 and no times.
SeparatorFacts FindSeparatorFacts(Files& files, Clock& clock, Machine& machine, std::string_view path);

// `format` by the codes of strftime in the C locale, without those of time zones; "Invalid Date & Time" when
// it can't be formatted.
std::string FormatSeparatorTime(const LocalTime& time, std::string_view format);

enum class SeparatorMarkup { kPlain, kRichText, kHtml };
// By the ending of the separator's name: "rtf" or "RTF"; "htm", "html".
SeparatorMarkup MarkupOf(std::string_view separatorPath);

// The template with its placeholders replaced; docs/separators.md lists them. What is put in stands in the
// separator as it is, whatever it means in the markup.
std::string FillSeparator(std::string text, const SeparatorFacts& facts, SeparatorMarkup markup);

// Fills the template into the separator's file, which is replaced. 0, or -1 with `message`; no separator is
// left then.
int GenerateSeparator(Files& files, std::string_view templatePath, std::string_view separatorPath,
                      const SeparatorFacts& facts, std::string& message);

}  // namespace quirepress
