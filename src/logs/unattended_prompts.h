#pragma once

#include "platform/prompts.h"

namespace quirepress {

class ErrorLog;

// Where nobody is: messages go to the error log (where it can't be written, to `fallback`), and every
// question takes its safe answer.
class UnattendedPrompts : public Prompts {
public:
    UnattendedPrompts(ErrorLog& errorLog, Prompts& fallback) : m_errorLog(errorLog), m_fallback(fallback) {}

    void ShowBox(std::string_view title, std::string_view text) override;
    bool AskYesNo(std::string_view title, std::string_view text, bool safeAnswer) override;
    void ShowStatus(std::string_view /*text*/) override {}

private:
    ErrorLog& m_errorLog;
    Prompts& m_fallback;  // of it, boxes alone
};

}  // namespace quirepress
