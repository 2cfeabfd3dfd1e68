#include "platform/linux/process_tree.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>

#include "platform/linux/descriptor.h"

// Everything here runs after fork() in a program that may have other threads: no memory is allocated and
// nothing is called but system calls.

namespace quirepress {

namespace {

constexpr int kNotRunnable = 127;

void SendReport(int pipe, TreeReport::Kind kind, int value) {
    const TreeReport report = {kind, value};
    RetryInterrupted([&] { return write(pipe, &report, sizeof report); });
}

void CloseAllBut(std::array<int, 5> kept) {
    std::sort(kept.begin(), kept.end());
    unsigned next = STDERR_FILENO + 1;
    for (const int descriptor : kept) {
        if (descriptor < static_cast<int>(next)) continue;
        const auto number = static_cast<unsigned>(descriptor);
        if (number > next) close_range(next, number - 1, 0);
        next = number + 1;
    }
    close_range(next, UINT_MAX, 0);
}

// The program must not find signals ignored, caught or blocked because this program has them so.
void ResetSignals() {
    for (int number = 1; number < NSIG; ++number) signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

bool UseAsStream(int descriptor, int stream) {
    return descriptor < 0 || dup2(descriptor, stream) == stream;
}

// The program's own process, until it becomes the program. Answers the error that prevented it.
int BecomeProgram(const TreeOrder& order, pid_t supervisor) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != supervisor) return ECANCELED;
    if (!UseAsStream(order.input, STDIN_FILENO) || !UseAsStream(order.output, STDOUT_FILENO) ||
        !UseAsStream(order.errors, STDERR_FILENO))
        return errno;
    if (order.folder != nullptr && chdir(order.folder) != 0) return errno;
    if (order.memoryLimit > 0) {
        const auto bytes = static_cast<rlim_t>(order.memoryLimit);
        const rlimit limit = {bytes, bytes};
        if (setrlimit(RLIMIT_AS, &limit) != 0) return errno;
    }
    ResetSignals();
    execvpe(order.arguments[0], order.arguments, order.environment);
    return errno;
}

// Starts the program; its id, or -1 after a report of the failure.
pid_t StartProgram(const TreeOrder& order) {
    std::array<int, 2> errorPipe = {-1, -1};
    const pid_t supervisor = getpid();
    const bool havePipe = pipe2(errorPipe.data(), O_CLOEXEC) == 0;
    const pid_t program = havePipe ? fork() : -1;
    if (program == 0) {
        const int error = BecomeProgram(order, supervisor);
        RetryInterrupted([&] { return write(errorPipe[1], &error, sizeof error); });
        _exit(kNotRunnable);
    }
    int error = errno;
    if (program > 0) {
        close(errorPipe[1]);
        // Closed without a word when the program runs.
        const ssize_t count = RetryInterrupted([&] { return read(errorPipe[0], &error, sizeof error); });
        if (count == 0) {
            close(errorPipe[0]);
            SendReport(order.report, TreeReport::Kind::kStarted, program);
            return program;
        }
    }
    SendReport(order.report, TreeReport::Kind::kNotStarted, error);
    return -1;
}

int ToExitCode(int status) {
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

// Takes leave of everything that has ended. False when nothing is left of the tree: whatever lives in it is a
// child of this process or has an ancestor that is.
bool ReapTree(pid_t program, int report) {
    for (;;) {
        int status = 0;
        const pid_t ended = waitpid(-1, &status, WNOHANG);
        if (ended == program) SendReport(report, TreeReport::Kind::kEnded, ToExitCode(status));
        if (ended < 0 && errno == EINTR) continue;
        if (ended <= 0) return ended == 0;
    }
}

// The parent of process `name`, -1 when it cannot be told.
long ReadParent(int proc, const char* name) {
    std::array<char, 64> path = {};
    if (std::strlen(name) + sizeof "/stat" > path.size()) return -1;
    std::strcpy(path.data(), name);
    std::strcat(path.data(), "/stat");
    const int file = openat(proc, path.data(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return -1;
    std::array<char, 512> text = {};
    const ssize_t size = read(file, text.data(), text.size() - 1);
    close(file);
    // "PID (NAME) STATE PARENT ...", where NAME may hold anything.
    const char* const afterName = size > 0 ? std::strrchr(text.data(), ')') : nullptr;
    if (afterName == nullptr || std::strlen(afterName) < sizeof ") S 1" - 1) return -1;
    long parent = 0;
    for (const char* digit = afterName + 4; *digit >= '0' && *digit <= '9'; ++digit)
        parent = parent * 10 + (*digit - '0');
    return parent;
}

// Ends the children of this process. Their own children become ours by that, for the next round.
void KillChildren() {
    const int proc = open("/proc", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (proc < 0) return;
    const long self = getpid();
    alignas(8) std::array<char, 16'384> entries;
    for (;;) {
        const long size = syscall(SYS_getdents64, proc, entries.data(), entries.size());
        if (size <= 0) break;
        for (long position = 0; position < size;) {
            const char* const entry = entries.data() + position;
            unsigned short length = 0;
            constexpr std::size_t kLengthOffset = 16;  // of struct linux_dirent64
            constexpr std::size_t kNameOffset = 19;
            std::memcpy(&length, entry + kLengthOffset, sizeof length);
            position += length;
            const char* const name = entry + kNameOffset;
            long id = 0;
            for (const char* digit = name; *digit >= '0' && *digit <= '9'; ++digit)
                id = id * 10 + (*digit - '0');
            if (id > 0 && ReadParent(proc, name) == self) kill(static_cast<pid_t>(id), SIGKILL);
        }
    }
    close(proc);
}

// Until nothing is left, or what is left cannot be ended (it belongs to another user, or hangs in the
// system).
void KillTree(pid_t program, int report) {
    constexpr int kMostRounds = 1000;
    constexpr int kMillisecondsBetween = 2;
    kill(-program, SIGKILL);
    for (int round = 0; round < kMostRounds; ++round) {
        KillChildren();
        if (!ReapTree(program, report)) return;
        if (round > 0) poll(nullptr, 0, kMillisecondsBetween);
    }
}

void IgnoreSignal(int /*number*/) {}

// Sets the supervisor apart from the terminal and the signals of this program. `whileWaiting` are the signals
// that a wait lets through.
void PrepareSupervisor(const TreeOrder& order, sigset_t& whileWaiting) {
    setsid();
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    CloseAllBut({order.input, order.output, order.errors, order.control, order.report});
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGUSR1, SIGUSR2})
        signal(number, SIG_IGN);
    struct sigaction action = {};
    action.sa_handler = IgnoreSignal;
    sigaction(SIGCHLD, &action, nullptr);
    sigset_t childEnds;
    sigemptyset(&childEnds);
    sigaddset(&childEnds, SIGCHLD);
    sigprocmask(SIG_BLOCK, &childEnds, &whileWaiting);
    sigdelset(&whileWaiting, SIGCHLD);
}

// The streams are the program's: its readers see their end when the last program has closed them.
void LeaveStreams(const TreeOrder& order) {
    for (const int descriptor : {order.input, order.output, order.errors})
        if (descriptor >= 0) close(descriptor);
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(nothing, stream);
}

}  // namespace

void SuperviseTree(const TreeOrder& order) {
    sigset_t whileWaiting;
    PrepareSupervisor(order, whileWaiting);
    const pid_t program = StartProgram(order);
    if (program < 0) _exit(kNotRunnable);
    LeaveStreams(order);
    pollfd control = {order.control, POLLIN, 0};
    while (ReapTree(program, order.report)) {
        if (ppoll(&control, 1, nullptr, &whileWaiting) > 0) {
            KillTree(program, order.report);
            break;
        }
    }
    _exit(0);
}

}  // namespace quirepress
