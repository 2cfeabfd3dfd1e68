#include "plugins/separator_page.h"

#include <fmt/chrono.h>

#include <chrono>
#include <ctime>

#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "platform/clock.h"
#include "platform/file_tools.h"
#include "platform/files.h"
#include "platform/machine.h"

namespace quirepress {

namespace {

constexpr std::string_view kInvalidTime = "Invalid Date & Time";
constexpr std::size_t kLongestName = 254;            // bytes, of a file in the set
constexpr std::int64_t kLargestTemplate = 64 << 20;  // bytes
constexpr double kBytesInKb = 1024;

std::tm ToCalendar(const LocalTime& time) {
    const std::chrono::year_month_day date(std::chrono::year(time.year),
                                           std::chrono::month(static_cast<unsigned>(time.month)),
                                           std::chrono::day(static_cast<unsigned>(time.day)));
    const std::chrono::sys_days day(date);
    const std::chrono::sys_days newYear(date.year() / std::chrono::January / 1);
    std::tm calendar{};
    calendar.tm_year = time.year - 1900;
    calendar.tm_mon = time.month - 1;
    calendar.tm_mday = time.day;
    calendar.tm_hour = time.hour;
    calendar.tm_min = time.minute;
    calendar.tm_sec = time.second;
    calendar.tm_wday = static_cast<int>(std::chrono::weekday(day).c_encoding());
    calendar.tm_yday = static_cast<int>((day - newYear).count());
    return calendar;
}

// The codepoints of a valid UTF-8 text beyond ASCII as RTF writes them: signed halves of UTF-16.
std::string ToRichText(std::string_view text) {
    const std::string valid = ToUtf8ForDisplay(text);
    std::string out;
    for (std::size_t i = 0; i < valid.size();) {
        const auto lead = static_cast<unsigned char>(valid[i]);
        if (lead < 0x80) {
            if (lead == '\\' || lead == '{' || lead == '}') out += '\\';
            out += valid[i++];
            continue;
        }
        const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
        std::uint32_t point = lead & (0xFFU >> (length + 1));
        for (std::size_t k = 1; k < length; ++k)
            point = point << 6U | (static_cast<unsigned char>(valid[i + k]) & 0x3FU);
        i += length;
        if (point >= 0x10000) {
            point -= 0x10000;
            out += Format("\\u%d?", static_cast<std::int16_t>(0xD800U | point >> 10U));
            point = 0xDC00U | (point & 0x3FFU);
        }
        out += Format("\\u%d?", static_cast<std::int16_t>(point));
    }
    return out;
}

std::string ToHtml(std::string_view text) {
    std::string out;
    for (const char c : text) {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else if (c == '"')
            out += "&quot;";
        else
            out += c;
    }
    return out;
}

// One template at work.
class Filling {
public:
    Filling(std::string text, SeparatorMarkup markup) : m_text(std::move(text)), m_markup(markup) {}

    void Put(std::string_view placeholder, std::string_view value) {
        m_text = ReplaceAll(m_text, placeholder, InMarkup(value));
    }
    // Those that begin so and hold a format up to the next "]".
    void PutTimes(std::string_view start, const LocalTime& time) {
        for (std::size_t at = m_text.find(start); at != std::string::npos; at = m_text.find(start, at)) {
            const std::size_t end = m_text.find(']', at);
            if (end == std::string::npos) return;
            const std::size_t format = at + start.size();
            const std::string value =
                InMarkup(FormatSeparatorTime(time, std::string_view(m_text).substr(format, end - format)));
            m_text.replace(at, end + 1 - at, value);
            at += value.size();
        }
    }
    std::string Take() { return std::move(m_text); }

private:
    std::string InMarkup(std::string_view value) const {
        if (m_markup == SeparatorMarkup::kRichText) return ToRichText(value);
        return m_markup == SeparatorMarkup::kHtml ? ToHtml(value) : std::string(value);
    }

    std::string m_text;
    SeparatorMarkup m_markup;
};

}  // namespace

SeparatorFacts FindSeparatorFacts(Files& files, Clock& clock, Machine& machine, std::string_view path) {
    SeparatorFacts facts;
    facts.path = path;
    const FileFacts found = path.empty() ? FileFacts() : files.Inspect(path);
    facts.size = found.size;
    facts.now = clock.ToLocal(clock.Now());
    facts.created = clock.ToLocal(found.created);
    facts.modified = clock.ToLocal(found.written);
    facts.accessed = clock.ToLocal(found.accessed);
    facts.machine = machine.HostName();
    facts.user = machine.LoginName();
    return facts;
}

std::string FormatSeparatorTime(const LocalTime& time, std::string_view format) {
    constexpr char kOpening = '\1';
    constexpr char kClosing = '\2';
    if (format.empty() || time.month == 0 || Contains(format, "%z") || Contains(format, "%Z"))
        return std::string(kInvalidTime);
    // Braces mean something to the formatter.
    std::string pattern = "{:";
    for (const char c : format) pattern += c == '{' ? kOpening : c == '}' ? kClosing : c;
    std::string text;
    try {
        text = fmt::format(fmt::runtime(pattern + "}"), ToCalendar(time));
    } catch (const fmt::format_error&) {
        return std::string(kInvalidTime);
    }
    for (char& c : text) c = c == kOpening ? '{' : c == kClosing ? '}' : c;
    return text;
}

SeparatorMarkup MarkupOf(std::string_view separatorPath) {
    if (EndsWith(separatorPath, "rtf") || EndsWith(separatorPath, "RTF")) return SeparatorMarkup::kRichText;
    const std::string ending = ToLowerAscii(FileExtension(separatorPath));
    return ending == ".htm" || ending == ".html" ? SeparatorMarkup::kHtml : SeparatorMarkup::kPlain;
}

std::string FillSeparator(std::string text, const SeparatorFacts& facts, SeparatorMarkup markup) {
    Filling filling(std::move(text), markup);
    for (std::size_t i = 0; i < facts.set.size(); ++i)
        filling.Put(Format("[FILENAME%d]", i + 1), CutToSize(FileTitle(facts.set[i]), kLongestName));
    const LocalTime& now = facts.now;
    filling.PutTimes("[DATETIME:", now);
    filling.Put("[MM/DD/YY]", Format("%.2d/%.2d/%.2d", now.month, now.day, now.year % 100));
    filling.Put("[HH:MM:SS]", Format("%.2d:%.2d:%.2d", now.hour, now.minute, now.second));
    const std::string_view title = FileTitle(facts.path);
    std::string_view folder = FolderOf(facts.path);
    if (folder.size() > 1) folder.remove_suffix(1);  // the separator behind it
    filling.Put("[FILETITLE]", title);
    filling.Put("[FILETITLENOEXT]", TitleWithoutExtension(facts.path));
    filling.Put("[PAGES]", Format("%ld", facts.pages));
    filling.Put("[FILESIZEBYTES]", Format("%ld", facts.size));
    filling.Put("[FILESIZEKB]", Format("%2.1lf", static_cast<double>(facts.size) / kBytesInKb));
    filling.PutTimes("[FILECREATED ", facts.created);
    filling.PutTimes("[FILEMODIFIED ", facts.modified);
    filling.PutTimes("[FILEACCESSED ", facts.accessed);
    filling.Put("[FULLFILENAME]", facts.path);
    filling.Put("[MACHINE]", facts.machine);
    filling.Put("[USERNAME]", facts.user);
    filling.Put("[DIRECTORY]", folder);
    filling.Put("[FOLDERNAME]", FileTitle(folder));
    return filling.Take();
}

int GenerateSeparator(Files& files, std::string_view templatePath, std::string_view separatorPath,
                      const SeparatorFacts& facts, std::string& message) {
    std::string text;
    FileResult result = FileResult::kDone;
    if (!ReadWholeFile(files, templatePath, kLargestTemplate, text, result)) {
        message = "Can't read template file.";
        return -1;
    }
    const std::string filled = FillSeparator(std::move(text), facts, MarkupOf(separatorPath));
    const std::string resolved = files.ResolvePath(separatorPath);
    const bool isTemplate = !resolved.empty() && resolved == files.ResolvePath(templatePath);
    if (isTemplate || ReplaceFileDurably(files, separatorPath, filled) != FileResult::kDone) {
        message = "Can't write separator file.";
        return -1;
    }
    return 0;
}

}  // namespace quirepress
