#include "fakes/fake_lpd_server.h"

#include <algorithm>

#include "base/numbers.h"

namespace quirepress {

void FakeLpdServer::Begin() {
    m_input.clear();
    m_step = Step::kQueue;
    m_isWrong = false;
    m_job = {};
}

std::string FakeLpdServer::Take(std::string_view bytes) {
    std::string replies;
    for (const char c : bytes) {
        m_input += c;
        if (m_step == Step::kData && m_input.size() <= m_size) ++dataBytes;
        const Step step = m_step;
        if (!m_isWrong && DoStep())
            replies += answers.contains(step) ? answers[step] : std::string(1, '\0');
        else if (m_isWrong)
            return replies + "\x7F";
    }
    return replies;
}

bool FakeLpdServer::TakeLine(char command, std::string& operand) {
    if (m_input.back() != '\n') return false;
    m_isWrong = m_input.size() < 3 || m_input[0] != command;
    operand = m_input.substr(1, m_input.size() - 2);
    m_input.clear();
    return !m_isWrong;
}

bool FakeLpdServer::TakeFileCommand(char command, std::string& name) {
    std::string operand;
    if (!TakeLine(command, operand)) return false;
    const std::size_t blank = std::min(operand.find(' '), operand.size());
    const auto size = ParseWholeNumber(std::string_view(operand).substr(0, blank), 1, 1 << 30);
    name = operand.substr(std::min(blank + 1, operand.size()));
    m_isWrong = !size || name.size() < 6 || name.find_first_of(" /") != std::string::npos;
    m_size = static_cast<std::size_t>(size.value_or(0));
    return !m_isWrong;
}

bool FakeLpdServer::TakeFile(std::string& content) {
    if (m_input.size() <= m_size) return false;
    m_isWrong = m_input.back() != '\0';
    content = m_input.substr(0, m_size);
    m_input.clear();
    return !m_isWrong;
}

// True when it is done, and is to be answered.
bool FakeLpdServer::DoStep() {
    bool isDone = false;
    if (m_step == Step::kQueue) isDone = TakeLine('\x02', m_job.queue);
    if (m_step == Step::kControlCommand) isDone = TakeFileCommand('\x02', m_job.controlName);
    if (m_step == Step::kControlFile) isDone = TakeFile(m_job.control);
    if (m_step == Step::kDataCommand) isDone = TakeFileCommand('\x03', m_job.dataName);
    if (m_step == Step::kData && TakeFile(m_job.data)) {
        jobs.push_back(m_job);
        isDone = true;
    }
    if (m_step == Step::kOver) m_isWrong = true;
    if (isDone) m_step = static_cast<Step>(static_cast<int>(m_step) + 1);
    return isDone;
}

}  // namespace quirepress
