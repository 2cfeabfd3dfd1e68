// The worker's side alone, as programs of ours start it.
#include "platform/window_worker.h"
#include "platform/services.h"
#include "platform/terminal.h"

int main() {
    const quirepress::Services services = quirepress::MakeSystemServices();
    const auto windows = quirepress::MakeDesktopWindows();
    return quirepress::RunWindowWorker(windows.get(), *services.terminal);
}
