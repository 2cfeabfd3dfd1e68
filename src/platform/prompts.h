#pragma once

#include <string>
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
    // The file that the user wants something written to, such as "*.csv"; empty when there shall be none, as
    // where nobody can answer. May pump.
    virtual std::string AskSavePath(std::string_view /*title*/, std::string_view /*filter*/) { return {}; }
    // A line of text, `usual` being the one to begin with, which is also the answer where nobody can give
    // another. May pump.
    virtual std::string AskText(std::string_view /*title*/, std::string_view /*text*/,
                                std::string_view usual) {
        return std::string(usual);
    }
    // The status line; replaces what it showed.
    virtual void ShowStatus(std::string_view text) = 0;
};

}  // namespace quirepress
