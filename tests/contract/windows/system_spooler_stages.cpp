#include "contract/spooler_stage.h"

namespace quirepress {

std::vector<SpoolerStageMaker> SystemSpoolerStages() {
    return {};
}

}  // namespace quirepress
