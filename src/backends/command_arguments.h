#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quirepress {

// What the placeholders of a command line of print_commands.ini stand for. Paths are absolute.
struct CommandPlaces {
    std::vector<std::string> files;  // %* all, %1 and %u the first
    std::string pdf;                 // %o
    std::string pdfFolder;           // %d
    std::string ownFolder;           // %t, %T
    std::string printer;             // %p
};

// The words with their placeholders filled in. What is put in stays within its word, whatever it holds; a
// word "%*" becomes as many as there are files. A "%" before another character stays.
std::vector<std::string> FillPlaceholders(const std::vector<std::string>& words, const CommandPlaces& places);

}  // namespace quirepress
