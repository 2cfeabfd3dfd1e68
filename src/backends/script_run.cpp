#include "backends/script_run.h"

#include <algorithm>
#include <array>

#include "backends/program_run.h"
#include "base/date_time.h"
#include "base/path.h"
#include "logs/debug_log.h"
#include "platform/clock.h"
#include "platform/shell.h"

namespace quirepress {

namespace {

constexpr long long kMillisecondsInSecond = 1000;

std::string TimeStamp(Clock& clock) {
    return FormatDateTime(clock.ToLocal(clock.Now()));
}

}  // namespace

bool IsScript(std::string_view path) {
    constexpr std::array<std::string_view, 4> kEndings = {".bat", ".BAT", ".vbs", ".VBS"};
    return std::find(kEndings.begin(), kEndings.end(), FileExtension(path)) != kEndings.end();
}

ScriptEnd RunScript(const ScriptRunServices& services, const ScriptRequest& request) {
    ScriptEnd end;
    if (request.path.empty()) {
        services.debugLog.Trace("Scripting activated but No script to run\r\n");
        end.how = ScriptEnd::How::kDone;
        return end;
    }
    ProcessRequest program;
    program.arguments = services.shell.ScriptCommand(request.path);
    if (program.arguments.empty()) {
        end.flaw = "the script can't be read";
        return end;
    }
    program.arguments.insert(program.arguments.end(), request.parameters.begin(), request.parameters.end());
    ProgramWatch watch;
    watch.milliseconds = request.limitSeconds * kMillisecondsInSecond;
    watch.isStopped = request.isStopped;
    services.debugLog.Trace("%s - Running script: '%s' started\r\n", TimeStamp(services.clock), request.path);
    const ProgramResult result = RunProgram(services.processes, services.loop, program, watch);
    services.debugLog.Trace("%s - Running script '%s' finished\r\n", TimeStamp(services.clock), request.path);
    if (result.IsSuccess()) {
        end.how = ScriptEnd::How::kDone;
        return end;
    }
    if (result.end == ProgramResult::End::kStopped) end.how = ScriptEnd::How::kStopped;
    end.flaw = DescribeProgramEnd(request.path, result, watch.milliseconds);
    return end;
}

}  // namespace quirepress
