#include "platform/windows/system_handle.h"

#include <windows.h>

namespace quirepress {

void HandleCloser::operator()(void* handle) const {
    CloseHandle(handle);
}

SystemHandle TakeHandle(void* handle) {
    return SystemHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

}  // namespace quirepress
