#pragma once

#include <cstdint>
#include <string>

#include "platform/embedded/network_sender.h"

namespace quirepress {

// Sends a job to a raw network printer: the data, and nothing else. What the printer's system has
// acknowledged may still lie unread in its buffers, so the job is delivered when the printer ends the
// connection too. One that keeps it open has some time to object; it gets less with its further jobs.
class SocketSender : public NetworkSender {
public:
    explicit SocketSender(const SendRequest& request) : NetworkSender(request) {}

protected:
    SendReport Greet() override { return BeginData(); }
    bool Listen(std::string& reason) override;
    SendReport FinishData() override;
    SendReport Converse() override;

private:
    void DropReplies();
    SendReport AwaitEnd();

    std::int64_t m_unconfirmed = -1;  // not acknowledged when last asked; -1: it cannot be told
    bool m_peerEnded = false;
    bool m_peerEndedEarly = false;
    int m_looks = 0;  // for the printer's end
};

}  // namespace quirepress
