#include "platform/window_worker.h"

namespace quirepress {

std::unique_ptr<AppWindows> MakeDesktopWindows() {
    return nullptr;
}

}  // namespace quirepress
