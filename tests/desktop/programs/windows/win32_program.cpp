// A program with one window, for tests of what looks at other programs' windows. Says on standard output what
// became of it. Arguments: KIND TITLE. The kind "chooser" is the system's own dialog for a name.
#include "win32_program.h"

#include <windows.h>

#include <commdlg.h>
#include <shellapi.h>

#include <array>
#include <cstdio>
#include <string>

namespace {

constexpr const wchar_t* kFreezeMessage = L"Quirepress test: freeze";

std::wstring g_title;
std::wstring g_text;

void Say(const std::string& word, const std::wstring& text) {
    std::array<char, 4'096> narrow = {};
    WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, narrow.data(), static_cast<int>(narrow.size()), nullptr,
                        nullptr);
    std::printf("%s%s\n", word.c_str(), narrow.data());
    std::fflush(stdout);
}

void FreezeWhenAsked(UINT message) {
    static const UINT freeze = RegisterWindowMessageW(kFreezeMessage);
    if (message == freeze) Sleep(60'000);
}

void TakeText(HWND dialog) {
    std::array<wchar_t, 2'048> text = {};
    for (const int control : {CONTROL_NAME, CONTROL_PASSWORD})
        if (GetDlgItemTextW(dialog, control, text.data(), static_cast<int>(text.size())) != 0)
            g_text = text.data();
}

INT_PTR CALLBACK HandleDialog(HWND dialog, UINT message, WPARAM first, LPARAM) {
    FreezeWhenAsked(message);
    if (message == WM_INITDIALOG) {
        SetWindowTextW(dialog, g_title.c_str());
        std::array<wchar_t, 8> caption = {};
        GetDlgItemTextW(dialog, IDOK, caption.data(), static_cast<int>(caption.size()));
        if (caption[0] == L'-') SetDlgItemTextW(dialog, IDOK, (L"&" + g_title).c_str());
        return TRUE;
    }
    if (message != WM_COMMAND || (LOWORD(first) != IDOK && LOWORD(first) != IDCANCEL)) return FALSE;
    TakeText(dialog);
    EndDialog(dialog, LOWORD(first));
    return TRUE;
}

void ShowDialog(int dialog, const std::string& accepted) {
    const INT_PTR end = DialogBoxParamW(nullptr, MAKEINTRESOURCEW(dialog), nullptr, HandleDialog, 0);
    if (end == IDOK)
        Say(accepted, g_text);
    else
        Say("cancelled", L"");
}

void ShowChooser() {
    std::array<wchar_t, 2'048> path = {};
    OPENFILENAMEW chooser = {};
    chooser.lStructSize = sizeof chooser;
    chooser.lpstrFile = path.data();
    chooser.nMaxFile = static_cast<DWORD>(path.size());
    chooser.lpstrTitle = g_title.c_str();
    chooser.Flags = OFN_EXPLORER;
    if (GetSaveFileNameW(&chooser) != FALSE)
        Say("saved ", path.data());
    else
        Say("cancelled", L"");
}

LRESULT CALLBACK HandleMain(HWND window, UINT message, WPARAM first, LPARAM second) {
    FreezeWhenAsked(message);
    if (message == WM_DESTROY) PostQuitMessage(0);
    return DefWindowProcW(window, message, first, second);
}

void ShowMain() {
    WNDCLASSW kind = {};
    kind.lpszClassName = L"QuirepressTestWindow";
    kind.lpfnWndProc = HandleMain;
    RegisterClassW(&kind);
    CreateWindowW(kind.lpszClassName, g_title.c_str(), WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 300, 200,
                  nullptr, nullptr, nullptr, nullptr);
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
    Say("closed", L"");
}

}  // namespace

int main() {
    int count = 0;
    LPWSTR* const words = CommandLineToArgvW(GetCommandLineW(), &count);
    if (count < 3) return 2;
    const std::wstring kind = words[1];
    g_title = words[2];
    if (kind == L"print") ShowDialog(DIALOG_PRINT, "printed");
    if (kind == L"save") ShowDialog(DIALOG_SAVE, "saved ");
    if (kind == L"password") ShowDialog(DIALOG_PASSWORD, "given ");
    if (kind == L"message") ShowDialog(DIALOG_MESSAGE, "ok");
    if (kind == L"chooser") ShowChooser();
    if (kind == L"main") ShowMain();
    return 0;
}
