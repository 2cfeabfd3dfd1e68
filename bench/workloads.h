#pragma once

#include <vector>

#include "runner.h"

namespace quirepress {

// Each adds the workloads of one subject.
void AddCupsWorkloads(std::vector<Workload>& workloads);
void AddListWorkloads(std::vector<Workload>& workloads);
void AddLogWorkloads(std::vector<Workload>& workloads);
void AddMergeWorkloads(std::vector<Workload>& workloads);
void AddPageWorkloads(std::vector<Workload>& workloads);
void AddRunWorkloads(std::vector<Workload>& workloads);
void AddSpoolWorkloads(std::vector<Workload>& workloads);
void AddStartWorkloads(std::vector<Workload>& workloads);

}  // namespace quirepress
