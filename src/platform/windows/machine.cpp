#include "platform/machine.h"

#include <windows.h>

#include <lmcons.h>

#include "base/format.h"
#include "base/path.h"
#include "platform/windows/make_services.h"
#include "platform/windows/system_text.h"

namespace quirepress {
namespace {

// `call` fills a buffer of the size that it is given and answers how long the text is, or that it does not
// fit.
template <typename Call>
std::string ReadGrowing(Call call) {
    std::wstring text(MAX_PATH, L'\0');
    for (;;) {
        const DWORD size = call(text.data(), static_cast<DWORD>(text.size()));
        if (size < text.size()) return Narrow({text.data(), size});
        text.resize(text.size() * 2);
    }
}

class WindowsMachine : public Machine {
public:
    std::string HostName() override {
        wchar_t name[MAX_PATH];
        DWORD size = MAX_PATH;
        return GetComputerNameExW(ComputerNameDnsHostname, name, &size) ? Narrow({name, size})
                                                                        : std::string();
    }

    std::string LoginName() override {
        wchar_t name[UNLEN + 1];
        DWORD size = UNLEN + 1;
        return GetUserNameW(name, &size) ? Narrow({name, size - 1}) : std::string();
    }

    std::string ProgramPath() override {
        return ReadGrowing([](wchar_t* text, DWORD size) { return GetModuleFileNameW(nullptr, text, size); });
    }

    std::string TemporaryFolder() override {
        return ReadGrowing([](wchar_t* text, DWORD size) { return GetTempPathW(size, text); });
    }

    std::string DataFolder() override { return std::string(FolderOf(ProgramPath())); }

    // What this program is built for does not load on an older one.
    SystemFamily Family() override { return SystemFamily::kWindowsXpOrLater; }

    CodePage SystemCodePage() override {
        CPINFO info = {};
        CodePage page = Windows1252();
        if (!GetCPInfo(CP_ACP, &info) || info.MaxCharSize != 1) return page;
        for (std::size_t i = 0; i < page.highBytes.size(); ++i) {
            const char byte = static_cast<char>(0x80 + i);
            wchar_t wide = 0;
            if (MultiByteToWideChar(CP_ACP, 0, &byte, 1, &wide, 1) == 1) page.highBytes[i] = wide;
        }
        return page;
    }

    std::string SystemVersion() override {
        // The documented call tells a program without a manifest of an older system than there is.
        using GetVersionCall = LONG(WINAPI*)(RTL_OSVERSIONINFOW*);
        const auto getVersion = reinterpret_cast<GetVersionCall>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion")));
        RTL_OSVERSIONINFOW version = {};
        version.dwOSVersionInfoSize = sizeof version;
        if (getVersion == nullptr || getVersion(&version) != 0) return "Windows";
        return Format("Windows %u.%u.%u", version.dwMajorVersion, version.dwMinorVersion,
                      version.dwBuildNumber);
    }

    bool ReadEnvironment(std::string_view name, std::string& value) override {
        const std::wstring wideName = Widen(name);
        SetLastError(ERROR_SUCCESS);
        const std::string found = ReadGrowing([&wideName](wchar_t* text, DWORD size) {
            return GetEnvironmentVariableW(wideName.c_str(), text, size);
        });
        if (found.empty() && GetLastError() != ERROR_SUCCESS) return false;
        value = found;
        return true;
    }
};

}  // namespace

std::unique_ptr<Machine> MakeMachine() {
    return std::make_unique<WindowsMachine>();
}

}  // namespace quirepress
