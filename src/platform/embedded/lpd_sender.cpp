#include "platform/embedded/lpd_sender.h"

#include <algorithm>

#include "base/escaped_text.h"
#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "platform/spooler.h"

namespace quirepress {

namespace {

// A printer that is asked whether it takes a job has this long to answer; nothing of the job is out then.
constexpr long long kAnswerLimit = 60'000;
// One that has all bytes may wait for paper before it confirms them, but not for ever: its machine may be
// gone without a word.
constexpr long long kLastAnswerLimit = 600'000;
constexpr std::size_t kLongestAnswer = 200;
constexpr std::size_t kLongestName = 31;  // of hosts and users
constexpr std::size_t kLongestTitle = 99;
constexpr std::int64_t kJobNumbers = 1'000;  // three digits

// One line of the control file: a control character would end it, or begin another.
std::string Line(char letter, std::string_view value, std::size_t size) {
    std::string text(CutToSize(value, size));
    std::replace_if(text.begin(), text.end(), IsControlCharacter, '_');
    return letter + text + "\n";
}

// Servers use it as a part of file names.
std::string HostOf(const JobRecord& record) {
    constexpr std::string_view kFit = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-";
    std::string host = record.machine.substr(0, kLongestName);
    std::replace_if(
        host.begin(), host.end(), [&](char c) { return !Contains(kFit, std::string_view(&c, 1)); }, '_');
    return host.empty() ? "localhost" : host;
}

// Users are one word.
std::string UserOf(const JobRecord& record) {
    std::string user = record.user.empty() ? "unknown" : record.user;
    std::replace(user.begin(), user.end(), ' ', '_');
    return user;
}

}  // namespace

namespace lpd {

std::string FileNameEnd(const JobFiles& job, const JobRecord& record) {
    return Format("A%03d", job.id % kJobNumbers) + HostOf(record);
}

// Without "L", which asks for a banner page, nothing comes out for a job whose data do not follow. "l" leaves
// the data as they are: printer-ready ones are full of control characters.
std::string ControlFile(const JobFiles& job, const JobRecord& record) {
    const std::string data = "df" + FileNameEnd(job, record);
    const std::string_view title = FileTitle(record.document);
    return Line('H', HostOf(record), kLongestName) + Line('P', UserOf(record), kLongestName) +
           Line('J', title, kLongestTitle) + "l" + data + "\nU" + data + "\n" +
           Line('N', title, kLongestTitle);
}

}  // namespace lpd

SendReport LpdSender::Greet() {
    // A count of 0 announces data up to the end of the connection, so that no empty document can be told;
    // it would be no page anyhow.
    if (BytesTotal() == 0) return Deliver();
    return Say(Stage::kQueue, "\x02" + Request().port.queue + "\n");
}

SendReport LpdSender::Say(Stage stage, std::string bytes) {
    m_stage = stage;
    m_unsent = std::move(bytes);
    m_answer.clear();
    NoteProgress();
    return {.moreAtOnce = true};
}

// False when the connection is gone.
bool LpdSender::Flush() {
    while (!m_unsent.empty()) {
        const std::int64_t taken = Peer().Send(m_unsent.data(), m_unsent.size());
        if (taken < 0) return false;
        if (taken == 0) return true;
        m_unsent.erase(0, static_cast<std::size_t>(taken));
        NoteProgress();
    }
    return true;
}

SendReport LpdSender::Converse() {
    const bool isOpen = Flush();
    if (Peer().Receive(m_answer) < 0) m_peerEnded = true;
    if (!m_answer.empty()) return m_answer[0] == '\0' ? GoOn() : Refuse();
    if (Peer().State() == ConnectionState::kFailed || !isOpen) return EndEarly(Peer().ErrorText());
    if (m_peerEnded) return EndEarly("it closes the connection");
    const long long limit = m_stage == Stage::kData ? kLastAnswerLimit : kAnswerLimit;
    return StalledMilliseconds() < limit ? SendReport() : EndEarly("no answer");
}

// The control file goes first: a printer without a disk prints the data as they come, and must know by then
// what they are. Its last answer then is that to the data, and means the whole job.
SendReport LpdSender::GoOn() {
    const std::string name = lpd::FileNameEnd(Request().job, Request().record);
    const std::string control = lpd::ControlFile(Request().job, Request().record);
    switch (m_stage) {
        case Stage::kQueue:
            return Say(Stage::kControlCommand, Format("\x02%d cf%s\n", control.size(), name));
        case Stage::kControlCommand:
            return Say(Stage::kControlFile, control + '\0');
        case Stage::kControlFile:
            return Say(Stage::kDataCommand, Format("\x03%d df%s\n", BytesTotal(), name));
        case Stage::kDataCommand:
            m_answer.clear();
            return BeginData();
        default:
            Peer().EndSending();
            return Deliver();
    }
}

bool LpdSender::Listen(std::string& reason) {
    if (Peer().Receive(m_answer) < 0) m_peerEnded = true;
    if (!m_answer.empty()) reason = "the printer breaks off" + AnswerText();
    // Without its last answer the job cannot be confirmed any more.
    else if (m_peerEnded && Peer().State() != ConnectionState::kFailed)
        reason = "the printer closes the connection";
    return reason.empty();
}

SendReport LpdSender::FinishData() {
    return Say(Stage::kData, std::string(1, '\0'));
}

SendReport LpdSender::Refuse() {
    if (m_stage == Stage::kData)
        return LeaveUnknown(Format("the printer has all %d bytes, and refuses them", BytesTotal()) +
                            AnswerText());
    const std::string what = m_stage == Stage::kQueue ? "the queue " + Request().port.queue + " takes no job"
                                                      : std::string("the job is refused");
    return {SendOutcome::kPortFailed, printer_status::kError, job_status::kError,
            Request().printer.Name() + " refuses: " + what + AnswerText()};
}

SendReport LpdSender::EndEarly(const std::string& reason) {
    if (m_stage != Stage::kData) return Break(reason);
    return LeaveUnknown(
        Format("the printer has taken all %d bytes, but did not confirm them. The reason: ", BytesTotal()) +
        reason);
}

// Some printers say in words behind the byte what it means.
std::string LpdSender::AnswerText() const {
    const std::string_view answer = m_answer;
    const std::string_view words =
        answer.substr(0, std::min(answer.find_first_of("\r\n", 1), kLongestAnswer)).substr(1);
    const std::string number = Format(" (answer %d", static_cast<unsigned char>(answer[0]));
    return words.empty() ? number + ")" : number + ": " + ToPrintableLine(words) + ")";
}

}  // namespace quirepress
