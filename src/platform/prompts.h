#pragma once

#include <string_view>

namespace quirepress {

// What the program says to its user and asks of him.
class Prompts {
public:
    virtual ~Prompts() = default;
    // A box with an OK button. May pump.
    virtual void ShowBox(std::string_view title, std::string_view text) = 0;
    // A Yes/No box; where nobody can answer, `safeAnswer`. May pump.
    virtual bool AskYesNo(std::string_view title, std::string_view text, bool safeAnswer) = 0;
    // The status line; replaces what it showed.
    virtual void ShowStatus(std::string_view text) = 0;
};

}  // namespace quirepress
