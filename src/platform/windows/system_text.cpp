#include "platform/windows/system_text.h"

#include <windows.h>

#include "base/format.h"

namespace quirepress {

std::wstring Widen(std::string_view text) {
    if (text.empty()) return {};
    const int size = static_cast<int>(text.size());
    UINT codePage = CP_UTF8;
    int wideSize = MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, text.data(), size, nullptr, 0);
    if (wideSize == 0) {
        codePage = CP_ACP;
        wideSize = MultiByteToWideChar(codePage, 0, text.data(), size, nullptr, 0);
    }
    std::wstring wide(static_cast<std::size_t>(wideSize), L'\0');
    MultiByteToWideChar(codePage, 0, text.data(), size, wide.data(), wideSize);
    return wide;
}

std::string Narrow(std::wstring_view text) {
    if (text.empty()) return {};
    const int wideSize = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), wideSize, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), wideSize, narrow.data(), size, nullptr, nullptr);
    return narrow;
}

std::string DescribeSystemError(unsigned long error) {
    wchar_t* words = nullptr;
    const DWORD size = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
        error, 0, reinterpret_cast<wchar_t*>(&words), 0, nullptr);
    if (size == 0) return Format("error %lu", error);
    std::string text = Narrow({words, size});
    LocalFree(words);
    text.erase(text.find_last_not_of("\r\n ") + 1);
    return text;
}

}  // namespace quirepress
