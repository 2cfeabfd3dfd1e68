// Compares our work with that of a peer: quirepress_bench [NAME...]. docs/performance.md tells what each
// workload is.

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "workloads.h"

int main(int argumentCount, char** arguments) {
    using quirepress::Workload;
    std::vector<Workload> workloads;
    quirepress::AddListWorkloads(workloads);
    quirepress::AddLogWorkloads(workloads);
    quirepress::AddMergeWorkloads(workloads);
    quirepress::AddPageWorkloads(workloads);
    quirepress::AddRunWorkloads(workloads);
    quirepress::AddSpoolWorkloads(workloads);
    quirepress::AddStartWorkloads(workloads);
    quirepress::AddCupsWorkloads(workloads);

    const std::vector<std::string> names(arguments + 1, arguments + argumentCount);
    for (const std::string& name : names) {
        const auto isNamed = [&](const Workload& workload) { return workload.name == name; };
        if (std::none_of(workloads.begin(), workloads.end(), isNamed)) {
            std::fprintf(stderr, "There is no workload %s; these are:\n", name.c_str());
            for (const Workload& workload : workloads) std::fprintf(stderr, "  %s\n", workload.name.c_str());
            return 2;
        }
    }
    std::printf("%-24s %12s %12s %9s %9s\n", "NAME", "OURS", "PEER", "RATIO", "GOAL");
    bool allGood = true;
    for (const Workload& workload : workloads) {
        if (!names.empty() && std::find(names.begin(), names.end(), workload.name) == names.end()) continue;
        allGood = RunWorkload(workload) && allGood;
    }
    return allGood ? 0 : 1;
}
