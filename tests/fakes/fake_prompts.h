#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "platform/prompts.h"

namespace quirepress {

// Records what it is told; answers questions as scripted, then with the safe answer.
class FakePrompts : public Prompts {
public:
    struct Box {
        std::string title;
        std::string text;
        friend bool operator==(const Box&, const Box&) = default;
    };

    void ShowBox(std::string_view title, std::string_view text) override;
    bool AskYesNo(std::string_view title, std::string_view text, bool safeAnswer) override;
    void ShowStatus(std::string_view text) override;

    void AnswerNext(bool yes) { m_answers.push_back(yes); }
    // Runs inside each box and question, as other work does while one is open.
    void WhileOpen(std::function<void()> action) { m_whileOpen = std::move(action); }

    std::vector<Box> boxes;
    std::vector<Box> questions;
    std::vector<std::string> statusTexts;

private:
    void RunWhileOpen();

    std::deque<bool> m_answers;
    std::function<void()> m_whileOpen;
};

}  // namespace quirepress
