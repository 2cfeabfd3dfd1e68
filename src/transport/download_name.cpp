#include "transport/download_name.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <memory>

#include "base/code_page.h"
#include "base/entry_names.h"
#include "base/path.h"
#include "base/text.h"
#include "transport/media_types.h"

namespace quirepress {

namespace {

std::string DecodePercents(std::string_view text) {
    int size = 0;
    const std::unique_ptr<char, void (*)(void*)> decoded(
        curl_easy_unescape(nullptr, text.data(), static_cast<int>(text.size()), &size), curl_free);
    return text.empty() || !decoded ? std::string(text)
                                    : std::string(decoded.get(), static_cast<std::size_t>(size));
}

void SkipBlanks(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
}

// Takes a parameter's value, quoted or not, up to the ";" behind it.
std::string TakeValue(std::string_view& rest) {
    std::string value;
    SkipBlanks(rest);
    const bool isQuoted = StartsWith(rest, "\"");
    if (isQuoted) rest.remove_prefix(1);
    for (; !rest.empty() && rest[0] != (isQuoted ? '"' : ';'); rest.remove_prefix(1)) {
        if (isQuoted && rest[0] == '\\' && rest.size() > 1) rest.remove_prefix(1);
        value += rest[0];
    }
    rest.remove_prefix(std::min(rest.find(';'), rest.size()));
    return isQuoted ? value : std::string(TrimTrailingBlanks(value));
}

// "UTF-8'en'caf%C3%A9.pdf".
std::string DecodeExtendedValue(const std::string& value) {
    const std::size_t charsetEnd = value.find('\'');
    const std::size_t languageEnd =
        charsetEnd == std::string::npos ? charsetEnd : value.find('\'', charsetEnd + 1);
    if (languageEnd == std::string::npos) return {};
    std::string name = DecodePercents(std::string_view(value).substr(languageEnd + 1));
    const std::string charset = ToLowerAscii(std::string_view(value).substr(0, charsetEnd));
    return charset == "utf-8" ? name : DecodeText(name, Windows1252());
}

std::string NameInDisposition(std::string_view field) {
    std::string plain;
    for (;;) {
        const std::size_t end = field.find(';');
        if (end == std::string_view::npos) return plain;
        field.remove_prefix(end + 1);
        SkipBlanks(field);
        const std::size_t keyEnd = std::min(field.find_first_of("=;"), field.size());
        const std::string key = ToLowerAscii(TrimTrailingBlanks(field.substr(0, keyEnd)));
        field.remove_prefix(keyEnd);
        if (!StartsWith(field, "=")) continue;
        field.remove_prefix(1);
        std::string value = TakeValue(field);
        if (key == "filename*")
            if (std::string name = DecodeExtendedValue(value); !name.empty()) return name;
        if (key == "filename") plain = std::move(value);
    }
}

std::string NameInAddress(std::string_view address) {
    const bool isFtp = EqualIgnoringAsciiCase(address.substr(0, 4), "ftp:");
    const std::size_t host = address.find("://");
    if (host != std::string_view::npos) address.remove_prefix(host + 3);
    address = address.substr(0, address.find_first_of(isFtp ? ";" : "?#"));
    const std::size_t slash = address.rfind('/');
    return slash == std::string_view::npos ? std::string() : DecodePercents(address.substr(slash + 1));
}

// Its last part as a name; empty when nothing is left.
std::string CleanName(std::string_view name) {
    if (name.find_first_not_of(". /\\") == std::string_view::npos) return {};
    const std::vector<std::string> parts = CleanEntryName(name);
    if (parts.empty()) return {};
    // A name that begins with a dot is hidden where the user looks for it.
    return StartsWith(parts.back(), ".") ? "_" + parts.back().substr(1) : parts.back();
}

// Whether the extension names the program that made the file on the server.
bool IsScriptExtension(std::string_view extension) {
    constexpr std::array<std::string_view, 7> kScripts = {".php", ".asp", ".aspx", ".cgi",
                                                          ".jsp", ".do",  ".ashx"};
    return std::any_of(kScripts.begin(), kScripts.end(),
                       [&](std::string_view script) { return EqualIgnoringAsciiCase(extension, script); });
}

}  // namespace

std::string NameDownload(const DownloadFacts& facts) {
    std::string name = CleanName(NameInDisposition(facts.disposition));
    if (name.empty()) name = CleanName(NameInAddress(facts.address));
    if (name.empty()) name = "download";
    const std::string_view extension = FileExtension(name);
    if (extension.empty() || IsScriptExtension(extension)) name += ExtensionOf(facts.mediaType);
    return name;
}

}  // namespace quirepress
