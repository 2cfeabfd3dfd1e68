#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/embedded/job_sender.h"
#include "platform/network.h"

namespace quirepress {

// What the senders to network printers share: the connection and the job's data. From the `begun` file,
// which is on the disk before the first byte of the data is sent, to the end of the job its outcome is not
// known.
class NetworkSender : public JobSender {
public:
    ~NetworkSender() override;

    SendReport Step() override;
    std::int64_t BytesSent() const override { return m_sent; }
    std::int64_t BytesTotal() const override { return m_size; }
    long long StalledMilliseconds() const override;

protected:
    explicit NetworkSender(const SendRequest& request);

    // The connection is open, and so are the data; nothing is sent yet.
    virtual SendReport Greet() = 0;
    // A step before the data (after Greet) or behind them (after FinishData).
    virtual SendReport Converse() = 0;
    // Reads what the printer says while the data flow. False, with the reason, when it is of no use to go on.
    virtual bool Listen(std::string& reason) = 0;
    // All data are taken by the system.
    virtual SendReport FinishData() = 0;

    // From now on the data flow.
    SendReport BeginData();
    SendReport Deliver();
    // The job failed: to be tried again when nothing of its data went out, else of unknown outcome.
    SendReport Break(const std::string& reason);
    SendReport LeaveUnknown(const std::string& text);
    SendReport Unreachable(const std::string& reason) const;
    void NoteProgress();

    const SendRequest& Request() const { return m_request; }
    Connection& Peer() { return *m_connection; }

private:
    enum class Phase { kConnect, kConverse, kSend };

    SendReport Connect();
    SendReport OpenData();
    SendReport Send();
    bool FillBuffer();

    SendRequest m_request;
    Phase m_phase = Phase::kConnect;
    bool m_hasBegun = false;  // the `begun` file is there, and says nothing yet
    std::unique_ptr<Connection> m_connection;
    std::unique_ptr<InputFile> m_data;
    std::vector<char> m_buffer;
    std::size_t m_bufferUsed = 0;  // of the buffer, already sent
    std::int64_t m_size = 0;
    std::int64_t m_sent = 0;  // taken by the system
    long long m_lastProgress = 0;
};

}  // namespace quirepress
