#include "platform/libraries.h"

#include <windows.h>

#include "base/path.h"
#include "platform/windows/make_services.h"
#include "platform/windows/system_path.h"
#include "platform/windows/system_text.h"

namespace quirepress {
namespace {

class WindowsLibrary : public Library {
public:
    explicit WindowsLibrary(HMODULE module) : m_module(module) {}
    ~WindowsLibrary() override { FreeLibrary(m_module); }
    WindowsLibrary(const WindowsLibrary&) = delete;
    WindowsLibrary& operator=(const WindowsLibrary&) = delete;

    void* FindSymbol(const std::string& name) override {
        return reinterpret_cast<void*>(GetProcAddress(m_module, name.c_str()));
    }

private:
    HMODULE m_module;
};

class WindowsLibraries : public Libraries {
public:
    std::unique_ptr<Library> Load(std::string_view path, std::string& error) override {
        std::wstring file;
        // A library with a path brings what it needs along in its own folder; a bare name is never looked
        // for in the current folder, where anybody may have put one.
        DWORD flags = LOAD_LIBRARY_SEARCH_DEFAULT_DIRS;
        if (FolderOf(path).empty() && !path.empty()) {
            file = Widen(path);
        } else {
            const FileResult result = ToSystemPath(path, file);
            if (result != FileResult::kDone) {
                error = DescribeFileResult(result);
                return nullptr;
            }
            file = Widen(FromSystemPath(file));
            flags |= LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR;
        }
        const HMODULE module = LoadLibraryExW(file.c_str(), nullptr, flags);
        if (module == nullptr) {
            error = DescribeSystemError(GetLastError());
            return nullptr;
        }
        return std::make_unique<WindowsLibrary>(module);
    }
};

}  // namespace

std::unique_ptr<Libraries> MakeLibraries() {
    return std::make_unique<WindowsLibraries>();
}

}  // namespace quirepress
