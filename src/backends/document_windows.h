#pragma once

#include <string_view>

namespace quirepress {

// What the windows of other programs tell about a document that one of them is to print.
class DocumentWindows {
public:
    virtual ~DocumentWindows() = default;
    // Whether a window of the PDF viewer still shows the file.
    virtual bool ViewerShows(std::string_view path) = 0;
    enum class WordAnswer {
        kNotSpooling,
        kSpooling,
        kNoProgram,  // the word processor could not be asked
        kNoDocument  // it could not be asked about its open document
    };
    // Whether the word processor still spools the document that it has open.
    virtual WordAnswer AskWordProcessor(std::string_view path) = 0;
};

}  // namespace quirepress
