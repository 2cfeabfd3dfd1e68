#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "platform/cups/cups_failure.h"
#include "platform/cups/ipp_message.h"

namespace quirepress {

class CupsConnection;
class CupsServer;
class EventLoop;

// One document on its way to the server, in one request: it is there whole, or there is no job. A small one
// is held until its end, and then sent again when the server was restarting or has too many jobs for the
// moment; a large one streams. Destroyed before its end, it is dropped.
class CupsUpload {
public:
    CupsUpload(CupsServer& server, EventLoop& loop, IppRequest request);
    ~CupsUpload();
    CupsUpload(const CupsUpload&) = delete;
    CupsUpload& operator=(const CupsUpload&) = delete;

    int Write(const void* data, std::size_t size);  // 0; -1, and so for every later call
    // As RawPrinter::Finish.
    int Finish();
    int JobId() const { return m_jobId; }
    const CupsFailure& Failure() const { return m_failure; }

private:
    int BeginStream();
    int SendHeld();
    int SendHeldOnce();
    int Close(std::unique_ptr<CupsConnection> connection);

    CupsServer& m_server;
    EventLoop& m_loop;
    IppRequest m_request;
    std::string m_held;
    std::unique_ptr<CupsConnection> m_stream;
    CupsFailure m_failure;
    int m_jobId = 0;
};

}  // namespace quirepress
