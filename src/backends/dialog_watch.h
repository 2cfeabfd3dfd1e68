#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "backends/dialog_rules.h"

namespace quirepress {

class ChildProcess;

// Answers dialogs for as long as it lives, while a program prints a document, and sees when the program waits
// in one that nothing is known of. It works in the pump, by the timer 4.
class DialogWatch {
public:
    // A dialog in which nothing changes for so long is one that the program waits in.
    static constexpr int kStuckMilliseconds = 10'000;

    // `process` outlives it.
    DialogWatch(DialogRules& rules, std::string_view document, ChildProcess& process,
                int stuckMilliseconds = kStuckMilliseconds);
    ~DialogWatch();
    DialogWatch(const DialogWatch&) = delete;
    DialogWatch& operator=(const DialogWatch&) = delete;

    // Why the program will not print the document, as a part of a sentence; empty: nothing is known of that.
    const std::string& Flaw() const { return m_flaw.empty() ? m_rules.Flaw() : m_flaw; }
    // The titles of the program's dialogs that are open and not answered, for a message: "\"A\", \"B\"".
    std::string DescribeOpenDialogs() const;

    static constexpr int kTimer = 4;
    static constexpr int kMilliseconds = 200;

private:
    struct Dialog {
        std::string title;
        std::string content;
        long long changed = 0;
        long long looked = 0;
    };
    void Check();
    void Follow(const std::vector<AppWindow>& waiting);
    void LookInto(const AppWindow& window, Dialog& dialog);

    DialogRules& m_rules;
    ChildProcess& m_process;
    bool m_isWebPage;
    int m_stuckMilliseconds;
    std::map<std::string, Dialog> m_dialogs;  // of the program, by the window's id
    std::string m_flaw;
};

}  // namespace quirepress
