#include "documents/pdf_worker.h"

#include <algorithm>
#include <utility>

#include "documents/pdf_worker_messages.h"
#include "documents/qpdf_library.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/processes.h"
#include "platform/terminal.h"

namespace quirepress {
namespace {

constexpr std::size_t kMostAnswer = 64;
constexpr std::size_t kMostPages = 10'000'000;
constexpr std::size_t kMostFilling = std::size_t{1} << 20;
constexpr long long kTimesForNewFile = 10;
constexpr int kLongestPause = 20;  // milliseconds between two looks for an answer

std::string AnswerTo(Files& files, QpdfLibrary& library, const std::string& line) {
    PdfWorkerRequest request;
    if (!ParseRequest(line, request)) return FormatAnswer(-1);
    std::vector<PageColor> pages;
    PdfResult result = PdfResult::kDone;
    switch (request.task) {
        case PdfWorkerRequest::Task::kCount:
            return FormatAnswer(library.CountPages(request.path, request.full, request.password));
        case PdfWorkerRequest::Task::kFill: {
            FormFilling filling;
            result = FillPdfForm(files, request.path, request.password, request.target, filling);
            return FormatFilling(result, filling);
        }
        case PdfWorkerRequest::Task::kColors:
            result = library.InspectColors(request.path, request.password, request.tolerance, pages);
            break;
        default:
            result = library.ExtractPages(request.path, request.password, request.ranges, request.target);
            break;
    }
    return FormatResult(result, pages);
}

}  // namespace

PdfWorker::PdfWorker(Processes& processes, EventLoop& loop, Files& files, std::string program,
                     PdfWorkerLimits limits)
    : m_processes(processes), m_loop(loop), m_files(files), m_program(std::move(program)), m_limits(limits) {}

PdfWorker::~PdfWorker() = default;

long long PdfWorker::CountPages(std::string_view path, bool full, std::string_view password) {
    long long pages = -1;
    const PdfWorkerRequest request{std::string(path), full, std::string(password)};
    const auto read = [&](std::string_view answer) { return ParseAnswer(answer, pages); };
    return Ask(request, m_limits.milliseconds, kMostAnswer, read) ? pages : -1;
}

PdfResult PdfWorker::InspectColors(std::string_view path, std::string_view password, int tolerance,
                                   std::vector<PageColor>& pages) {
    PdfWorkerRequest request{std::string(path), false, std::string(password),
                             PdfWorkerRequest::Task::kColors};
    request.tolerance = tolerance;
    std::vector<PageColor> answered;
    const PdfResult result = AskForResult(request, 3LL * m_limits.milliseconds, answered);
    if (result == PdfResult::kDone && answered.empty()) return PdfResult::kGaveUp;
    if (result == PdfResult::kDone) pages = std::move(answered);
    return result;
}

PdfResult PdfWorker::ExtractPages(std::string_view path, std::string_view password,
                                  const std::vector<PdfPageRange>& ranges, std::string_view target) {
    PdfWorkerRequest request{std::string(path), false, std::string(password),
                             PdfWorkerRequest::Task::kExtract};
    request.ranges = ranges;
    request.target = target;
    std::vector<PageColor> none;
    const PdfResult result = AskForResult(request, kTimesForNewFile * m_limits.milliseconds, none);
    if (result == PdfResult::kGaveUp) EraseDraft(target);
    return result;
}

PdfResult PdfWorker::FillForm(std::string_view data, std::string_view password, std::string_view target,
                              FormFilling& filling) {
    PdfWorkerRequest request{std::string(data), false, std::string(password), PdfWorkerRequest::Task::kFill};
    request.target = target;
    PdfResult result = PdfResult::kGaveUp;
    const auto read = [&](std::string_view answer) { return ParseFilling(answer, result, filling); };
    if (Ask(request, kTimesForNewFile * m_limits.milliseconds, kMostFilling, read)) return result;
    EraseDraft(target);
    filling.flaw = DescribePdfResult(PdfResult::kGaveUp);
    return PdfResult::kGaveUp;
}

// A process that was ended leaves it behind.
void PdfWorker::EraseDraft(std::string_view target) {
    m_files.Erase(DraftOfPdf(target));
}

PdfResult PdfWorker::AskForResult(const PdfWorkerRequest& request, long long milliseconds,
                                  std::vector<PageColor>& pages) {
    PdfResult result = PdfResult::kGaveUp;
    const auto read = [&](std::string_view answer) { return ParseResult(answer, result, pages); };
    return Ask(request, milliseconds, kMostAnswer + kMostPages, read) ? result : PdfResult::kGaveUp;
}

bool PdfWorker::Ask(const PdfWorkerRequest& request, long long milliseconds, std::size_t mostAnswer,
                    const std::function<bool(std::string_view)>& read) {
    std::unique_ptr<ChildProcess> process = std::move(m_idle);
    if (process && !process->IsRunning()) process.reset();
    if (!process) process = StartProcess();
    std::string answer;
    if (!process || !process->WriteInput(FormatRequest(request) + "\n") ||
        !WaitForAnswer(*process, milliseconds, mostAnswer, answer) || !read(answer))
        return false;  // and its process ends here
    m_idle = std::move(process);
    return true;
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
bool PdfWorker::WaitForAnswer(ChildProcess& process, long long milliseconds, std::size_t mostAnswer,
                              std::string& answer) {
    const long long deadline = m_loop.MonotonicMilliseconds() + milliseconds;
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
        if (!goesOn || answer.size() > mostAnswer || m_loop.MonotonicMilliseconds() >= deadline ||
            m_isStopped())
            return false;
        m_loop.Wait(pause);
        pause = std::min(2 * pause, kLongestPause);
    }
}

int RunPdfWorker(Files& files, Terminal& terminal) {
    QpdfLibrary library(files);
    std::string line;
    while (terminal.ReadLine(line))
        if (!terminal.WriteOutput(AnswerTo(files, library, line) + "\n")) return 1;
    return 0;
}

}  // namespace quirepress
