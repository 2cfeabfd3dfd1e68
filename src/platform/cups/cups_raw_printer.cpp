#include "platform/cups/cups_raw_printer.h"

#include <cups/cups.h>

#include "platform/cups/cups_server.h"
#include "platform/cups/ipp_ticket.h"

namespace quirepress {

IppRequest NewPrintRequest(std::string_view printer, std::string_view name, std::string_view format,
                           const std::string& user) {
    IppRequest request = NewPrinterRequest(IPP_OP_PRINT_JOB, printer, user);
    ipp_t* message = request.message.get();
    const std::string formatText(format);
    ippAddString(message, IPP_TAG_OPERATION, IPP_TAG_NAME, "job-name", nullptr, ToIppName(name).c_str());
    ippAddString(message, IPP_TAG_OPERATION, IPP_TAG_MIMETYPE, "document-format", nullptr,
                 formatText.c_str());
    return request;
}

int CupsRawPrinter::StartDocument(const DocumentInfo& document) {
    if (m_isStarted) return -1;
    m_isStarted = true;
    IppRequest request = NewPrintRequest(m_printer, document.name, CUPS_FORMAT_RAW, m_user);
    // The document says by itself how it is to be printed.
    AddTicket(request.message.get(), {document.name, document.copies, document.priority}, {}, {});
    m_upload = std::make_unique<CupsUpload>(m_server, m_loop, std::move(request));
    return 0;
}

int CupsRawPrinter::WriteChunk(const void* data, std::size_t size) {
    if (!m_upload) return -1;
    return Report(m_upload->Write(data, size), *m_upload);
}

int CupsRawPrinter::Finish() {
    if (!m_upload) return -1;
    const std::unique_ptr<CupsUpload> upload = std::move(m_upload);
    const int result = upload->Finish();
    m_jobId = upload->JobId();
    return Report(result, *upload);
}

int CupsRawPrinter::Report(int result, const CupsUpload& upload) {
    if (result == 0) return 0;
    m_systemError = upload.Failure().number;
    m_server.Note(upload.Failure());
    return result;
}

}  // namespace quirepress
