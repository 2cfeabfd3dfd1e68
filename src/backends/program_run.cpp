#include "backends/program_run.h"

#include <algorithm>

#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "platform/event_loop.h"

namespace quirepress {

namespace {

constexpr int kLongestPause = 100;  // milliseconds between two looks
constexpr long long kMovePause = 1000;
constexpr std::size_t kMostWords = 16'384;

// Reads what there is, so that the program never waits for a reader, and keeps its end.
void TakeWords(ChildProcess& process, std::string& said) {
    std::string output;
    process.ReadOutput(output);
    said += output;
    process.ReadErrors(said);
    if (said.size() > kMostWords) said.erase(0, said.size() - kMostWords / 2);
}

ProgramResult::End AwaitProgram(EventLoop& loop, ChildProcess& process, const ProgramWatch& watch,
                                std::string& said) {
    const long long start = loop.MonotonicMilliseconds();
    long long deadline = start + watch.milliseconds;
    long long nextLook = start + kMovePause;
    int pause = 1;
    for (;;) {
        const bool isRunning = process.IsRunning();
        TakeWords(process, said);
        if (!isRunning) return ProgramResult::End::kEnded;
        if (watch.isStopped()) return ProgramResult::End::kStopped;
        const long long now = loop.MonotonicMilliseconds();
        if (now >= nextLook) {
            nextLook = now + kMovePause;
            if (watch.hasMoved())
                deadline = std::min(now + watch.milliseconds, start + watch.mostMilliseconds);
        }
        if (watch.milliseconds > 0 && now >= deadline) return ProgramResult::End::kTimedOut;
        loop.Wait(pause);
        pause = std::min(2 * pause, kLongestPause);
    }
}

}  // namespace

ProgramResult RunProgram(Processes& processes, EventLoop& loop, ProcessRequest request,
                         const ProgramWatch& watch) {
    ProgramResult result;
    request.pipes = true;
    const std::unique_ptr<ChildProcess> process = processes.Start(request, result.systemError);
    if (!process) return result;
    process->CloseInput();
    std::string said;
    result.end = AwaitProgram(loop, *process, watch, said);
    process->EndTree();
    result.exitCode = process->ExitCode();
    result.lastWords = LastWords(said);
    return result;
}

std::string LastWords(std::string_view said) {
    constexpr std::size_t kLongest = 200;
    while (!said.empty() && (said.back() == '\n' || said.back() == '\r' || said.back() == ' '))
        said.remove_suffix(1);
    const std::size_t start = said.rfind('\n');
    if (start != std::string_view::npos) said.remove_prefix(start + 1);
    const std::string line = ToPrintableLine(said);
    return std::string(CutToSize(line, kLongest));
}

std::string DescribeProgramEnd(std::string_view program, const ProgramResult& result,
                               long long milliseconds) {
    const std::string name(FileTitle(program));
    std::string text;
    switch (result.end) {
        case ProgramResult::End::kNotStarted:
            return Format("%s can't be started (error %d)", name, result.systemError);
        case ProgramResult::End::kStopped:
            return name + " was stopped";
        case ProgramResult::End::kTimedOut:
            text = Format("%s did not end in its time of %d seconds", name, milliseconds / 1000);
            break;
        case ProgramResult::End::kEnded:
            text = Format("%s ended with code %d", name, result.exitCode);
            break;
    }
    return result.lastWords.empty() ? text : text + ": " + result.lastWords;
}

}  // namespace quirepress
