#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/embedded/job_sender.h"
#include "platform/network.h"

namespace quirepress {

// Sends a job to a raw network printer. From the `begun` file, which is on the disk before the first byte is
// sent, to the end of the job its outcome is not known.
class SocketSender : public JobSender {
public:
    explicit SocketSender(const SendRequest& request);
    ~SocketSender() override;

    SendReport Step() override;
    std::int64_t BytesSent() const override { return m_sent; }
    std::int64_t BytesTotal() const override { return m_size; }
    long long StalledMilliseconds() const override;

private:
    enum class Phase { kConnect, kSend, kAwaitEnd, kOver };

    SendReport Connect();
    SendReport Begin();
    SendReport Send();
    SendReport AwaitEnd();
    SendReport Break(const std::string& reason);
    bool FillBuffer();
    void DropReplies();

    SendRequest m_request;
    Phase m_phase = Phase::kConnect;
    std::unique_ptr<Connection> m_connection;
    std::unique_ptr<InputFile> m_data;
    std::vector<char> m_buffer;
    std::size_t m_bufferUsed = 0;  // of the buffer, already sent
    std::int64_t m_size = 0;
    std::int64_t m_sent = 0;          // taken by the system
    std::int64_t m_unconfirmed = -1;  // of those, not acknowledged when last asked; -1: it cannot be told
    bool m_peerEnded = false;
    bool m_peerEndedEarly = false;
    long long m_lastProgress = 0;
};

}  // namespace quirepress
