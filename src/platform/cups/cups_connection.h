#pragma once

#include <cups/http.h>

#include <cstddef>
#include <memory>
#include <string>

#include "platform/cups/cups_failure.h"
#include "platform/cups/ipp_message.h"

namespace quirepress {

class EventLoop;

// One connection to the server, for one exchange at a time. Waits pump: a call that hears nothing looks at
// the loop twenty times a second, and gives up after its patience. Only a peer that lets its bytes drip, each
// within such a slice, holds a call for longer.
class CupsConnection {
public:
    // To the server that libcups finds for this environment, by a thread of its own, since looking up a name
    // cannot be bounded. Null with `failure`. May pump.
    static std::unique_ptr<CupsConnection> Connect(EventLoop& loop, CupsFailure& failure);
    ~CupsConnection();
    CupsConnection(const CupsConnection&) = delete;
    CupsConnection& operator=(const CupsConnection&) = delete;

    bool IsUsable();  // for a further exchange; false too when the server has ended it
    void BePatientFor(int milliseconds) { m_patience = milliseconds; }

    // One request with its answer, of whatever IPP status. Null with `failure`. May pump.
    IppMessage Ask(const IppRequest& request, CupsFailure& failure);

    // A request with a document behind it: its head, its bytes, its end. `size` is the document's, or -1 when
    // it is not known. 0, or -1 with `failure`: the server cannot have the whole.
    int BeginDocument(const IppRequest& request, std::int64_t size, CupsFailure& failure);
    int SendBytes(const void* data, std::size_t size, CupsFailure& failure);
    int EndDocument(CupsFailure& failure);
    // Null with `failure`: nobody can tell what became of the document, unless the server refused it.
    IppMessage ReadAnswer(CupsFailure& failure);

    // For calls of libcups that do requests of their own.
    http_t* Handle();

private:
    CupsConnection(EventLoop& loop, http_t* http);
    static int OnQuiet(http_t* http, void* self);
    int SendHead(const IppRequest& request, std::size_t length, CupsFailure& failure);
    bool Authenticate(const IppRequest& request);
    bool ReadBody(std::string& body);
    int Break(CupsFailure& failure);
    void DescribeFailure(CupsFailure& failure);

    EventLoop& m_loop;
    http_t* m_http;
    int m_patience;
    long long m_giveUpAt = 0;
    bool m_gaveUp = false;
    bool m_isBroken = false;
};

}  // namespace quirepress
