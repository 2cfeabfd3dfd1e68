#include "console/console_prompts.h"

#include "base/credentials.h"
#include "base/text.h"
#include "platform/terminal.h"

namespace quirepress {

namespace {

// A box's text on one line: its line ends become blanks.
std::string OneLine(std::string_view title, std::string_view text) {
    std::string line(title);
    line += ": ";
    line += text;
    for (char& c : line)
        if (c == '\n' || c == '\r') c = ' ';
    return ToPrintableLine(HideCredentials(line));
}

}  // namespace

void ConsolePrompts::ShowBox(std::string_view title, std::string_view text) {
    m_terminal.WriteErrors(OneLine(title, text) + "\n");
}

bool ConsolePrompts::AskYesNo(std::string_view title, std::string_view text, bool safeAnswer) {
    const std::string question = OneLine(title, text);
    if (m_terminal.InputIsTerminal() && m_terminal.ErrorsAreTerminal()) {
        constexpr int kTries = 3;
        for (int i = 0; i < kTries; ++i) {
            std::string line;
            m_terminal.WriteErrors(question + (safeAnswer ? " [Y/n] " : " [y/N] "));
            if (!m_terminal.ReadLine(line)) break;
            if (EqualIgnoringAsciiCase(line, "y") || EqualIgnoringAsciiCase(line, "yes")) return true;
            if (EqualIgnoringAsciiCase(line, "n") || EqualIgnoringAsciiCase(line, "no")) return false;
            if (line.empty()) return safeAnswer;
        }
    }
    m_terminal.WriteErrors(question + (safeAnswer ? " Yes\n" : " No\n"));
    return safeAnswer;
}

std::string ConsolePrompts::AskText(std::string_view title, std::string_view text, std::string_view usual) {
    std::string line;
    m_terminal.WriteErrors(OneLine(title, text) + " [" + ToPrintableLine(usual) + "] ");
    const bool isAnswered =
        m_terminal.InputIsTerminal() && m_terminal.ErrorsAreTerminal() && m_terminal.ReadLine(line);
    if (!isAnswered) m_terminal.WriteErrors(ToPrintableLine(usual) + "\n");
    return line.empty() ? std::string(usual) : line;
}

std::string ConsolePrompts::AskSavePath(std::string_view title, std::string_view filter) {
    std::string line;
    m_terminal.WriteErrors(OneLine(title, std::string(filter) + " ? "));
    if (!m_terminal.InputIsTerminal() || !m_terminal.ErrorsAreTerminal() || !m_terminal.ReadLine(line))
        line.clear();
    if (line.empty()) m_terminal.WriteErrors("\n");
    return line;
}

}  // namespace quirepress
