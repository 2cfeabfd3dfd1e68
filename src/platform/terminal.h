#pragma once

#include <string>
#include <string_view>

namespace quirepress {

// The standard streams of a console program.
class Terminal {
public:
    virtual ~Terminal() = default;
    virtual bool OutputIsTerminal() = 0;
    virtual bool ErrorsAreTerminal() = 0;
    virtual bool InputIsTerminal() = 0;
    virtual int Columns() = 0;  // of the terminal behind standard error; 80 when unknown
    // Whole writes of UTF-8 bytes; false when the stream is closed or full.
    virtual bool WriteOutput(std::string_view text) = 0;
    virtual bool WriteErrors(std::string_view text) = 0;
    // One line without its line end; false at the end of the input. Waits.
    virtual bool ReadLine(std::string& line) = 0;
};

}  // namespace quirepress
