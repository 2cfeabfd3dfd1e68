#include "platform/shell.h"

#include <windows.h>

#include <shlobj.h>

#include <memory>

#include "base/path.h"
#include "base/text.h"
#include "platform/registered_command.h"
#include "platform/windows/find_program.h"
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

// A text of the registry of classes, with its variables filled in; empty when there is none. The name null is
// that of the key's own text.
std::string ReadClassText(const std::string& key, const wchar_t* name) {
    constexpr DWORD kLongestText = 32'768;
    if (key.empty()) return {};
    std::wstring text(kLongestText, L'\0');
    DWORD size = kLongestText * sizeof(wchar_t);
    const LSTATUS result = RegGetValueW(HKEY_CLASSES_ROOT, Widen(key).c_str(), name,
                                        RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ, nullptr, text.data(), &size);
    return result == ERROR_SUCCESS ? Narrow(text.c_str()) : std::string();
}

std::string WindowsFolder() {
    std::wstring folder(MAX_PATH, L'\0');
    const DWORD size = GetEnvironmentVariableW(L"windir", folder.data(), MAX_PATH);
    if (size > 0 && size < MAX_PATH) return Narrow(folder.substr(0, size));
    return GetFileAttributesW(L"c:\\windows") == INVALID_FILE_ATTRIBUTES ? "c:\\winnt" : "c:\\windows";
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

    std::string TypeOfFile(std::string_view path) override {
        return ToLowerAscii(ReadClassText(std::string(FileExtension(path)), L"Content Type"));
    }

    bool FindPrintCommand(std::string_view path, RegisteredCommand& command) override {
        const std::string line = FindPrintLine(
            FileExtension(path), [](const std::string& key) { return ReadClassText(key, nullptr); });
        if (line.empty() || !FillCommandLine(line, path, command.request)) return false;
        command.line = line;
        return true;
    }

    bool FindPhotoCommand(std::string_view path, std::string_view printer,
                          RegisteredCommand& command) override {
        return MakePhotoCommand(WindowsFolder(), path, printer, command);
    }

    std::string FindProgram(std::string_view name) override {
        if (name.empty() || name.find('\0') != std::string_view::npos) return {};
        return Narrow(FindProgramFile(Widen(name)));
    }

    std::vector<std::string> ScriptCommand(std::string_view path) override {
        std::wstring found;
        if (ToSystemPath(path, found) != FileResult::kDone) return {};
        if (!EqualIgnoringAsciiCase(FileExtension(path), ".vbs")) return {FromSystemPath(found)};
        // Without boxes, which nobody would answer.
        return {"cscript.exe", "//B", "//Nologo", FromSystemPath(found)};
    }

private:
    bool m_comIsOurs;
};

}  // namespace

std::unique_ptr<Shell> MakeShell() {
    return std::make_unique<WindowsShell>();
}

}  // namespace quirepress
