#include "logs/unattended_prompts.h"

#include <string>

#include "logs/error_log.h"

namespace quirepress {

void UnattendedPrompts::ShowBox(std::string_view title, std::string_view text) {
    ErrorRecord record;
    record.error = std::string(title) + ": " + std::string(text);
    if (m_errorLog.Append(record) != 0) m_fallback.ShowBox(title, text);
}

bool UnattendedPrompts::AskYesNo(std::string_view title, std::string_view text, bool safeAnswer) {
    ShowBox(title, std::string(text) + (safeAnswer ? " Yes" : " No"));
    return safeAnswer;
}

}  // namespace quirepress
