#pragma once

#include <memory>
#include <vector>

#include "platform/cups/cups_connection.h"

namespace quirepress {

class EventLoop;

// The server with its kept-alive connections. One that is away is waited for, with growing pauses, for some
// seconds (a restart takes that long); once it has been missed so, every further call tries only once, until
// one succeeds. A server that did not answer gets less time with the next calls.
class CupsServer {
public:
    explicit CupsServer(EventLoop& loop) : m_loop(loop) {}

    // A successful answer, or null with `failure`. May pump.
    IppMessage Ask(const IppRequest& request, CupsFailure& failure);

    // A connection for one's own use. Null with `failure`. May pump.
    std::unique_ptr<CupsConnection> Take(CupsFailure& failure);
    void GiveBack(std::unique_ptr<CupsConnection> connection);

    // After an exchange on a taken connection: what it means for the next calls, and for the caller.
    bool Judge(ipp_t* answer, CupsFailure& failure);
    void BeImpatient() { m_isMissed = true; }  // until the server has answered

    // The last failure of any call, for who has kept its number only.
    void Note(const CupsFailure& failure) { m_lastFailure = failure; }
    const CupsFailure& LastFailure() const { return m_lastFailure; }

private:
    std::unique_ptr<CupsConnection> TakeIdle();

    EventLoop& m_loop;
    std::vector<std::unique_ptr<CupsConnection>> m_idle;
    bool m_isMissed = false;
    CupsFailure m_lastFailure;
};

}  // namespace quirepress
