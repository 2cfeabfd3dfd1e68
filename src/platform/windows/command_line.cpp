#include "platform/windows/command_line.h"

namespace quirepress {
namespace {

// Backslashes count only before a quotation mark: there each is doubled.
void AppendQuoted(std::wstring& line, const std::wstring& word) {
    line += L'"';
    std::size_t backslashes = 0;
    for (const wchar_t c : word) {
        if (c == L'"') line.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        line += c;
    }
    line.append(backslashes, L'\\');
    line += L'"';
}

}  // namespace

std::wstring MakeCommandLine(const std::vector<std::wstring>& arguments) {
    std::wstring line;
    for (const std::wstring& word : arguments) {
        if (!line.empty()) line += L' ';
        if (word.empty() || word.find_first_of(L" \t\n\v\"") != std::wstring::npos) {
            AppendQuoted(line, word);
        } else {
            line += word;
        }
    }
    return line;
}

bool MakeBatchCommandLine(const std::vector<std::wstring>& arguments, std::wstring& line) {
    // No delayed expansion, so "!" is nothing special; the outermost pair of marks is taken off by "/s".
    line = L"cmd.exe /e:on /v:off /d /s /c \"";
    for (const std::wstring& word : arguments) {
        if (word.find_first_of(L"\"\r\n") != std::wstring::npos) return false;
        line += L'"';
        for (const wchar_t c : word) {
            // Variables are put in even between quotation marks. One of no characters breaks the name up.
            if (c == L'%') line += L"%%cd:~,";
            line += c;
        }
        line += L"\" ";
    }
    line.back() = L'"';
    return true;
}

}  // namespace quirepress
