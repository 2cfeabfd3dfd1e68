#include "documents/form_place.h"

#include <algorithm>
#include <cctype>

#include "base/path.h"
#include "base/text.h"
#include "platform/files.h"

namespace quirepress {

namespace {

constexpr std::string_view kFileAddress = "file://";

// "http:", "mailto:"; a single letter is a drive.
bool IsAddress(std::string_view name) {
    const std::size_t colon = name.find(':');
    if (colon == std::string_view::npos || colon < 2) return false;
    return std::all_of(name.begin(), name.begin() + static_cast<std::ptrdiff_t>(colon), [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '+' || c == '-' || c == '.';
    });
}

int HexDigit(char c) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    const std::size_t value = kDigits.find(ToLowerAscii(std::string_view(&c, 1)));
    return value == std::string_view::npos ? -1 : static_cast<int>(value);
}

std::string DecodePercents(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isCoded =
            text[i] == '%' && i + 2 < text.size() && HexDigit(text[i + 1]) >= 0 && HexDigit(text[i + 2]) >= 0;
        decoded += isCoded ? static_cast<char>(HexDigit(text[i + 1]) * 16 + HexDigit(text[i + 2])) : text[i];
        if (isCoded) i += 2;
    }
    return decoded;
}

// What "file:///C:/forms/a.pdf" names.
std::string PathOfFileAddress(std::string_view address) {
    std::string path = DecodePercents(address.substr(kFileAddress.size()));
    if (path.size() > 2 && path[2] == ':' && IsSeparator('\\')) path.erase(0, 1);
    return path;
}

}  // namespace

bool FindForm(Files& files, std::string_view dataPath, const std::string& name, std::string& path,
              std::string& flaw) {
    const std::string shown = "\"" + ToPrintableLine(name) + "\"";
    flaw.clear();
    if (name.empty()) flaw = "the forms data name no form";
    const bool isFile = StartsWith(ToLowerAscii(name), kFileAddress);
    const std::string plain = isFile ? PathOfFileAddress(name) : name;
    const bool isFarAway =
        plain.size() > 1 && (plain[0] == '/' || plain[0] == '\\') && (plain[1] == '/' || plain[1] == '\\');
    if ((IsAddress(plain) && !isFile) || isFarAway || (isFile && !IsAbsolutePath(plain)))
        flaw = "the form is named by an address, and forms are not fetched: " + shown;
    if (!flaw.empty()) return false;
    for (const std::string& tried : {plain, DecodePercents(plain)}) {
        const std::string local = ToPlatformSeparators(tried);
        path = IsAbsolutePath(local) ? local : JoinPath(FolderOf(dataPath), local);
        if (files.Inspect(path).kind == FileKind::kRegular) return true;
    }
    flaw = "the form is missing: " + shown;
    return false;
}

}  // namespace quirepress
