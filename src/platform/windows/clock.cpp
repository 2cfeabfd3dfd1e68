#include "platform/clock.h"

#include <windows.h>

#include "platform/windows/make_services.h"
#include "platform/windows/system_time.h"

namespace quirepress {
namespace {

class WindowsClock : public Clock {
public:
    Instant Now() override {
        FILETIME time;
        GetSystemTimePreciseAsFileTime(&time);
        return FromSystemTicks(static_cast<long long>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
    }

    LocalTime ToLocal(Instant instant) override {
        if (instant == kNoInstant) return {};
        const long long ticks = ToSystemTicks(instant);
        const FILETIME time = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
        SYSTEMTIME utc;
        SYSTEMTIME local;  // by the rules of that year, not of today
        if (!FileTimeToSystemTime(&time, &utc) || !SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local))
            return {};
        return {local.wYear, local.wMonth, local.wDay, local.wHour, local.wMinute, local.wSecond};
    }
};

}  // namespace

std::unique_ptr<Clock> MakeClock() {
    return std::make_unique<WindowsClock>();
}

}  // namespace quirepress
