#pragma once

#include <string>

namespace quirepress {

// Why a call to the server failed. A number of 0x400 and above is the server's own IPP status.
struct CupsFailure {
    enum Number {
        kNone = 0,
        kAway = 1,            // nobody takes the connection
        kBroke = 2,           // the connection ended before the answer
        kNoAnswer = 3,        // in time
        kUnreadable = 4,      // the answer is none of a print server
        kPassword = 5,        // the server asks for one; nobody is ever asked
        kBadName = 6,         // no printer can have this name
        kNoTray = 7,          // the printer has no such tray
        kBadPages = 8,        // page ranges that cannot be read
        kUnreadableFile = 9,  // the document's file
    };
    int number = kNone;
    std::string text;  // a sentence part: "no such printer"
};

}  // namespace quirepress
