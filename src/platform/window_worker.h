#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/app_windows.h"

namespace quirepress {

class ChildProcess;
class Terminal;
struct WindowAnswer;
struct WindowRequest;

// Milliseconds.
struct WindowWorkerLimits {
    int answer = 2'000;           // a worker that takes longer is ended
    int idle = 5'000;             // one that is not asked anything for so long, too
    int afterFailure = 10'000;    // before another one is started
    int withoutDesktop = 60'000;  // the same, when there is nothing to see, or no worker
};

// The windows of other programs as a process of its own sees them, so that a program that hangs, or trips up
// the libraries on the way to it, never takes this one along. The worker is started when it is needed and not
// again and again when it fails: until its next start there are no windows.
class WorkerAppWindows : public AppWindows {
public:
    // `program` does RunWindowWorker. Windows of `ownProcess` are not told of.
    WorkerAppWindows(Processes& processes, EventLoop& loop, std::string program, std::int64_t ownProcess,
                     WindowWorkerLimits limits = {});
    ~WorkerAppWindows() override;
    WorkerAppWindows(const WorkerAppWindows&) = delete;
    WorkerAppWindows& operator=(const WorkerAppWindows&) = delete;

    // A call from within the pump of another one has nothing to tell, and asks nothing.
    std::vector<AppWindow> ListWindows() override;
    std::vector<AppControl> ListControls(const AppWindow& window) override;
    bool SetText(const AppWindow& window, const AppControl& field, std::string_view text) override;
    bool Press(const AppWindow& window, const AppControl& button) override;
    bool SendReturn(const AppWindow& window) override;
    bool Close(const AppWindow& window) override;
    std::vector<std::pair<std::string, std::string>> ProgramEnvironment() override;

private:
    WindowAnswer Ask(const WindowRequest& request);
    bool IsDone(const WindowRequest& request);
    bool EnsureWorker();
    bool AwaitAnswer(std::string& line);
    void EndWorker();
    bool EndWorkerWhenIdle();

    Processes& m_processes;
    EventLoop& m_loop;
    std::string m_program;
    std::int64_t m_ownProcess;
    WindowWorkerLimits m_limits;
    std::unique_ptr<ChildProcess> m_worker;
    int m_idleTask = 0;  // in the pump, while there is a worker
    long long m_lastUse = 0;
    long long m_nextStart = 0;  // not before
    bool m_isAsking = false;
};

// The worker's side: answers the requests on standard input until its end, from `windows` (null: there is no
// desktop). Answers an exit code.
int RunWindowWorker(AppWindows* windows, Terminal& terminal);

// For the worker: the windows themselves, which may take as long as they like. Null where there is no
// desktop.
std::unique_ptr<AppWindows> MakeDesktopWindows();

}  // namespace quirepress
