#pragma once

#include <string>
#include <string_view>

#include "platform/prompts.h"

namespace quirepress {

class Terminal;

// Boxes become lines "TITLE: TEXT" on standard error; questions are asked on the terminal, or take their
// safe answer, which is printed; a file is asked for by its path. The status line is shown while standard
// error is a terminal.
class ConsolePrompts : public Prompts {
public:
    explicit ConsolePrompts(Terminal& terminal) : m_terminal(terminal) {}

    void ShowBox(std::string_view title, std::string_view text) override;
    bool AskYesNo(std::string_view title, std::string_view text, bool safeAnswer) override;
    std::string AskText(std::string_view title, std::string_view text, std::string_view usual) override;
    std::string AskSavePath(std::string_view title, std::string_view filter) override;
    void ShowStatus(std::string_view /*text*/) override {}

private:
    Terminal& m_terminal;
};

}  // namespace quirepress
