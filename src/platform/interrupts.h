#pragma once

namespace quirepress {

// From now on the first Ctrl-C, or request of the system to end, is counted instead of ending the program;
// the second ends it at once, whatever it does. Waits of the event loop end early when one arrives. The end
// of the terminal counts as the first only, and not at all where the program was started to outlive it.
void CatchInterrupts();

// How many have come. Safe at any time.
int InterruptCount();

}  // namespace quirepress
