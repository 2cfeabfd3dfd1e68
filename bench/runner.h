#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quirepress {

// One comparison: both sides do the same work and answer what it cost (seconds, or another unit alike).
struct Workload {
    std::string name;
    double goal = 1;                                   // ours / peer is at most this
    std::function<bool(std::string& whyNot)> prepare;  // false: it can't be measured here
    std::function<double()> ours;
    std::function<double()> peer;
    int pairs = 7;
};

// Runs the pairs in turn, after one that is not counted, and prints
// "NAME OURS PEER RATIO GOAL ok|short" with the medians. False when it is short or can't be measured.
bool RunWorkload(const Workload& workload);

enum class CostOf { kWallTime, kProcessorTime, kPeakMemory };  // seconds, or bytes

// The cost of a whole process, with what it starts; its output goes to nowhere. Negative when it failed.
double TimeCommand(const std::vector<std::string>& arguments, CostOf cost = CostOf::kWallTime);

// The cost of a call in a process of its own; negative when it answers false.
double MeasureChild(const std::function<bool()>& call, CostOf cost);

// Wall seconds of a call.
double TimeCall(const std::function<void()>& call);

}  // namespace quirepress
