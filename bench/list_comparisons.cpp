#include <memory>

#include "list_workloads.h"
#include "workloads.h"

namespace quirepress {

namespace {

constexpr int kFiles = 100'000;
constexpr double kBytesPerRow = 1.2 * 1024;

std::string Folder() {
    return "build/bench-files";
}

bool MakeFiles(std::string& whyNot) {
    if (MakeSmallFiles(Folder(), kFiles)) return true;
    whyNot = "the files can't be made in " + Folder();
    return false;
}

}  // namespace

void AddListWorkloads(std::vector<Workload>& workloads) {
    workloads.push_back({"list-insert", 2.5, MakeFiles,
                         [] {
                             const ListWorkload result = InsertFolderIntoList(Folder());
                             return result.rows == kFiles ? result.seconds : -1;
                         },
                         [] {
                             return TimeCommand({"find", Folder(), "-type", "f", "-printf", "%s %T@\\n"},
                                                CostOf::kProcessorTime);
                         },
                         9});
    workloads.push_back({"list-memory", 1, MakeFiles,
                         [] { return InsertFolderIntoList(Folder()).bytesPerRow; },
                         [] { return kBytesPerRow; }, 1});
}

}  // namespace quirepress
