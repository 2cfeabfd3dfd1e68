#pragma once

#include <memory>
#include <string>

#include "platform/cups/cups_upload.h"
#include "platform/spooler.h"

namespace quirepress {

// The request that prints a document under `name`, all but what is asked of the printer.
IppRequest NewPrintRequest(std::string_view printer, std::string_view name, std::string_view format,
                           const std::string& user);

// A printer of CUPS opened for one raw document.
class CupsRawPrinter : public RawPrinter {
public:
    CupsRawPrinter(CupsServer& server, EventLoop& loop, std::string_view printer, std::string user)
        : m_server(server), m_loop(loop), m_printer(printer), m_user(std::move(user)) {}

    int StartDocument(const DocumentInfo& document) override;
    int WriteChunk(const void* data, std::size_t size) override;
    int Finish() override;
    std::int64_t JobId() const override { return m_jobId; }
    int SystemError() const override { return m_systemError; }

private:
    int Report(int result, const CupsUpload& upload);

    CupsServer& m_server;
    EventLoop& m_loop;
    std::string m_printer;
    std::string m_user;
    std::unique_ptr<CupsUpload> m_upload;  // while the document is open
    bool m_isStarted = false;
    std::int64_t m_jobId = 0;
    int m_systemError = 0;
};

}  // namespace quirepress
