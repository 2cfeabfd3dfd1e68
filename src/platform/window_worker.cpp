#include "platform/window_worker.h"

#include <algorithm>

#include "platform/event_loop.h"
#include "platform/processes.h"
#include "platform/terminal.h"
#include "platform/window_messages.h"

namespace quirepress {

namespace {

constexpr int kLongestPause = 20;  // milliseconds between two looks for an answer
constexpr std::size_t kMostAnswer = 4'000'000;

using Task = WindowRequest::Task;
using Kind = WindowAnswer::Kind;

WindowAnswer AnswerOf(bool isDone) {
    return {isDone ? Kind::kDone : Kind::kRefused};
}

WindowAnswer AnswerTo(AppWindows& windows, const WindowRequest& request) {
    AppWindow window;
    window.id = request.window;
    AppControl control;
    control.id = request.control;
    switch (request.task) {
        case Task::kList:
            return {Kind::kWindows, windows.ListWindows()};
        case Task::kControls:
            return {Kind::kControls, {}, windows.ListControls(window)};
        case Task::kSetText:
            return AnswerOf(windows.SetText(window, control, request.text));
        case Task::kPress:
            return AnswerOf(windows.Press(window, control));
        case Task::kReturn:
            return AnswerOf(windows.SendReturn(window));
        case Task::kClose:
            return AnswerOf(windows.Close(window));
    }
    return {};
}

}  // namespace

WorkerAppWindows::WorkerAppWindows(Processes& processes, EventLoop& loop, std::string program,
                                   std::int64_t ownProcess, WindowWorkerLimits limits)
    : m_processes(processes),
      m_loop(loop),
      m_program(std::move(program)),
      m_ownProcess(ownProcess),
      m_limits(limits) {}

WorkerAppWindows::~WorkerAppWindows() {
    EndWorker();
}

std::vector<AppWindow> WorkerAppWindows::ListWindows() {
    std::vector<AppWindow> windows = Ask({Task::kList}).windows;
    std::erase_if(windows, [this](const AppWindow& window) { return window.processId == m_ownProcess; });
    return windows;
}

std::vector<AppControl> WorkerAppWindows::ListControls(const AppWindow& window) {
    return Ask({Task::kControls, window.id}).controls;
}

bool WorkerAppWindows::SetText(const AppWindow& window, const AppControl& field, std::string_view text) {
    return IsDone({Task::kSetText, window.id, field.id, std::string(text)});
}

bool WorkerAppWindows::Press(const AppWindow& window, const AppControl& button) {
    return IsDone({Task::kPress, window.id, button.id});
}

bool WorkerAppWindows::SendReturn(const AppWindow& window) {
    return IsDone({Task::kReturn, window.id});
}

bool WorkerAppWindows::Close(const AppWindow& window) {
    return IsDone({Task::kClose, window.id});
}

std::vector<std::pair<std::string, std::string>> WorkerAppWindows::ProgramEnvironment() {
    // Programs of other toolkits show their windows without being asked to.
    return {{"QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1"}};
}

bool WorkerAppWindows::IsDone(const WindowRequest& request) {
    return Ask(request).kind == Kind::kDone;
}

WindowAnswer WorkerAppWindows::Ask(const WindowRequest& request) {
    if (m_isAsking || !EnsureWorker()) return {};
    m_isAsking = true;
    std::string line;
    WindowAnswer answer;
    const bool isAnswered = m_worker->WriteInput(FormatWindowRequest(request) + "\n") && AwaitAnswer(line) &&
                            ParseWindowAnswer(line, answer);
    m_isAsking = false;
    m_lastUse = m_loop.MonotonicMilliseconds();
    if (isAnswered && answer.kind != Kind::kNoDesktop) return answer;
    EndWorker();
    m_nextStart = m_lastUse + (isAnswered ? m_limits.withoutDesktop : m_limits.afterFailure);
    return {};
}

bool WorkerAppWindows::EnsureWorker() {
    if (m_worker) return true;
    m_lastUse = m_loop.MonotonicMilliseconds();
    if (m_lastUse < m_nextStart) return false;
    m_nextStart = m_lastUse + m_limits.withoutDesktop;
    ProcessRequest request;
    request.arguments = {m_program};
    request.pipes = true;
    int systemError = 0;
    m_worker = m_processes.Start(request, systemError);
    if (!m_worker) return false;
    m_idleTask = m_loop.AddPumpTask([this] { return EndWorkerWhenIdle(); });
    return true;
}

// One whole line. What the worker has to say besides is thrown away, so that it never waits for a reader.
bool WorkerAppWindows::AwaitAnswer(std::string& line) {
    const long long deadline = m_loop.MonotonicMilliseconds() + m_limits.answer;
    int pause = 1;
    for (;;) {
        m_worker->IsRunning();  // hands on what its input has not taken yet
        std::string errors;
        const bool goesOn = m_worker->ReadOutput(line);
        m_worker->ReadErrors(errors);
        const std::size_t end = line.find('\n');
        if (end != std::string::npos) {
            const bool isOne = end + 1 == line.size();
            line.resize(end);
            return isOne;
        }
        if (!goesOn || line.size() > kMostAnswer || m_loop.MonotonicMilliseconds() >= deadline) return false;
        m_loop.Wait(pause);
        pause = std::min(2 * pause, kLongestPause);
    }
}

void WorkerAppWindows::EndWorker() {
    m_worker.reset();
    if (m_idleTask != 0) m_loop.RemovePumpTask(std::exchange(m_idleTask, 0));
}

// A worker that nobody asks would pile up what the desktop tells it.
bool WorkerAppWindows::EndWorkerWhenIdle() {
    if (m_isAsking || m_loop.MonotonicMilliseconds() < m_lastUse + m_limits.idle) return false;
    m_nextStart = 0;
    EndWorker();
    return false;
}

int RunWindowWorker(AppWindows* windows, Terminal& terminal) {
    std::string line;
    while (terminal.ReadLine(line)) {
        WindowRequest request;
        WindowAnswer answer;
        if (windows == nullptr)
            answer.kind = Kind::kNoDesktop;
        else if (ParseWindowRequest(line, request))
            answer = AnswerTo(*windows, request);
        if (!terminal.WriteOutput(FormatWindowAnswer(answer) + "\n")) return 1;
    }
    return 0;
}

}  // namespace quirepress
