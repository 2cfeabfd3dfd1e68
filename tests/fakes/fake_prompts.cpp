#include "fakes/fake_prompts.h"

namespace quirepress {

void FakePrompts::ShowBox(std::string_view title, std::string_view text) {
    boxes.push_back({std::string(title), std::string(text)});
    RunWhileOpen();
}

bool FakePrompts::AskYesNo(std::string_view title, std::string_view text, bool safeAnswer) {
    questions.push_back({std::string(title), std::string(text)});
    RunWhileOpen();
    if (m_answers.empty()) return safeAnswer;
    const bool answer = m_answers.front();
    m_answers.pop_front();
    return answer;
}

std::string FakePrompts::AskSavePath(std::string_view title, std::string_view filter) {
    questions.push_back({std::string(title), std::string(filter)});
    RunWhileOpen();
    if (m_savePaths.empty()) return {};
    std::string path = std::move(m_savePaths.front());
    m_savePaths.pop_front();
    return path;
}

std::string FakePrompts::AskText(std::string_view title, std::string_view text, std::string_view usual) {
    questions.push_back({std::string(title), std::string(text)});
    RunWhileOpen();
    if (m_texts.empty()) return std::string(usual);
    std::string answer = std::move(m_texts.front());
    m_texts.pop_front();
    return answer;
}

void FakePrompts::ShowStatus(std::string_view text) {
    statusTexts.emplace_back(text);
}

void FakePrompts::RunWhileOpen() {
    if (m_whileOpen) m_whileOpen();
}

}  // namespace quirepress
