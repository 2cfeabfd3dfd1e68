#pragma once

#include <memory>

#include "backends/script_run.h"
#include "core/run_way.h"

namespace quirepress {

class Files;
class PrintCommandFile;

// Scripts in the list, which are always waited for. Their parameters are the row's "Processing Parameters",
// else its "Addon Parameters".
std::unique_ptr<RunWay> MakeScriptWay(ScriptRunServices services, Files& files, PrintCommandFile& commands);

}  // namespace quirepress
