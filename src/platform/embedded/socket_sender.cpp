#include "platform/embedded/socket_sender.h"

#include <algorithm>

#include "base/format.h"
#include "platform/event_loop.h"
#include "platform/file_tools.h"
#include "platform/spooler.h"

namespace quirepress {

namespace {

constexpr long long kConnectLimit = 15'000;
// Where the system cannot tell what has arrived, a printer that keeps the connection open has this long to
// object.
constexpr long long kSilentEndLimit = 10'000;

SendReport Unreachable(const std::string& printer, const std::string& reason) {
    return {SendOutcome::kPortFailed, printer_status::kOffline, job_status::kOffline,
            printer + " is not reachable: " + (reason.empty() ? "no connection" : reason)};
}

}  // namespace

SocketSender::SocketSender(const SendRequest& request) : m_request(request) {
    m_lastProgress = m_request.loop.MonotonicMilliseconds();
    m_connection = m_request.network.Connect(m_request.port.host, m_request.port.port);
}

SocketSender::~SocketSender() {
    // Given up in the middle: by the end of the program, or because the job was cancelled.
    if (m_phase == Phase::kSend || m_phase == Phase::kAwaitEnd) Break("the program ended");
}

SendReport SocketSender::Step() {
    switch (m_phase) {
        case Phase::kConnect:
            return Connect();
        case Phase::kSend:
            return Send();
        default:
            return AwaitEnd();
    }
}

long long SocketSender::StalledMilliseconds() const {
    return m_request.loop.MonotonicMilliseconds() - m_lastProgress;
}

SendReport SocketSender::Connect() {
    switch (m_connection->State()) {
        case ConnectionState::kOpen:
            return Begin();
        case ConnectionState::kConnecting:
            if (StalledMilliseconds() < kConnectLimit) return {};
            return Unreachable(m_request.printer.Name(), "no answer");
        case ConnectionState::kEndedByPeer:
            return Unreachable(m_request.printer.Name(), "it closes the connection");
        default:
            return Unreachable(m_request.printer.Name(), m_connection->ErrorText());
    }
}

SendReport SocketSender::Begin() {
    const JobFolder& jobs = m_request.printer.Jobs();
    FileResult result = FileResult::kDone;
    m_data = m_request.files.OpenForReading(jobs.DataPath(m_request.job.id), result);
    if (!m_data && result == FileResult::kMissing) return {SendOutcome::kGone};
    m_size = m_data ? m_data->Size() : -1;
    if (m_size < 0) {
        return {SendOutcome::kJobFailed, printer_status::kError, job_status::kError,
                std::string("The job's data can't be read: ") + DescribeFileResult(result)};
    }
    // An empty file needs no flush of its own, only its name in the folder.
    const std::string begun = jobs.BegunPath(m_request.job.id);
    m_request.files.OpenForWriting(begun, OpenMode::kReplace, FileAccess::kShared, result);
    if (result == FileResult::kDone) result = m_request.files.FlushFolder(jobs.Path());
    if (result != FileResult::kDone) {
        m_request.files.Erase(begun);
        return {SendOutcome::kPortFailed, printer_status::kError, job_status::kError,
                std::string("The queue can't be written: ") + DescribeFileResult(result)};
    }
    m_phase = Phase::kSend;
    return {.moreAtOnce = true};
}

bool SocketSender::FillBuffer() {
    if (m_bufferUsed < m_buffer.size()) return true;
    const auto size = static_cast<std::size_t>(std::min(kBytesPerPass, m_size - m_sent));
    m_buffer.resize(size);
    m_bufferUsed = 0;
    return m_data->ReadAt(m_sent, m_buffer.data(), size) == static_cast<std::int64_t>(size);
}

SendReport SocketSender::Send() {
    DropReplies();
    if (m_connection->State() == ConnectionState::kFailed) return Break(m_connection->ErrorText());
    if (!FillBuffer()) return Break("the job's data can't be read");
    if (m_sent < m_size) {
        const std::int64_t taken =
            m_connection->Send(m_buffer.data() + m_bufferUsed, m_buffer.size() - m_bufferUsed);
        if (taken < 0) return Break(m_connection->ErrorText());
        if (taken == 0) return {};
        m_sent += taken;
        m_bufferUsed += static_cast<std::size_t>(taken);
        m_lastProgress = m_request.loop.MonotonicMilliseconds();
    }
    if (m_sent < m_size) return {.moreAtOnce = true};
    m_connection->EndSending();
    m_peerEndedEarly = m_peerEnded;
    m_phase = Phase::kAwaitEnd;
    return {.moreAtOnce = true};
}

SendReport SocketSender::AwaitEnd() {
    DropReplies();
    const std::int64_t unconfirmed = m_connection->UnacknowledgedBytes();
    // Asked afterwards: a connection that was reset has nothing left to be acknowledged either.
    if (m_connection->State() == ConnectionState::kFailed) return Break(m_connection->ErrorText());
    if (unconfirmed != m_unconfirmed) m_lastProgress = m_request.loop.MonotonicMilliseconds();
    m_unconfirmed = unconfirmed;
    // A printer that ended the connection before the last byte was sent confirms nothing by it.
    const bool isEnded = m_peerEnded && !m_peerEndedEarly;
    const bool isOver =
        unconfirmed < 0 ? isEnded || StalledMilliseconds() > kSilentEndLimit : unconfirmed == 0;
    if (!isOver) return {};
    m_phase = Phase::kOver;
    return {SendOutcome::kDelivered};
}

// What a printer says about itself is of no use here; left unread it would block the printer.
void SocketSender::DropReplies() {
    std::string replies;
    if (m_connection->Receive(replies) < 0) m_peerEnded = true;
}

SendReport SocketSender::Break(const std::string& reason) {
    const std::string begun = m_request.printer.Jobs().BegunPath(m_request.job.id);
    m_phase = Phase::kOver;
    if (m_sent == 0) {
        m_request.files.Erase(begun);
        return Unreachable(m_request.printer.Name(), reason);
    }
    std::string text = Format("the connection ended after %d of %d bytes", m_sent, m_size);
    if (!reason.empty()) text += ". The reason: " + reason;
    // Should this fail, the empty file says the same with less.
    const std::string note = begun_note::WriteUnknown(text);
    FileResult result = FileResult::kDone;
    const auto file = m_request.files.OpenForWriting(begun, OpenMode::kReplace, FileAccess::kShared, result);
    if (file) file->Write(note.data(), note.size());
    return {SendOutcome::kUnknown, 0, 0, text};
}

}  // namespace quirepress
