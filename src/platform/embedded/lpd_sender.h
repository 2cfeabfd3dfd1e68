#pragma once

#include <string>

#include "platform/embedded/network_sender.h"

namespace quirepress {

// Sends a job to a queue of a line printer daemon (RFC 1179), from any port of this machine.
class LpdSender : public NetworkSender {
public:
    explicit LpdSender(const SendRequest& request) : NetworkSender(request) {}

protected:
    SendReport Greet() override;
    SendReport Converse() override;
    bool Listen(std::string& reason) override;
    SendReport FinishData() override;

private:
    // What the printer has been told last and is to answer.
    enum class Stage { kQueue, kControlCommand, kControlFile, kDataCommand, kData };

    SendReport Say(Stage stage, std::string bytes);
    bool Flush();
    SendReport GoOn();
    SendReport Refuse();
    SendReport EndEarly(const std::string& reason);
    std::string AnswerText() const;

    Stage m_stage = Stage::kQueue;
    std::string m_unsent;  // of what is being said
    std::string m_answer;  // bytes that came since
    bool m_peerEnded = false;
};

// Parts of the protocol. Names come out without control characters and in the lengths that it allows.
namespace lpd {
// The name of a job's files behind "cf" or "df": "A007host".
std::string FileNameEnd(const JobFiles& job, const JobRecord& record);
std::string ControlFile(const JobFiles& job, const JobRecord& record);
}  // namespace lpd

}  // namespace quirepress
