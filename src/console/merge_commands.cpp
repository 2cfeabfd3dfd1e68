#include <memory>
#include <nlohmann/json.hpp>

#include "app/application.h"
#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "console/commands.h"
#include "console/context.h"
#include "console/progress.h"
#include "core/scratch_folder.h"
#include "documents/pdf_merge.h"
#include "documents/pdf_worker.h"
#include "platform/event_loop.h"
#include "platform/interrupts.h"
#include "platform/machine.h"

namespace quirepress {

namespace {

struct MergeOptions {
    std::string target;
    std::vector<std::string> inputs;
};

PdfMergeOutcome MergeWithProgress(Context& context, Application& application, const MergeOptions& options) {
    Services& services = context.System();
    const ScratchFolder scratch(*services.files, application.Options(), application.WorkingFolder(), "Merge");
    PdfWorker worker(*services.processes, *services.loop, *services.files, services.machine->ProgramPath());
    ProgressLine progress(*services.terminal, application.List(), context.ErrorsHaveColours());
    worker.UseStop([] { return InterruptCount() > 0; });
    PdfMergeRequest request;
    request.target = options.target;
    request.inputs = options.inputs;
    request.scratchFolder = scratch.Path();
    request.password = application.Options().m_openPassword;
    request.progress = [&](std::size_t done) {
        constexpr int kBarWidth = 20;
        const std::size_t all = request.inputs.size();
        const double share = static_cast<double>(done) / static_cast<double>(all);
        progress.Show(RenderBar(share, kBarWidth) + Format(" File: %d of %d  ", done + 1, all) +
                      std::string(FileTitle(request.inputs[done])));
        services.loop->Pump();
        return InterruptCount() == 0;
    };
    PdfMergeOutcome outcome = MergePdfs(*services.files, worker, request);
    progress.Clear();
    // The file at work was given up for it.
    if (outcome.end == PdfMergeOutcome::End::kFailed && InterruptCount() > 0)
        outcome.end = PdfMergeOutcome::End::kStopped;
    return outcome;
}

int RunMerge(Context& context, const MergeOptions& options) {
    Application* application = context.OpenApplication();
    if (application == nullptr) return kExitNotAllDone;
    const PdfMergeOutcome outcome = MergeWithProgress(context, *application, options);
    if (outcome.end == PdfMergeOutcome::End::kStopped) {
        context.PrintResult(kExitStopped, "Stopped; nothing was written");
        return kExitStopped;
    }
    if (outcome.end == PdfMergeOutcome::End::kFailed) {
        context.PrintResult(kExitNotAllDone, outcome.message + "; nothing was written");
        return kExitNotAllDone;
    }
    const std::size_t files = options.inputs.size();
    const std::string message = Format("%d %s, %d %s", files, files == 1 ? "file" : "files", outcome.pages,
                                       outcome.pages == 1 ? "page" : "pages");
    if (context.WantsJson())
        context.PrintJson({{"result", kExitDone}, {"message", message}, {"pages", outcome.pages}});
    else
        context.Print(ToPrintableLine(options.target) + ": " + message + "\n");
    return kExitDone;
}

}  // namespace

void DefineMergeCommands(CommandSet& commands) {
    CLI::App* command = commands.Add(
        commands.m_program, "merge", "Merge PDF files into one, in their order",
        {"qpr merge all.pdf cover.pdf report.pdf appendix.pdf", "qpr --json merge night.pdf invoices/*.pdf",
         "qpr merge -- book.pdf book.pdf -odd-name.pdf"});
    auto options = std::make_shared<MergeOptions>();
    command
        ->add_option("OUT", options->target,
                     "The merged file; one that exists is replaced, and may be among those that are merged")
        ->required()
        ->type_name("");
    command
        ->add_option("IN", options->inputs,
                     "The files. Their pages stay as they are; outlines and attachments are not kept. "
                     "When one can't be read, nothing is written")
        ->required()
        ->type_name("");
    commands.RunWith(command,
                     [options, &context = commands.m_context] { return RunMerge(context, *options); });
}

}  // namespace quirepress
