#pragma once

#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/prompts.h"

namespace quirepress {

// Records what it is told; answers questions as scripted, then with the safe or usual answer, and
// without a path.
class FakePrompts : public Prompts {
public:
    struct Box {
        std::string title;
        std::string text;
        friend bool operator==(const Box&, const Box&) = default;
    };

    void ShowBox(std::string_view title, std::string_view text) override;
    bool AskYesNo(std::string_view title, std::string_view text, bool safeAnswer) override;
    std::string AskSavePath(std::string_view title, std::string_view filter) override;
    std::string AskText(std::string_view title, std::string_view text, std::string_view usual) override;
    void ShowStatus(std::string_view text) override;

    void AnswerNext(bool yes) { m_answers.push_back(yes); }
    void WriteNext(std::string text) { m_texts.push_back(std::move(text)); }
    void ChooseNext(std::string path) { m_savePaths.push_back(std::move(path)); }
    // Runs inside each box and question, as other work does while one is open.
    void WhileOpen(std::function<void()> action) { m_whileOpen = std::move(action); }

    std::vector<Box> boxes;
    std::vector<Box> questions;
    std::vector<std::string> statusTexts;

private:
    void RunWhileOpen();
    // The next of the test's answers, else the usual one.
    template <typename Answer>
    Answer Ask(std::string_view title, std::string_view text, std::deque<Answer>& answers, Answer usual) {
        questions.push_back({std::string(title), std::string(text)});
        RunWhileOpen();
        if (answers.empty()) return usual;
        usual = std::move(answers.front());
        answers.pop_front();
        return usual;
    }

    std::deque<bool> m_answers;
    std::deque<std::string> m_savePaths;
    std::deque<std::string> m_texts;
    std::function<void()> m_whileOpen;
};

}  // namespace quirepress
