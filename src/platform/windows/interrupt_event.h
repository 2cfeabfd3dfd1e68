#pragma once

namespace quirepress {

// Becomes signalled with each interrupt; a wait for it resets it. Null when there is none yet.
void* InterruptEvent();

}  // namespace quirepress
