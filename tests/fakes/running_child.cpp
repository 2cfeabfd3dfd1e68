#include "fakes/running_child.h"

#include "fakes/built_files.h"
#include "platform/event_loop.h"

namespace quirepress {

namespace {

constexpr int kMostWaits = 6'000;
constexpr int kMillisecondsOfAWait = 5;

}  // namespace

RunningChild::RunningChild(Services& services, std::vector<std::string> words) : m_services(services) {
    ProcessRequest request;
    request.arguments = std::move(words);
    request.arguments.insert(request.arguments.begin(), TestChildPath(*services.machine));
    request.pipes = true;
    int error = 0;
    m_process = services.processes->Start(request, error);
}

bool RunningChild::ReadToEnd() {
    for (int i = 0; i < kMostWaits; ++i) {
        const bool moreOutput = m_process->ReadOutput(output);
        const bool moreErrors = m_process->ReadErrors(errors);
        if (!moreOutput && !moreErrors) return true;
        m_services.loop->Wait(kMillisecondsOfAWait);
    }
    return false;
}

std::string RunningChild::ReadLine() {
    for (int i = 0; i < kMostWaits && output.find('\n') == std::string::npos; ++i) {
        if (!m_process->ReadOutput(output)) break;
        m_services.loop->Wait(kMillisecondsOfAWait);
    }
    const std::size_t end = output.find('\n');
    if (end == std::string::npos) return {};
    std::string line = output.substr(0, end);
    output.erase(0, end + 1);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return line;
}

}  // namespace quirepress
