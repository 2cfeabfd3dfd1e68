#pragma once

namespace quirepress {

// Readable from an interrupt's arrival until what it holds is read; never waits. -1 before CatchInterrupts.
int InterruptDescriptor();

}  // namespace quirepress
