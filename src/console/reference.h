#pragma once

#include <string>

namespace CLI {
class App;
}

namespace quirepress {

// The reference of a program from its definitions, so that help, man page and completions never differ:
// `form` is "man" (troff), "bash", "zsh" or "fish" (completion scripts).
std::string RenderReference(const CLI::App& program, const std::string& form);

}  // namespace quirepress
