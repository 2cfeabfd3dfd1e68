#include <memory>
#include <nlohmann/json.hpp>

#include "app/application.h"
#include "base/format.h"
#include "base/text.h"
#include "console/commands.h"
#include "console/context.h"
#include "console/progress.h"
#include "console/row_output.h"
#include "console/run_session.h"
#include "core/print_list.h"
#include "core/print_run.h"
#include "core/run_snapshot.h"
#include "core/run_way.h"
#include "platform/spooler.h"

namespace quirepress {

namespace {

struct RestoreRequest {
    bool print = false;
    bool discard = false;
    std::string printer;
};

const char* StateOf(const CutOffRun& run, int row) {
    if (IsOfUnknownOutcome(run, row)) return "unknown";
    const CutOffRun::Row& at = run.rows[static_cast<std::size_t>(row)];
    if (at.texts[kColumnSelected] != "Yes") return "not selected";
    return at.mark.pass >= run.copy ? "finished" : "waiting";
}

void ShowCutOffRun(Context& context, Application& application, const CutOffRun& run) {
    PrintList& list = application.List();
    PutRowsBack(list, run);
    nlohmann::json rows = RowsToJson(list);
    int waiting = 0;
    for (int row = 0; row < list.RowCount(); ++row) {
        const std::string state = StateOf(run, row);
        if (state == "waiting") ++waiting;
        rows[static_cast<std::size_t>(row)]["state"] = state;
    }
    if (context.WantsJson()) {
        context.PrintJson({{"printer", ToUtf8ForDisplay(run.printer)},
                           {"copy", run.copy},
                           {"copies", run.copies},
                           {"waiting", waiting},
                           {"rows", rows}});
        return;
    }
    context.Print(RenderRows(list, context.OutputHasColours()));
    if (waiting == 0 && run.copy >= run.copies) {
        context.Print(
            "Cut off at its end: no row waits. \"qpr restore --print\" prints nothing more, and does "
            "what was left: files and job files, reports, mail.\n");
        return;
    }
    std::string waits = waiting == 1 ? "1 row waits" : Format("%d rows wait", waiting);
    if (run.copy < run.copies) waits += Format(", and copies %d to %d of all", run.copy + 1, run.copies);
    context.Print(Format("Cut off in copy %d of %d on %s, %s; \"qpr restore --print\" prints what waits.\n",
                         run.copy, run.copies, ToPrintableLine(run.printer), waits));
}

// False when there is nothing to show or print; the reason is the command's result then.
bool LoadCutOffRun(Context& context, RunSnapshot& snapshot, CutOffRun& run, int& exitCode) {
    exitCode = kExitNotAllDone;
    switch (snapshot.Load(run)) {
        case SnapshotResult::kLoaded:
            return true;
        case SnapshotResult::kNone:
            exitCode = kExitDone;
            context.PrintResult(0, "There is no run to restore.");
            return false;
        case SnapshotResult::kInUse:
            context.PrintResult(1, "A run is under way in this working folder.");
            return false;
        case SnapshotResult::kDamaged:
            break;
    }
    context.PrintResult(
        1, "SnapshotRestore.List can't be read, or is damaged; \"qpr restore --discard\" removes it.");
    return false;
}

// Opening the spooler sets back the default printer that the run has changed. Where it can't be opened now,
// the next start does it.
int Discard(Context& context, Application& application) {
    const bool isDone = application.Snapshot().Discard();
    bool wasNamed = false;
    std::string message;
    if (isDone) application.OpenSpooler(context.m_global.spooler, wasNamed, message);
    context.PrintResult(isDone ? 0 : 1, isDone ? "There is no run to restore any more."
                                               : "The snapshot is in use, or can't be removed.");
    return isDone ? kExitDone : kExitNotAllDone;
}

// Nobody may be there to see it. The run still waits.
void TellNoPrintSystem(Context& context, const std::string& why) {
    Application* application = context.OpenApplication();
    CutOffRun run;
    if (application == nullptr || application->Snapshot().Load(run) != SnapshotResult::kLoaded) return;
    PutRowsBack(application->List(), run);
    TellRefusedRun(*application, run.printer, run.copies, why);
    application->Snapshot().Leave();
}

int RunRestore(Context& context, const RestoreRequest& request) {
    std::string failure;
    Application* application =
        request.print ? context.OpenApplicationWithSpooler(&failure) : context.OpenApplication();
    if (application == nullptr) {
        if (!failure.empty()) TellNoPrintSystem(context, failure);
        return request.print ? kExitNoPrinter : kExitNotAllDone;
    }
    if (request.discard) return Discard(context, *application);
    RunSnapshot& snapshot = application->Snapshot();
    CutOffRun run;
    int exitCode = kExitDone;
    if (!LoadCutOffRun(context, snapshot, run, exitCode)) return exitCode;
    if (!request.print) {
        ShowCutOffRun(context, *application, run);
        return kExitDone;
    }
    if (!request.printer.empty()) run.printer = request.printer;
    ProgressLine progress(*context.System().terminal, application->List(), context.ErrorsHaveColours());
    return RunAndReport(context, *application, run.printer, progress,
                        [&](PrintRun& print) { return print.FinishCutOffRun(run); });
}

}  // namespace

void DefineRestoreCommands(CommandSet& commands) {
    CLI::App* command = commands.Add(commands.m_program, "restore",
                                     "Show, or finish, a run that was cut off (SNAPSHOTRESTORE)",
                                     {"qpr restore", "qpr restore --print",
                                      "qpr restore --print --printer Office", "qpr restore --discard"});
    auto request = std::make_shared<RestoreRequest>();
    CLI::Option* print = command->add_flag(
        "--print", request->print,
        "Print what waits. What was finished, and the row that was at work, is not printed again");
    command->add_option("--printer", request->printer, "Another printer than the one of the run")
        ->needs(print)
        ->type_name("NAME");
    command->add_flag("--discard", request->discard, "Forget the run")->excludes(print);
    commands.RunWith(command,
                     [request, &context = commands.m_context] { return RunRestore(context, *request); });
}

}  // namespace quirepress
