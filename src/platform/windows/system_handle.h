#pragma once

#include <memory>

namespace quirepress {

struct HandleCloser {
    void operator()(void* handle) const;
};

// A kernel handle that is closed with its holder; null when there is none.
using SystemHandle = std::unique_ptr<void, HandleCloser>;

// Takes over what a call of the system returned; its "invalid handle" becomes null.
SystemHandle TakeHandle(void* handle);

}  // namespace quirepress
