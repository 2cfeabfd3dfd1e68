#include "fakes/fake_event_loop.h"

namespace quirepress {

void FakeEventLoop::Wait(int milliseconds) {
    ++m_waitCount;
    PumpedEventLoop::Wait(milliseconds);
}

}  // namespace quirepress
