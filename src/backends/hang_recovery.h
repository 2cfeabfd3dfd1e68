#pragma once

#include <string_view>

namespace quirepress {

class HangLog;
struct GeneralOptions;

// An add-on that watches the word processor while it prints.
class HangWatch {
public:
    static constexpr int kHung = 999;

    virtual ~HangWatch() = default;
    // kHung when it hung on the document at work and was ended; any other number: it did not.
    virtual int CheckForHang() = 0;
};

struct HangDecision {
    bool hung = false;
    bool tryAgain = false;  // the first time for this file: it is to be printed once more
};

// Asks the hang watch (null: there is none) about a file of the word processor and records a hang.
HangDecision CheckForHang(HangWatch* watch, HangLog& log, const GeneralOptions& options,
                          std::string_view path);

}  // namespace quirepress
