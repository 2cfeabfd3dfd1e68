#include "platform/embedded/socket_sender.h"

namespace quirepress {

namespace {

// Where the system cannot tell what has arrived, a printer that keeps the connection open has this long to
// object.
constexpr long long kSilentEndLimit = 10'000;

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
    // A printer that ended the connection before the last byte was sent confirms nothing by it.
    const bool isEnded = m_peerEnded && !m_peerEndedEarly;
    const bool isOver =
        unconfirmed < 0 ? isEnded || StalledMilliseconds() > kSilentEndLimit : unconfirmed == 0;
    return isOver ? Deliver() : SendReport();
}

}  // namespace quirepress
