#pragma once

#include "base/date_time.h"

namespace quirepress {

class Clock {
public:
    virtual ~Clock() = default;
    virtual Instant Now() = 0;
    // `instant` on the user's wall clock; all zero for kNoInstant.
    virtual LocalTime ToLocal(Instant instant) = 0;
};

}  // namespace quirepress
