#pragma once

namespace quirepress {

// From now on Ctrl-C and the system's request to end are counted instead of ending the program; the third
// ends it at once, so that a program that has stopped pumping can still be stopped. Waits of the event loop
// end early when one arrives.
void CatchInterrupts();

// How many have come. Safe at any time.
int InterruptCount();

}  // namespace quirepress
