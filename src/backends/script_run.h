#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quirepress {

class Clock;
class DebugLog;
class EventLoop;
class Processes;
class Shell;

struct ScriptRunServices {
    Shell& shell;
    Processes& processes;
    EventLoop& loop;
    Clock& clock;
    DebugLog& debugLog;
};

struct ScriptRequest {
    std::string path;
    std::vector<std::string> parameters;
    int limitSeconds = 0;  // 0: as long as it takes
    std::function<bool()> isStopped = [] { return false; };
};

struct ScriptEnd {
    enum class How { kDone, kFailed, kStopped } how = How::kFailed;
    std::string flaw;  // a sentence part
};

// Whether a path has the ending of a script: ".bat", ".BAT", ".vbs", ".VBS".
bool IsScript(std::string_view path);

// Runs a script to its end and ends whatever it has left behind. An exit code other than 0 is a failure. An
// empty path runs nothing and is none. May pump.
ScriptEnd RunScript(const ScriptRunServices& services, const ScriptRequest& request);

}  // namespace quirepress
