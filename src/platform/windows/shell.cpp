#include "platform/shell.h"

#include <windows.h>

#include <shlobj.h>

#include <memory>

#include "base/path.h"
#include "base/text.h"
#include "platform/windows/make_services.h"
#include "platform/windows/system_path.h"
#include "platform/windows/system_text.h"

namespace quirepress {
namespace {

struct Releaser {
    void operator()(IUnknown* object) const { object->Release(); }
};
template <typename Interface>
using ComPointer = std::unique_ptr<Interface, Releaser>;

ComPointer<IShellLinkW> OpenLink(const std::wstring& path) {
    void* made = nullptr;
    if (FAILED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW, &made)))
        return nullptr;
    ComPointer<IShellLinkW> link(static_cast<IShellLinkW*>(made));
    void* asFile = nullptr;
    if (FAILED(link->QueryInterface(IID_IPersistFile, &asFile))) return nullptr;
    const ComPointer<IPersistFile> file(static_cast<IPersistFile*>(asFile));
    return SUCCEEDED(file->Load(path.c_str(), STGM_READ)) ? std::move(link) : nullptr;
}

class WindowsShell : public Shell {
public:
    WindowsShell() : m_comIsOurs(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {}
    ~WindowsShell() override {
        if (m_comIsOurs) CoUninitialize();
    }
    WindowsShell(const WindowsShell&) = delete;
    WindowsShell& operator=(const WindowsShell&) = delete;

    std::string ResolveShortcut(std::string_view path) override {
        std::wstring file;
        if (!IsShortcut(path) || ToSystemPath(path, file) != FileResult::kDone) return {};
        const ComPointer<IShellLinkW> link = OpenLink(Widen(FromSystemPath(file)));
        if (!link) return {};
        // What has moved is looked up where the link's own notes say, without a question and without a search
        // of the disk; the link stays as it is.
        link->Resolve(nullptr, SLR_NO_UI | SLR_NOSEARCH | SLR_NOUPDATE);
        constexpr int kLongestPath = 32768;
        std::wstring target(kLongestPath, L'\0');
        if (link->GetPath(target.data(), kLongestPath, nullptr, 0) != S_OK) return {};
        target.resize(target.find(L'\0'));
        // The calls above succeed for a link whose target is gone.
        std::wstring found;
        if (ToSystemPath(Narrow(target), found) != FileResult::kDone) return {};
        return GetFileAttributesW(found.c_str()) == INVALID_FILE_ATTRIBUTES ? std::string() : Narrow(target);
    }

    bool IsShortcut(std::string_view path) override {
        return EqualIgnoringAsciiCase(FileExtension(path), ".lnk");
    }

private:
    bool m_comIsOurs;
};

}  // namespace

std::unique_ptr<Shell> MakeShell() {
    return std::make_unique<WindowsShell>();
}

}  // namespace quirepress
