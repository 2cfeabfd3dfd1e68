#include "platform/embedded/socket_sender.h"

namespace quirepress {

namespace {

// A printer that has all bytes and keeps the connection open has this long to object: the first time, with
// its further jobs, and where the system cannot tell what has arrived.
constexpr long long kFirstGrace = 3'000;
constexpr long long kFurtherGrace = 100;
constexpr long long kSilentGrace = 10'000;
// Many printers end the connection within a millisecond; a pause between two looks would be longer.
constexpr int kQuickLooks = 100;

}  // namespace

// What a printer says about itself is of no use here; left unread it would block the printer.
void SocketSender::DropReplies() {
    std::string replies;
    if (Peer().Receive(replies) < 0) m_peerEnded = true;
}

bool SocketSender::Listen(std::string&) {
    DropReplies();
    return true;
}

SendReport SocketSender::FinishData() {
    Peer().EndSending();
    m_peerEndedEarly = m_peerEnded;
    return {.moreAtOnce = true};
}

SendReport SocketSender::Converse() {
    DropReplies();
    const std::int64_t unconfirmed = Peer().UnacknowledgedBytes();
    // Asked afterwards: a connection that was reset has nothing left to be acknowledged either.
    if (Peer().State() == ConnectionState::kFailed) return Break(Peer().ErrorText());
    if (unconfirmed != m_unconfirmed) NoteProgress();
    m_unconfirmed = unconfirmed;
    return unconfirmed > 0 ? SendReport() : AwaitEnd();
}

SendReport SocketSender::AwaitEnd() {
    PeerHabits& habits = Request().habits;
    // A printer that ended the connection before the last byte was sent confirms nothing by it.
    if (m_peerEnded && !m_peerEndedEarly) {
        habits.staysOpen = false;
        return Deliver();
    }
    const long long grace =
        m_unconfirmed < 0 ? kSilentGrace : (habits.staysOpen ? kFurtherGrace : kFirstGrace);
    if (StalledMilliseconds() < grace) return {.moreAtOnce = ++m_looks < kQuickLooks};
    habits.staysOpen = true;
    return Deliver();
}

}  // namespace quirepress
