#include "backends/command_arguments.h"

#include "base/command_words.h"

namespace quirepress {

namespace {

// False for a character that names no place.
bool AppendPlace(char place, const CommandPlaces& places, std::string& word) {
    const std::string file = places.files.empty() ? std::string() : places.files.front();
    switch (place) {
        case '1':
            word += file;
            return true;
        case 'u':
            word += FileAddress(file);
            return true;
        case 'o':
            word += places.pdf;
            return true;
        case 'd':
            word += places.pdfFolder;
            return true;
        case 't':
            word += places.ownFolder;
            return true;
        case 'T':
            word += FileAddress(places.ownFolder);
            return true;
        case 'p':
            word += places.printer;
            return true;
        case '%':
            word += '%';
            return true;
        default:
            return false;
    }
}

}  // namespace

std::vector<std::string> FillPlaceholders(const std::vector<std::string>& words,
                                          const CommandPlaces& places) {
    std::vector<std::string> filled;
    for (const std::string& word : words) {
        if (word == "%*") {
            filled.insert(filled.end(), places.files.begin(), places.files.end());
            continue;
        }
        std::string& text = filled.emplace_back();
        for (std::size_t i = 0; i < word.size(); ++i) {
            const bool isPlace = word[i] == '%' && i + 1 < word.size();
            if (isPlace && AppendPlace(word[i + 1], places, text))
                ++i;
            else
                text += word[i];
        }
    }
    return filled;
}

}  // namespace quirepress
