// qpr-window-worker: looks at the windows of other programs for those that start it. A program of its own, so
// that what it needs of a desktop's libraries is no burden to the others.
#include <cstdio>
#include <exception>

#include "platform/services.h"
#include "platform/terminal.h"
#include "platform/window_worker.h"

int main() {
    try {
        const quirepress::Services services = quirepress::MakeSystemServices();
        const auto windows = quirepress::MakeDesktopWindows();
        return quirepress::RunWindowWorker(windows.get(), *services.terminal);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "qpr-window-worker: %s\n", error.what());
        return 1;
    }
}
