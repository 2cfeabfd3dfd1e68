#include "platform/app_windows.h"

#include <windows.h>

#include <array>
#include <cstdlib>

#include "base/format.h"
#include "base/path.h"
#include "platform/window_worker.h"
#include "platform/windows/system_handle.h"
#include "platform/windows/system_text.h"

namespace quirepress {

namespace {

constexpr UINT kMessageMilliseconds = 300;  // for a window to take a message
constexpr ULONGLONG kLongestLook = 1'500;
constexpr int kLongestText = 1'024;

std::string IdOf(HWND window) {
    return Format("%llX", reinterpret_cast<std::uintptr_t>(window));
}

// Null when the window is gone.
HWND WindowOf(const std::string& id) {
    constexpr int kHexadecimal = 16;
    const auto window = reinterpret_cast<HWND>(std::strtoull(id.c_str(), nullptr, kHexadecimal));
    return IsWindow(window) != FALSE ? window : nullptr;
}

bool Send(HWND window, UINT message, WPARAM first, LPARAM second, DWORD_PTR& answer) {
    return SendMessageTimeoutW(window, message, first, second, SMTO_ABORTIFHUNG | SMTO_BLOCK,
                               kMessageMilliseconds, &answer) != 0;
}

// What the system itself keeps of it: nobody is asked.
std::string TitleOf(HWND window) {
    std::array<wchar_t, kLongestText> text = {};
    const int size = InternalGetWindowText(window, text.data(), kLongestText);
    return Narrow({text.data(), static_cast<std::size_t>(size)});
}

std::string TextOf(HWND control) {
    std::array<wchar_t, kLongestText> text = {};
    DWORD_PTR size = 0;
    if (!Send(control, WM_GETTEXT, kLongestText, reinterpret_cast<LPARAM>(text.data()), size)) return {};
    return Narrow({text.data(), size});
}

std::wstring ClassOf(HWND window) {
    constexpr int kLongestClass = 257;
    std::array<wchar_t, kLongestClass> name = {};
    const int size = GetClassNameW(window, name.data(), kLongestClass);
    return {name.data(), static_cast<std::size_t>(size)};
}

std::string ProgramOf(DWORD processId) {
    const SystemHandle process = TakeHandle(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId));
    std::array<wchar_t, MAX_PATH* 4> path = {};
    auto size = static_cast<DWORD>(path.size());
    if (!process || QueryFullProcessImageNameW(process.get(), 0, path.data(), &size) == FALSE) return {};
    return std::string(FileTitle(Narrow({path.data(), size})));
}

bool IsDialog(HWND window) {
    if (ClassOf(window) == L"#32770") return true;
    const HWND owner = GetWindow(window, GW_OWNER);
    return owner != nullptr && IsWindowEnabled(owner) == FALSE;
}

bool IsShown(HWND window) {
    return IsWindowVisible(window) != FALSE && IsHungAppWindow(window) == FALSE;
}

BOOL CALLBACK AddWindow(HWND handle, LPARAM list) {
    DWORD processId = 0;
    GetWindowThreadProcessId(handle, &processId);
    if (!IsShown(handle) || processId == GetCurrentProcessId()) return TRUE;
    AppWindow window;
    window.title = TitleOf(handle);
    window.isDialog = IsDialog(handle);
    if (window.title.empty() && !window.isDialog) return TRUE;
    window.id = IdOf(handle);
    window.processId = processId;
    window.program = ProgramOf(processId);
    reinterpret_cast<std::vector<AppWindow>*>(list)->push_back(std::move(window));
    return TRUE;
}

ControlRole RoleOf(HWND control) {
    const std::wstring name = ClassOf(control);
    const LONG_PTR style = GetWindowLongPtrW(control, GWL_STYLE);
    if (name == L"Edit") {
        if ((style & ES_PASSWORD) != 0) return ControlRole::kPasswordField;
        return (style & ES_READONLY) != 0 ? ControlRole::kLabel : ControlRole::kTextField;
    }
    if (name == L"Static") return ControlRole::kLabel;
    const LONG_PTR kind = style & BS_TYPEMASK;
    const bool isPush = name == L"Button" && (kind == BS_PUSHBUTTON || kind == BS_DEFPUSHBUTTON);
    return isPush ? ControlRole::kButton : ControlRole::kOther;
}

struct ControlLook {
    std::vector<AppControl> controls;
    int defaultNumber = 0;
    ULONGLONG deadline = 0;
};

BOOL CALLBACK AddControl(HWND handle, LPARAM look) {
    auto& result = *reinterpret_cast<ControlLook*>(look);
    if (IsWindowVisible(handle) == FALSE || IsWindowEnabled(handle) == FALSE) return TRUE;
    AppControl control;
    control.id = IdOf(handle);
    control.role = RoleOf(handle);
    control.number = GetDlgCtrlID(handle);
    if (control.role == ControlRole::kButton || control.role == ControlRole::kLabel)
        control.name = WithoutMnemonic(TextOf(handle));
    control.isDefault =
        control.role == ControlRole::kButton && control.number != 0 && control.number == result.defaultNumber;
    result.controls.push_back(std::move(control));
    return GetTickCount64() < result.deadline ? TRUE : FALSE;
}

class WindowsAppWindows : public AppWindows {
public:
    std::vector<AppWindow> ListWindows() override {
        std::vector<AppWindow> windows;
        EnumWindows(AddWindow, reinterpret_cast<LPARAM>(&windows));
        return windows;
    }

    std::vector<AppControl> ListControls(const AppWindow& window) override {
        const HWND handle = WindowOf(window.id);
        DWORD_PTR button = 0;
        // The system notices after seconds only that a program hangs.
        if (handle == nullptr || !IsShown(handle) || !Send(handle, WM_NULL, 0, 0, button)) return {};
        ControlLook look;
        look.deadline = GetTickCount64() + kLongestLook;
        if (ClassOf(handle) == L"#32770" && Send(handle, DM_GETDEFID, 0, 0, button) &&
            HIWORD(button) == DC_HASDEFID)
            look.defaultNumber = LOWORD(button);
        EnumChildWindows(handle, AddControl, reinterpret_cast<LPARAM>(&look));
        return std::move(look.controls);
    }

    bool SetText(const AppWindow&, const AppControl& field, std::string_view text) override {
        const HWND handle = WindowOf(field.id);
        DWORD_PTR isSet = FALSE;
        const std::wstring wide = Widen(text);
        return handle != nullptr &&
               Send(handle, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(wide.c_str()), isSet) && isSet == TRUE;
    }

    // A button takes a click only while its window is the one that the user works in; what it would tell
    // its window of the click can always be told.
    bool Press(const AppWindow&, const AppControl& button) override {
        const HWND handle = WindowOf(button.id);
        if (handle == nullptr) return false;
        const int number = GetDlgCtrlID(handle);
        if (number == 0) return PostMessageW(handle, BM_CLICK, 0, 0) != FALSE;
        return PostMessageW(GetParent(handle), WM_COMMAND, MAKEWPARAM(number, BN_CLICKED),
                            reinterpret_cast<LPARAM>(handle)) != FALSE;
    }

    // To the control that has the keyboard in that window.
    bool SendReturn(const AppWindow& window) override {
        const HWND handle = WindowOf(window.id);
        if (handle == nullptr) return false;
        GUITHREADINFO thread = {};
        thread.cbSize = sizeof thread;
        GetGUIThreadInfo(GetWindowThreadProcessId(handle, nullptr), &thread);
        const bool isInside =
            thread.hwndFocus != nullptr && (thread.hwndFocus == handle || IsChild(handle, thread.hwndFocus));
        const HWND target = isInside ? thread.hwndFocus : handle;
        return PostMessageW(target, WM_KEYDOWN, VK_RETURN, 1) != FALSE &&
               PostMessageW(target, WM_KEYUP, VK_RETURN, 1) != FALSE;
    }

    bool Close(const AppWindow& window) override {
        const HWND handle = WindowOf(window.id);
        return handle != nullptr && PostMessageW(handle, WM_CLOSE, 0, 0) != FALSE;
    }

    std::vector<std::pair<std::string, std::string>> ProgramEnvironment() override { return {}; }
};

}  // namespace

std::unique_ptr<AppWindows> MakeAppWindows(Processes&, EventLoop&, Machine&) {
    return MakeDesktopWindows();
}

std::unique_ptr<AppWindows> MakeDesktopWindows() {
    return std::make_unique<WindowsAppWindows>();
}

}  // namespace quirepress
