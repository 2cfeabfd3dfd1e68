#pragma once

#include "platform/prompts.h"

namespace quirepress {

class ErrorLog;

// Where nobody is: messages go to the error log, and every question takes its safe answer.
class UnattendedPrompts : public Prompts {
public:
    explicit UnattendedPrompts(ErrorLog& errorLog) : m_errorLog(errorLog) {}

    void ShowBox(std::string_view title, std::string_view text) override;
    bool AskYesNo(std::string_view title, std::string_view text, bool safeAnswer) override;
    void ShowStatus(std::string_view /*text*/) override {}

private:
    ErrorLog& m_errorLog;
};

}  // namespace quirepress
