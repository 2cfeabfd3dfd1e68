#pragma once

#include <cstdint>
#include <string>

#include "platform/embedded/network_sender.h"

namespace quirepress {

// Sends a job to a raw network printer: the data, and nothing else.
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

    std::int64_t m_unconfirmed = -1;  // not acknowledged when last asked; -1: it cannot be told
    bool m_peerEnded = false;
    bool m_peerEndedEarly = false;
};

}  // namespace quirepress
