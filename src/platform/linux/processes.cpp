#include "platform/processes.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <optional>
#include <system_error>

#include "base/numbers.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/make_services.h"
#include "platform/linux/process_tree.h"

namespace quirepress {

namespace {

constexpr int kKilled = 128 + SIGKILL;

struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;

    // Both ends are closed in programs that are started.
    bool Open() {
        std::array<int, 2> ends = {-1, -1};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) return false;
        readEnd = Descriptor(ends[0]);
        writeEnd = Descriptor(ends[1]);
        return true;
    }
};

void MakeNonBlocking(const Descriptor& descriptor) {
    fcntl(descriptor.Value(), F_SETFL, fcntl(descriptor.Value(), F_GETFL) | O_NONBLOCK);
}

std::vector<char*> PointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QUIREPRESS_RESERVES_ADDRESSES
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define QUIREPRESS_RESERVES_ADDRESSES
#endif

// The address sanitizer reserves terabytes at the start: a program that is built with it could never start
// itself under a limit.
std::int64_t AddressLimit(const ProcessRequest& request) {
#ifdef QUIREPRESS_RESERVES_ADDRESSES
    std::error_code failure;
    if (std::filesystem::equivalent(request.arguments.front(), "/proc/self/exe", failure)) return 0;
#endif
    return request.memoryLimit;
}

// This program's environment with the request's additions, as "NAME=VALUE".
std::vector<std::string> MakeEnvironment(const ProcessRequest& request) {
    std::vector<std::string> texts;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view text = *entry;
        bool replaced = false;
        for (const auto& [name, value] : request.environment)
            replaced =
                replaced || (text.substr(0, name.size()) == name && text.substr(name.size(), 1) == "=");
        if (!replaced) texts.emplace_back(text);
    }
    for (const auto& [name, value] : request.environment) texts.emplace_back(name).append("=").append(value);
    return texts;
}

bool HasNul(const std::string& text) {
    return text.find('\0') != std::string::npos;
}

// What the system would cut at a NUL is refused.
bool IsValid(const ProcessRequest& request) {
    if (request.arguments.empty() || request.arguments[0].empty() || HasNul(request.folder)) return false;
    if (!request.rawArguments.empty()) return false;
    for (const std::string& argument : request.arguments)
        if (HasNul(argument)) return false;
    for (const auto& [name, value] : request.environment)
        if (name.empty() || name.find('=') != std::string::npos || HasNul(name) || HasNul(value))
            return false;
    return true;
}

// 0 when it can't be told.
std::int64_t ParentOf(std::int64_t id) {
    const Descriptor file(open(("/proc/" + std::to_string(id) + "/stat").c_str(), O_RDONLY | O_CLOEXEC));
    std::array<char, 512> bytes = {};
    const ssize_t size = read(file.Value(), bytes.data(), bytes.size());
    if (size <= 0) return 0;
    // "ID (NAME) STATE PARENT"; any character may be in the name.
    const std::string_view text(bytes.data(), static_cast<std::size_t>(size));
    const std::size_t name = text.rfind(')');
    if (name == std::string_view::npos || text.size() < name + 4) return 0;
    return ParseLong(text.substr(name + 4));
}

class SupervisedProcess : public ChildProcess {
public:
    SupervisedProcess(pid_t supervisor, Descriptor control, Descriptor report)
        : m_supervisor(supervisor), m_control(std::move(control)), m_report(std::move(report)) {}
    ~SupervisedProcess() override { EndTree(); }
    SupervisedProcess(const SupervisedProcess&) = delete;
    SupervisedProcess& operator=(const SupervisedProcess&) = delete;

    void TakeStreams(Descriptor input, Descriptor output, Descriptor errors) {
        m_input = std::move(input);
        m_output = std::move(output);
        m_errors = std::move(errors);
        for (const Descriptor* stream : {&m_input, &m_output, &m_errors}) MakeNonBlocking(*stream);
    }

    // Waits until the program runs; false, and `systemError`, when it does not.
    bool AwaitStart(int& systemError) {
        const std::optional<TreeReport> report = ReadReport();
        MakeNonBlocking(m_report);
        if (report && report->kind == TreeReport::Kind::kStarted) {
            m_id = report->value;
            return true;
        }
        systemError = report ? report->value : EAGAIN;
        return false;
    }

    bool IsRunning() override {
        SendPending();
        if (!m_exitCode) TakeReport();
        return !m_exitCode;
    }

    int ExitCode() override { return IsRunning() ? -1 : *m_exitCode; }
    std::int64_t Id() const override { return m_id; }

    // Whatever its parents leave behind becomes the supervisor's.
    bool HasInTree(std::int64_t id) override {
        constexpr int kMostParents = 1'000;
        for (int i = 0; i < kMostParents && id > 1; ++i) {
            if (id == m_id || id == m_supervisor) return true;
            id = ParentOf(id);
        }
        return false;
    }

    void EndTree() override {
        if (m_supervisor < 0) return;
        m_control.Close();
        AwaitSupervisor();
        if (!m_exitCode) TakeReport();
        if (!m_exitCode) m_exitCode = kKilled;
    }

    bool WriteInput(std::string_view data) override {
        if (!m_input.IsOpen() || m_inputEnds) return false;
        m_pending += data;
        SendPending();
        return m_input.IsOpen();
    }

    void CloseInput() override {
        m_inputEnds = true;
        SendPending();
    }

    bool ReadOutput(std::string& output) override { return ReadStream(m_output, output); }
    bool ReadErrors(std::string& errors) override { return ReadStream(m_errors, errors); }

private:
    std::optional<TreeReport> ReadReport() {
        TreeReport report;
        const ssize_t size = RetryInterrupted([&] { return read(m_report.Value(), &report, sizeof report); });
        if (size == sizeof report) return report;
        // A supervisor that somebody has killed takes the program with it.
        if (size == 0) report = {TreeReport::Kind::kEnded, kKilled};
        return size == 0 ? std::optional(report) : std::nullopt;
    }

    void TakeReport() {
        const std::optional<TreeReport> report = ReadReport();
        if (report) m_exitCode = report->value;
    }

    // What cannot be ended is not waited for without end.
    void AwaitSupervisor() {
        constexpr int kMostTries = 3000;
        pid_t ended = 0;
        for (int i = 0; i < kMostTries && ended == 0; ++i) {
            ended = RetryInterrupted([&] { return waitpid(m_supervisor, nullptr, WNOHANG); });
            if (ended == 0) poll(nullptr, 0, 1);
        }
        if (ended == 0) {
            kill(m_supervisor, SIGKILL);
            RetryInterrupted([&] { return waitpid(m_supervisor, nullptr, 0); });
        }
        m_supervisor = -1;
    }

    void SendPending() {
        std::size_t sent = 0;
        while (m_input.IsOpen() && sent < m_pending.size()) {
            const ssize_t count = RetryInterrupted(
                [&] { return write(m_input.Value(), m_pending.data() + sent, m_pending.size() - sent); });
            if (count < 0 && errno == EAGAIN) break;
            if (count < 0) m_input.Close();
            if (count > 0) sent += static_cast<std::size_t>(count);
        }
        m_pending.erase(0, sent);
        if (m_inputEnds && m_pending.empty()) m_input.Close();
    }

    bool ReadStream(Descriptor& stream, std::string& data) {
        SendPending();
        std::array<char, 16'384> bytes;
        constexpr int kMostChunks = 64;  // a program that writes without end does not keep this one
        for (int i = 0; i < kMostChunks && stream.IsOpen(); ++i) {
            const ssize_t count =
                RetryInterrupted([&] { return read(stream.Value(), bytes.data(), bytes.size()); });
            if (count < 0 && errno == EAGAIN) break;
            if (count <= 0) stream.Close();
            if (count > 0) data.append(bytes.data(), static_cast<std::size_t>(count));
        }
        return stream.IsOpen();
    }

    pid_t m_supervisor;
    pid_t m_id = 0;
    Descriptor m_control;
    Descriptor m_report;
    std::optional<int> m_exitCode;
    Descriptor m_input;
    Descriptor m_output;
    Descriptor m_errors;
    std::string m_pending;  // for the program's input
    bool m_inputEnds = false;
};

class LinuxProcesses : public Processes {
public:
    std::unique_ptr<ChildProcess> Start(const ProcessRequest& request, int& systemError) override {
        if (!IsValid(request)) {
            systemError = EINVAL;
            return nullptr;
        }
        auto process = StartSupervised(request, systemError);
        return process && process->AwaitStart(systemError) ? std::move(process) : nullptr;
    }

private:
    std::unique_ptr<SupervisedProcess> StartSupervised(const ProcessRequest& request, int& systemError) {
        Pipe control;
        Pipe report;
        Pipe input;
        Pipe output;
        Pipe errors;
        const bool streams = !request.pipes || (input.Open() && output.Open() && errors.Open());
        if (!request.pipes) input.readEnd = Descriptor(open("/dev/null", O_RDONLY | O_CLOEXEC));
        if (!streams || !input.readEnd.IsOpen() || !control.Open() || !report.Open()) {
            systemError = errno;
            return nullptr;
        }
        std::vector<std::string> arguments = request.arguments;
        std::vector<std::string> environment = MakeEnvironment(request);
        const std::vector<char*> argumentPointers = PointersTo(arguments);
        const std::vector<char*> environmentPointers = PointersTo(environment);
        TreeOrder order;
        order.arguments = argumentPointers.data();
        order.environment = environmentPointers.data();
        order.folder = request.folder.empty() ? nullptr : request.folder.c_str();
        order.memoryLimit = AddressLimit(request);
        order.input = input.readEnd.Value();
        order.output = output.writeEnd.Value();
        order.errors = errors.writeEnd.Value();
        order.control = control.readEnd.Value();
        order.report = report.writeEnd.Value();
        const pid_t supervisor = fork();
        if (supervisor == 0) SuperviseTree(order);
        if (supervisor < 0) {
            systemError = errno;
            return nullptr;
        }
        auto process = std::make_unique<SupervisedProcess>(supervisor, std::move(control.writeEnd),
                                                           std::move(report.readEnd));
        if (request.pipes)
            process->TakeStreams(std::move(input.writeEnd), std::move(output.readEnd),
                                 std::move(errors.readEnd));
        return process;
    }
};

}  // namespace

std::unique_ptr<Processes> MakeProcesses() {
    return std::make_unique<LinuxProcesses>();
}

}  // namespace quirepress
