#include "platform/windows/find_program.h"

#include <windows.h>

#include <algorithm>

namespace quirepress {

std::wstring FindProgramFile(const std::wstring& name) {
    std::wstring path(MAX_PATH, L'\0');
    DWORD size = SearchPathW(nullptr, name.c_str(), L".exe", MAX_PATH, path.data(), nullptr);
    if (size >= path.size()) {
        path.resize(size);
        size = SearchPathW(nullptr, name.c_str(), L".exe", size, path.data(), nullptr);
    }
    path.resize(std::min<std::size_t>(size, path.size()));
    return path;
}

}  // namespace quirepress
