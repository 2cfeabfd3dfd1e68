#include "platform/program_arguments.h"

#include <windows.h>

#include <shellapi.h>

#include "platform/windows/system_text.h"

namespace quirepress {

// The arguments of main() have lost what the system's code page does not hold.
std::vector<std::string> ReadProgramArguments(int /*argumentCount*/, char** /*arguments*/) {
    std::vector<std::string> words;
    int count = 0;
    LPWSTR* wideWords = CommandLineToArgvW(GetCommandLineW(), &count);
    if (wideWords == nullptr) return words;
    for (int i = 1; i < count; ++i) words.push_back(Narrow(wideWords[i]));
    LocalFree(wideWords);
    return words;
}

}  // namespace quirepress
