#include "fakes/fake_prompts.h"

namespace quirepress {

void FakePrompts::ShowBox(std::string_view title, std::string_view text) {
    boxes.push_back({std::string(title), std::string(text)});
    RunWhileOpen();
}

bool FakePrompts::AskYesNo(std::string_view title, std::string_view text, bool safeAnswer) {
    return Ask(title, text, m_answers, safeAnswer);
}

std::string FakePrompts::AskSavePath(std::string_view title, std::string_view filter) {
    return Ask(title, filter, m_savePaths, std::string());
}

std::string FakePrompts::AskText(std::string_view title, std::string_view text, std::string_view usual) {
    return Ask(title, text, m_texts, std::string(usual));
}

void FakePrompts::ShowStatus(std::string_view text) {
    statusTexts.emplace_back(text);
}

void FakePrompts::RunWhileOpen() {
    if (m_whileOpen) m_whileOpen();
}

}  // namespace quirepress
