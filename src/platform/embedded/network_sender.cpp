#include "platform/embedded/network_sender.h"

#include <algorithm>

#include "base/format.h"
#include "platform/event_loop.h"
#include "platform/file_tools.h"
#include "platform/spooler.h"

namespace quirepress {

namespace {

constexpr long long kConnectLimit = 15'000;

}  // namespace

NetworkSender::NetworkSender(const SendRequest& request) : m_request(request) {
    NoteProgress();
    m_connection = m_request.network.Connect(m_request.port.host, m_request.port.port);
}

NetworkSender::~NetworkSender() {
    // Given up in the middle: by the end of the program, or because the job was cancelled.
    if (m_hasBegun) Break("the program ended");
}

SendReport NetworkSender::Step() {
    switch (m_phase) {
        case Phase::kConnect:
            return Connect();
        case Phase::kSend:
            return Send();
        default:
            return Converse();
    }
}

long long NetworkSender::StalledMilliseconds() const {
    return m_request.loop.MonotonicMilliseconds() - m_lastProgress;
}

void NetworkSender::NoteProgress() {
    m_lastProgress = m_request.loop.MonotonicMilliseconds();
}

SendReport NetworkSender::Unreachable(const std::string& reason) const {
    return {SendOutcome::kPortFailed, printer_status::kOffline, job_status::kOffline,
            m_request.printer.Name() + " is not reachable: " + (reason.empty() ? "no connection" : reason)};
}

SendReport NetworkSender::Connect() {
    switch (m_connection->State()) {
        case ConnectionState::kOpen:
            return OpenData();
        case ConnectionState::kConnecting:
            if (StalledMilliseconds() < kConnectLimit) return {};
            return Unreachable("no answer");
        case ConnectionState::kEndedByPeer:
            return Unreachable("it closes the connection");
        default:
            return Unreachable(m_connection->ErrorText());
    }
}

SendReport NetworkSender::OpenData() {
    FileResult result = FileResult::kDone;
    m_data = m_request.files.OpenForReading(m_request.printer.Jobs().DataPath(m_request.job.id), result);
    if (!m_data && result == FileResult::kMissing) return {SendOutcome::kGone};
    m_size = m_data ? m_data->Size() : -1;
    if (m_size < 0) {
        return {SendOutcome::kJobFailed, printer_status::kError, job_status::kError,
                std::string("The job's data can't be read: ") + DescribeFileResult(result)};
    }
    m_phase = Phase::kConverse;
    return Greet();
}

SendReport NetworkSender::BeginData() {
    // An empty file needs no flush of its own, only its name in the folder.
    const JobFolder& jobs = m_request.printer.Jobs();
    const std::string begun = jobs.BegunPath(m_request.job.id);
    FileResult result = FileResult::kDone;
    m_request.files.OpenForWriting(begun, OpenMode::kReplace, FileAccess::kShared, result);
    if (result == FileResult::kDone) result = m_request.files.FlushFolder(jobs.Path());
    if (result != FileResult::kDone) {
        m_request.files.Erase(begun);
        return {SendOutcome::kPortFailed, printer_status::kError, job_status::kError,
                std::string("The queue can't be written: ") + DescribeFileResult(result)};
    }
    m_hasBegun = true;
    m_phase = Phase::kSend;
    return {.moreAtOnce = true};
}

bool NetworkSender::FillBuffer() {
    if (m_bufferUsed < m_buffer.size()) return true;
    const auto size = static_cast<std::size_t>(std::min(kBytesPerPass, m_size - m_sent));
    m_buffer.resize(size);
    m_bufferUsed = 0;
    return m_data->ReadAt(m_sent, m_buffer.data(), size) == static_cast<std::int64_t>(size);
}

SendReport NetworkSender::Send() {
    std::string reason;
    if (!Listen(reason)) return Break(reason);
    if (m_connection->State() == ConnectionState::kFailed) return Break(m_connection->ErrorText());
    if (!FillBuffer()) return Break("the job's data can't be read");
    if (m_sent < m_size) {
        const std::int64_t taken =
            m_connection->Send(m_buffer.data() + m_bufferUsed, m_buffer.size() - m_bufferUsed);
        if (taken < 0) return Break(m_connection->ErrorText());
        if (taken == 0) return {};
        m_sent += taken;
        m_bufferUsed += static_cast<std::size_t>(taken);
        NoteProgress();
    }
    if (m_sent < m_size) return {.moreAtOnce = true};
    m_phase = Phase::kConverse;
    return FinishData();
}

SendReport NetworkSender::Deliver() {
    m_hasBegun = false;
    return {SendOutcome::kDelivered};
}

SendReport NetworkSender::Break(const std::string& reason) {
    if (m_sent == 0) {
        if (m_hasBegun) m_request.files.Erase(m_request.printer.Jobs().BegunPath(m_request.job.id));
        m_hasBegun = false;
        return Unreachable(reason);
    }
    const std::string text = Format("the connection ended after %d of %d bytes", m_sent, m_size);
    return LeaveUnknown(reason.empty() ? text : text + ". The reason: " + reason);
}

SendReport NetworkSender::LeaveUnknown(const std::string& text) {
    m_hasBegun = false;
    // Should this fail, the empty file says the same with less.
    const std::string note = begun_note::WriteUnknown(text);
    const std::string begun = m_request.printer.Jobs().BegunPath(m_request.job.id);
    FileResult result = FileResult::kDone;
    const auto file = m_request.files.OpenForWriting(begun, OpenMode::kReplace, FileAccess::kShared, result);
    if (file) file->Write(note.data(), note.size());
    return {SendOutcome::kUnknown, 0, 0, text};
}

}  // namespace quirepress
