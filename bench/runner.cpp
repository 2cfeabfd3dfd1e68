#include "runner.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

extern char** environ;

namespace quirepress {

namespace {

double CostFrom(const rusage& usage, double seconds, CostOf cost) {
    const auto secondsOf = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    if (cost == CostOf::kPeakMemory) return 1024.0 * static_cast<double>(usage.ru_maxrss);
    return cost == CostOf::kWallTime ? seconds : secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
}

double MedianOf(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

}  // namespace

double TimeCall(const std::function<void()>& call) {
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double TimeCommand(const std::vector<std::string>& arguments, CostOf cost) {
    std::vector<char*> words;
    for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    int status = -1;
    rusage usage = {};
    const double seconds = TimeCall([&] {
        pid_t child = 0;
        if (posix_spawnp(&child, words[0], &actions, nullptr, words.data(), environ) == 0)
            wait4(child, &status, 0, &usage);
    });
    posix_spawn_file_actions_destroy(&actions);
    if (!WIFEXITED(status) || WEXITSTATUS(status) >= 126) return -1;
    return CostFrom(usage, seconds, cost);
}

double MeasureChild(const std::function<bool()>& call, CostOf cost) {
    int status = -1;
    rusage usage = {};
    const double seconds = TimeCall([&] {
        const pid_t child = fork();
        if (child == 0) _exit(call() ? 0 : 1);
        if (child > 0) wait4(child, &status, 0, &usage);
    });
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? CostFrom(usage, seconds, cost) : -1;
}

bool RunWorkload(const Workload& workload) {
    std::string whyNot;
    if (workload.prepare && !workload.prepare(whyNot)) {
        std::printf("%-24s not measured: %s\n", workload.name.c_str(), whyNot.c_str());
        return false;
    }
    std::vector<double> ours;
    std::vector<double> peers;
    std::vector<double> ratios;
    for (int i = 0; i <= workload.pairs; ++i) {
        const double our = workload.ours();
        const double peer = workload.peer();
        if (our < 0 || peer <= 0) {
            std::printf("%-24s not measured: %s failed\n", workload.name.c_str(),
                        our < 0 ? "ours" : "the peer");
            return false;
        }
        if (i == 0) continue;  // fills the caches for both
        ours.push_back(our);
        peers.push_back(peer);
        ratios.push_back(our / peer);
    }
    const double ratio = MedianOf(ratios);
    const bool isGood = ratio <= workload.goal;
    std::printf("%-24s %12.6g %12.6g %9.4f %9.4f %s\n", workload.name.c_str(), MedianOf(ours),
                MedianOf(peers), ratio, workload.goal, isGood ? "ok" : "short");
    std::fflush(stdout);
    return isGood;
}

}  // namespace quirepress
