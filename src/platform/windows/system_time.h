#pragma once

#include "base/date_time.h"

namespace quirepress {

// The system counts in 100 nanoseconds from 1601-01-01; 0 of them means "none".
Instant FromSystemTicks(long long ticks);
long long ToSystemTicks(Instant instant);  // rounded down

}  // namespace quirepress
