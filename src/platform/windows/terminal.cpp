#include "platform/terminal.h"

#include <windows.h>

#include <algorithm>

#include "platform/windows/make_services.h"
#include "platform/windows/system_text.h"

namespace quirepress {
namespace {

constexpr DWORD kLargestPiece = 16384;  // an old console takes no more at once

bool IsConsole(DWORD stream) {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(stream), &mode) != 0;
}

bool WriteConsoleText(HANDLE console, std::wstring_view text) {
    while (!text.empty()) {
        DWORD written = 0;
        const DWORD size = std::min(kLargestPiece, static_cast<DWORD>(text.size()));
        if (!WriteConsoleW(console, text.data(), size, &written, nullptr) || written == 0) return false;
        text.remove_prefix(written);
    }
    return true;
}

bool WriteBytes(HANDLE stream, std::string_view text) {
    while (!text.empty()) {
        DWORD written = 0;
        const DWORD size = std::min(kLargestPiece, static_cast<DWORD>(text.size()));
        if (!WriteFile(stream, text.data(), size, &written, nullptr) || written == 0) return false;
        text.remove_prefix(written);
    }
    return true;
}

bool WriteStream(DWORD stream, std::string_view text) {
    const HANDLE handle = GetStdHandle(stream);
    return IsConsole(stream) ? WriteConsoleText(handle, Widen(text)) : WriteBytes(handle, text);
}

// Lets a console follow the control sequences that other terminals know; as it was when destroyed.
class ConsoleSequences {
public:
    explicit ConsoleSequences(DWORD stream) : m_console(GetStdHandle(stream)) {
        m_changed = GetConsoleMode(m_console, &m_mode) &&
                    SetConsoleMode(m_console, m_mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
    }
    ~ConsoleSequences() {
        if (m_changed) SetConsoleMode(m_console, m_mode);
    }
    ConsoleSequences(const ConsoleSequences&) = delete;
    ConsoleSequences& operator=(const ConsoleSequences&) = delete;

private:
    HANDLE m_console;
    DWORD m_mode = 0;
    bool m_changed;
};

class WindowsTerminal : public Terminal {
public:
    bool OutputIsTerminal() override { return IsConsole(STD_OUTPUT_HANDLE); }
    bool ErrorsAreTerminal() override { return IsConsole(STD_ERROR_HANDLE); }
    bool InputIsTerminal() override { return IsConsole(STD_INPUT_HANDLE); }

    int Columns() override {
        CONSOLE_SCREEN_BUFFER_INFO screen;
        if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &screen)) return 80;
        return screen.srWindow.Right - screen.srWindow.Left + 1;
    }

    bool WriteOutput(std::string_view text) override { return WriteStream(STD_OUTPUT_HANDLE, text); }
    bool WriteErrors(std::string_view text) override { return WriteStream(STD_ERROR_HANDLE, text); }

    bool ReadLine(std::string& line) override {
        line.clear();
        while (m_read.find('\n') == std::string::npos) {
            if (ReadMore()) continue;
            line.swap(m_read);
            return !line.empty();
        }
        const std::size_t end = m_read.find('\n');
        line = m_read.substr(0, end);
        m_read.erase(0, end + 1);
        if (line.ends_with('\r')) line.pop_back();
        return true;
    }

private:
    // False at the end of the input.
    bool ReadMore() {
        const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
        DWORD size = 0;
        if (IsConsole(STD_INPUT_HANDLE)) {
            wchar_t text[1024];
            if (!ReadConsoleW(input, text, 1024, &size, nullptr)) return false;
            m_read += Narrow({text, size});
            constexpr wchar_t kEndOfInput = L'\x1A';  // Ctrl-Z
            return size > 0 && text[0] != kEndOfInput;
        }
        char bytes[4096];
        if (!ReadFile(input, bytes, sizeof bytes, &size, nullptr) || size == 0) return false;
        m_read.append(bytes, size);
        return true;
    }

    ConsoleSequences m_outputSequences{STD_OUTPUT_HANDLE};
    ConsoleSequences m_errorSequences{STD_ERROR_HANDLE};
    std::string m_read;  // beyond the lines that were taken
};

}  // namespace

std::unique_ptr<Terminal> MakeTerminal() {
    return std::make_unique<WindowsTerminal>();
}

}  // namespace quirepress
