#include "transport/mail_text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>

#include "base/escaped_text.h"
#include "base/format.h"
#include "base/text.h"

namespace quirepress {

namespace {

constexpr std::size_t kLongestPlainText = 900;   // a line may have 998 bytes
constexpr std::size_t kBytesOfEncodedWord = 36;  // so that the line stays below 76 characters

bool IsPlain(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

std::string EncodeBase64(std::string_view bytes) {
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string encoded;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k)
            group = group << 8U | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0U);
        for (std::size_t k = 0; k < 4; ++k)
            encoded += k <= count ? kDigits[group >> (18U - 6U * k) & 63U] : '=';
    }
    return encoded;
}

std::string WithoutControls(std::string_view text) {
    std::string line = ToUtf8ForDisplay(text);
    std::replace_if(line.begin(), line.end(), IsControlCharacter, ' ');
    return line;
}

std::string_view Trim(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return TrimTrailingBlanks(text);
}

// The name as the older form of the parameter takes it.
std::string QuoteName(std::string_view name) {
    return '"' + ReplaceAll(ReplaceAll(name, "\\", "\\\\"), "\"", "\\\"") + '"';
}

std::string PercentEncode(std::string_view text) {
    constexpr std::string_view kUnchanged = "!#$&+-.^_`|~";  // beside letters and digits
    std::string encoded;
    for (const char c : text) {
        const bool isWord = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        if (isWord || Contains(kUnchanged, std::string_view(&c, 1)))
            encoded += c;
        else
            encoded += Format("%%%.2X", static_cast<unsigned>(static_cast<unsigned char>(c)));
    }
    return encoded;
}

}  // namespace

bool ParseMailbox(std::string_view text, Mailbox& mailbox) {
    Mailbox parsed;
    parsed.address = Trim(text);
    if (EndsWith(parsed.address, ">")) {
        const std::size_t start = parsed.address.rfind('<');
        if (start == std::string::npos) return false;
        std::string_view name = Trim(std::string_view(parsed.address).substr(0, start));
        if (name.size() >= 2 && name.front() == '"' && name.back() == '"')
            name = name.substr(1, name.size() - 2);
        parsed.name = name;
        parsed.address = parsed.address.substr(start + 1, parsed.address.size() - start - 2);
    }
    const auto isBad = [](char c) { return IsControlCharacter(c) || c == ' ' || c == '<' || c == '>'; };
    if (parsed.address.empty() || std::any_of(parsed.address.begin(), parsed.address.end(), isBad))
        return false;
    mailbox = std::move(parsed);
    return true;
}

std::string FormatMailbox(const Mailbox& mailbox) {
    const std::string name = WithoutControls(mailbox.name);
    if (name.empty()) return mailbox.address;
    const bool isQuoted = IsPlain(name) && name.find_first_of("()<>[]:;@\\,.\"=") != std::string::npos;
    return (isQuoted ? QuoteName(name) : EncodeHeaderText(name)) + " <" + mailbox.address + ">";
}

std::string EncodeHeaderText(std::string_view text) {
    std::string line = WithoutControls(text);
    if (IsPlain(line) && line.size() <= kLongestPlainText && !Contains(line, "=?")) return line;
    std::string words;
    for (std::string_view rest = line; !rest.empty();) {
        const std::string_view word = CutToSize(rest, kBytesOfEncodedWord);
        words += (words.empty() ? "=?UTF-8?B?" : "\r\n =?UTF-8?B?") + EncodeBase64(word) + "?=";
        rest.remove_prefix(word.size());
    }
    return words;
}

std::string FormatAttachmentField(std::string_view fileName) {
    const std::string name = WithoutControls(fileName);
    return "Content-Disposition: attachment;\r\n " +
           (IsPlain(name) ? "filename=" + QuoteName(name) : "filename*=UTF-8''" + PercentEncode(name));
}

std::string FormatMailDate(Instant instant) {
    constexpr std::array<const char*, 7> kDays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    constexpr std::array<const char*, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    namespace chrono = std::chrono;
    const chrono::sys_seconds moment{chrono::floor<chrono::seconds>(chrono::nanoseconds(instant))};
    const chrono::sys_days day = chrono::floor<chrono::days>(moment);
    const chrono::year_month_day date(day);
    const chrono::hh_mm_ss time(moment - day);
    return Format("%s, %.2d %s %.4d %.2d:%.2d:%.2d +0000", kDays.at(chrono::weekday(day).c_encoding()),
                  static_cast<int>(static_cast<unsigned>(date.day())),
                  kMonths.at(static_cast<unsigned>(date.month()) - 1), static_cast<int>(date.year()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
}

std::string ToMailLines(std::string_view body) {
    std::string lines = ReplaceAll(ToUtf8ForDisplay(body), "\r\n", "\n");
    lines = ReplaceAll(ReplaceAll(lines, "\r", "\n"), "\n", "\r\n");
    if (!EndsWith(lines, "\r\n")) lines += "\r\n";
    return lines;
}

}  // namespace quirepress
