#include "platform/processes.h"

#include <windows.h>

#include <array>

#include "base/path.h"
#include "base/text.h"
#include "platform/windows/command_line.h"
#include "platform/windows/environment.h"
#include "platform/windows/find_program.h"
#include "platform/windows/make_services.h"
#include "platform/windows/pipes.h"
#include "platform/windows/system_handle.h"
#include "platform/windows/system_path.h"
#include "platform/windows/system_text.h"

namespace quirepress {
namespace {

class WindowsProcess : public ChildProcess {
public:
    bool IsRunning() override {
        m_input.ForgetWritten();
        return WaitForSingleObject(m_process.get(), 0) == WAIT_TIMEOUT;
    }
    int ExitCode() override {
        DWORD code = 0;
        GetExitCodeProcess(m_process.get(), &code);
        return static_cast<int>(code);
    }
    void EndTree() override { TerminateJobObject(m_job.get(), ERROR_PROCESS_ABORTED); }
    std::int64_t Id() const override { return m_id; }
    bool HasInTree(std::int64_t id) override {
        const SystemHandle process =
            TakeHandle(OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, static_cast<DWORD>(id)));
        BOOL isInside = FALSE;
        return process && IsProcessInJob(process.get(), m_job.get(), &isInside) != FALSE && isInside != FALSE;
    }

    // A console host that is about to follow its program may hold the input open for a little while.
    bool WriteInput(std::string_view data) override { return IsRunning() && m_input.Write(data); }
    void CloseInput() override { m_input.CloseWhenRead(); }
    bool ReadOutput(std::string& output) override {
        m_input.ForgetWritten();
        return m_output.Read(output);
    }
    bool ReadErrors(std::string& errors) override {
        m_input.ForgetWritten();
        return m_errors.Read(errors);
    }

    // False, with the system's last error set, when the program cannot be started.
    bool Start(const ProcessRequest& request);

private:
    struct Streams {
        SystemHandle input, output, errors;  // the program's ends
    };
    bool OpenStreams(bool pipes, Streams& streams);
    bool MakeJob(std::int64_t memoryLimit);
    bool StartInJob(const std::wstring& program, std::wstring commandLine, const ProcessRequest& request,
                    const Streams& streams);

    InputPipe m_input;
    OutputPipe m_output;
    OutputPipe m_errors;
    SystemHandle m_process;
    SystemHandle m_job;  // its last handle: the system ends what is in it when this is closed
    std::int64_t m_id = 0;
};

SystemHandle OpenNothing(DWORD access) {
    SECURITY_ATTRIBUTES passedOn = {sizeof passedOn, nullptr, TRUE};
    return TakeHandle(CreateFileW(L"NUL", access, FILE_SHARE_READ | FILE_SHARE_WRITE, &passedOn,
                                  OPEN_EXISTING, 0, nullptr));
}

// A copy of one of our own streams that a program may inherit; nothing where we have none.
SystemHandle CopyOwnStream(DWORD stream) {
    HANDLE copy = nullptr;
    const HANDLE own = GetStdHandle(stream);
    const bool copied =
        own != nullptr && own != INVALID_HANDLE_VALUE &&
        DuplicateHandle(GetCurrentProcess(), own, GetCurrentProcess(), &copy, 0, TRUE, DUPLICATE_SAME_ACCESS);
    return copied ? TakeHandle(copy) : OpenNothing(GENERIC_WRITE);
}

bool WindowsProcess::OpenStreams(bool pipes, Streams& streams) {
    if (pipes) {
        streams = {m_input.Open(), m_output.Open(), m_errors.Open()};
    } else {
        streams = {OpenNothing(GENERIC_READ), CopyOwnStream(STD_OUTPUT_HANDLE),
                   CopyOwnStream(STD_ERROR_HANDLE)};
    }
    return streams.input && streams.output && streams.errors;
}

bool WindowsProcess::MakeJob(std::int64_t memoryLimit) {
    m_job = TakeHandle(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags =
        JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE | JOB_OBJECT_LIMIT_DIE_ON_UNHANDLED_EXCEPTION;
    if (memoryLimit > 0) {
        limits.BasicLimitInformation.LimitFlags |= JOB_OBJECT_LIMIT_JOB_MEMORY;
        limits.JobMemoryLimit = static_cast<SIZE_T>(memoryLimit);
    }
    return m_job &&
           SetInformationJobObject(m_job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
}

bool IsBatchFile(const std::wstring& program) {
    const std::string extension = ToLowerAscii(FileExtension(Narrow(program)));
    return extension == ".bat" || extension == ".cmd";
}

// What CreateProcessW runs for the request. False, with the last error set, when there is no such program.
bool ReadCommand(const ProcessRequest& request, std::wstring& program, std::wstring& commandLine) {
    std::vector<std::wstring> words;
    for (const std::string& argument : request.arguments) {
        SetLastError(ERROR_INVALID_PARAMETER);
        if (argument.find('\0') != std::string::npos) return false;
        words.push_back(Widen(argument));
    }
    SetLastError(ERROR_FILE_NOT_FOUND);
    if (words.empty() || words[0].empty()) return false;
    program = FindProgramFile(words[0]);
    if (program.empty()) return false;
    if (!IsBatchFile(program)) {
        commandLine = MakeCommandLine(words);
        if (!request.rawArguments.empty()) commandLine += L' ' + Widen(request.rawArguments);
        return request.rawArguments.find('\0') == std::string::npos;
    }
    // The interpreter would carry out what it finds in such a text.
    SetLastError(ERROR_INVALID_PARAMETER);
    if (!request.rawArguments.empty()) return false;
    words[0] = program;
    program = FindProgramFile(L"cmd.exe");
    if (program.empty()) return false;
    SetLastError(ERROR_INVALID_PARAMETER);
    return MakeBatchCommandLine(words, commandLine);
}

// The one list of handles that a program inherits: its streams, and nothing that others opened meanwhile.
class InheritedHandles {
public:
    explicit InheritedHandles(std::array<HANDLE, 3> handles) : m_handles(handles) {
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        m_memory.resize(size);
        m_valid = InitializeProcThreadAttributeList(Get(), 1, 0, &size);
        m_valid = m_valid && UpdateProcThreadAttribute(Get(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST,
                                                       m_handles.data(), sizeof m_handles, nullptr, nullptr);
    }
    ~InheritedHandles() {
        if (m_valid) DeleteProcThreadAttributeList(Get());
    }
    InheritedHandles(const InheritedHandles&) = delete;
    InheritedHandles& operator=(const InheritedHandles&) = delete;
    bool IsValid() const { return m_valid; }
    LPPROC_THREAD_ATTRIBUTE_LIST Get() {
        return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(m_memory.data());
    }

private:
    std::array<HANDLE, 3> m_handles;
    std::vector<char> m_memory;
    bool m_valid = false;
};

bool WindowsProcess::StartInJob(const std::wstring& program, std::wstring commandLine,
                                const ProcessRequest& request, const Streams& streams) {
    InheritedHandles inherited({streams.input.get(), streams.output.get(), streams.errors.get()});
    if (!inherited.IsValid()) return false;
    STARTUPINFOEXW start = {};
    start.StartupInfo.cb = sizeof start;
    start.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    start.StartupInfo.hStdInput = streams.input.get();
    start.StartupInfo.hStdOutput = streams.output.get();
    start.StartupInfo.hStdError = streams.errors.get();
    start.lpAttributeList = inherited.Get();
    std::wstring environment = MakeEnvironment(request.environment);
    const std::wstring folder = Widen(request.folder);
    // Suspended until it is in the job, so that nothing that it starts escapes. A group of its own: Ctrl-C is
    // for us. No console window pops up where we have no console ourselves.
    DWORD flags = CREATE_SUSPENDED | CREATE_UNICODE_ENVIRONMENT | EXTENDED_STARTUPINFO_PRESENT |
                  CREATE_NEW_PROCESS_GROUP;
    if (request.pipes || GetConsoleWindow() == nullptr) flags |= CREATE_NO_WINDOW;
    PROCESS_INFORMATION started = {};
    if (!CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, TRUE, flags,
                        environment.data(), folder.empty() ? nullptr : folder.c_str(), &start.StartupInfo,
                        &started))
        return false;
    m_process = TakeHandle(started.hProcess);
    const SystemHandle thread = TakeHandle(started.hThread);
    m_id = started.dwProcessId;
    if (AssignProcessToJobObject(m_job.get(), m_process.get()) && ResumeThread(thread.get()) != DWORD(-1))
        return true;
    const DWORD error = GetLastError();
    TerminateProcess(m_process.get(), ERROR_PROCESS_ABORTED);
    SetLastError(error);
    return false;
}

bool WindowsProcess::Start(const ProcessRequest& request) {
    std::wstring program;
    std::wstring commandLine;
    Streams streams;
    return ReadCommand(request, program, commandLine) && OpenStreams(request.pipes, streams) &&
           MakeJob(request.memoryLimit) && StartInJob(program, std::move(commandLine), request, streams);
}

class WindowsProcesses : public Processes {
public:
    std::unique_ptr<ChildProcess> Start(const ProcessRequest& request, int& systemError) override {
        auto process = std::make_unique<WindowsProcess>();
        if (process->Start(request)) return process;
        systemError = static_cast<int>(GetLastError());
        return nullptr;
    }
};

}  // namespace

std::unique_ptr<Processes> MakeProcesses() {
    return std::make_unique<WindowsProcesses>();
}

}  // namespace quirepress
