#include "core/print_run_scripts.h"

#include "base/command_words.h"
#include "platform/files.h"
#include "settings/print_commands.h"

namespace quirepress {

namespace {

constexpr std::string_view kRunningScript = "Running script: ";

class ScriptWay : public RunWay {
public:
    ScriptWay(ScriptRunServices services, Files& files, PrintCommandFile& commands)
        : m_services(services), m_files(files), m_commands(commands) {}

    // The spelling ".BAT" makes no command item of a file, but a script all the same.
    bool Takes(const RunItem& item) override {
        const bool mayBe = item.kind == ItemKind::kCommand || item.kind == ItemKind::kDocument;
        return mayBe && IsScript(item.path);
    }

    WayResult Process(const RunItem& item, WayFeedback& feedback) override {
        WayResult result;
        if (m_files.Inspect(item.path).kind == FileKind::kMissing) {
            result.status = kStatusNoFile;
            return result;
        }
        ScriptRequest request;
        request.path = item.path;
        const std::string& parameters =
            item.processingParameters.empty() ? item.addonParameters : item.processingParameters;
        if (!SplitWords(parameters, request.parameters)) {
            result.status = "Error - a quotation mark in the script's parameters is not closed";
            return result;
        }
        request.limitSeconds = m_commands.Table().scriptLimitSeconds;
        request.isStopped = [&feedback] { return feedback.IsStopped(); };
        feedback.ShowRowStatus(std::string(kRunningScript) + item.path);
        const ScriptEnd end = RunScript(m_services, request);
        if (end.how == ScriptEnd::How::kDone) {
            result.end = WayResult::End::kPrinted;
            result.status = kStatusDone;
            return result;
        }
        if (end.how == ScriptEnd::How::kStopped) result.end = WayResult::End::kStopped;
        result.status = "Error - " + end.flaw;
        return result;
    }

private:
    ScriptRunServices m_services;
    Files& m_files;
    PrintCommandFile& m_commands;
};

}  // namespace

std::unique_ptr<RunWay> MakeScriptWay(ScriptRunServices services, Files& files, PrintCommandFile& commands) {
    return std::make_unique<ScriptWay>(services, files, commands);
}

}  // namespace quirepress
