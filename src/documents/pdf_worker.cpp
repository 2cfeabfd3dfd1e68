#include "documents/pdf_worker.h"

#include <algorithm>
#include <utility>

#include "documents/pdf_worker_messages.h"
#include "documents/qpdf_library.h"
#include "platform/event_loop.h"
#include "platform/processes.h"
#include "platform/terminal.h"

namespace quirepress {
namespace {

constexpr std::size_t kMostAnswer = 64;
constexpr int kLongestPause = 20;  // milliseconds between two looks for an answer

}  // namespace

PdfWorker::PdfWorker(Processes& processes, EventLoop& loop, std::string program, PdfWorkerLimits limits)
    : m_processes(processes), m_loop(loop), m_program(std::move(program)), m_limits(limits) {}

PdfWorker::~PdfWorker() = default;

long long PdfWorker::CountPages(std::string_view path, bool full, std::string_view password) {
    const std::string request = FormatRequest({std::string(path), full, std::string(password)}) + "\n";
    std::unique_ptr<ChildProcess> process = std::move(m_idle);
    if (process && !process->IsRunning()) process.reset();
    if (!process) process = StartProcess();
    long long pages = -1;
    std::string answer;
    if (!process || !process->WriteInput(request) || !WaitForAnswer(*process, answer) ||
        !ParseAnswer(answer, pages))
        return -1;  // and its process ends here
    m_idle = std::move(process);
    return pages;
}

std::unique_ptr<ChildProcess> PdfWorker::StartProcess() {
    ProcessRequest request;
    request.arguments = {m_program, "pdf-worker"};
    request.pipes = true;
    request.memoryLimit = m_limits.memory;
    int systemError = 0;
    return m_processes.Start(request, systemError);
}

// One whole line. What the process has to say besides is thrown away, so that it never waits for a reader.
bool PdfWorker::WaitForAnswer(ChildProcess& process, std::string& answer) {
    const long long deadline = m_loop.MonotonicMilliseconds() + m_limits.milliseconds;
    int pause = 1;
    for (;;) {
        process.IsRunning();  // hands on what its input has not taken yet
        std::string errors;
        const bool goesOn = process.ReadOutput(answer);
        process.ReadErrors(errors);
        const std::size_t end = answer.find('\n');
        if (end != std::string::npos) {
            const bool isOne = end + 1 == answer.size();
            answer.resize(end);
            if (!answer.empty() && answer.back() == '\r') answer.pop_back();
            return isOne;
        }
        if (!goesOn || answer.size() > kMostAnswer || m_loop.MonotonicMilliseconds() >= deadline)
            return false;
        m_loop.Wait(pause);
        pause = std::min(2 * pause, kLongestPause);
    }
}

int RunPdfWorker(Files& files, Terminal& terminal) {
    QpdfLibrary library(files);
    std::string line;
    while (terminal.ReadLine(line)) {
        PdfWorkerRequest request;
        const bool good = ParseRequest(line, request);
        const long long pages = good ? library.CountPages(request.path, request.full, request.password) : -1;
        if (!terminal.WriteOutput(FormatAnswer(pages) + "\n")) return 1;
    }
    return 0;
}

}  // namespace quirepress
