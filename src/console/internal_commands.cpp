#include <memory>

#include "console/commands.h"
#include "console/context.h"
#include "console/reference.h"
#include "documents/pdf_worker.h"
#include "settings/settings_catalog.h"

namespace quirepress {

namespace {

int PrintReference(CommandSet& commands, const std::string& form) {
    commands.m_context.Print(form == "settings" ? RenderSettingsReference()
                                                : RenderReference(commands.m_program, form));
    return kExitDone;
}

}  // namespace

void DefineInternalCommands(CommandSet& commands) {
    // Made for the packages and the documents, out of the program's own definitions.
    CLI::App* reference = commands.m_program.add_subcommand("reference", "Print the man page or completions");
    reference->group("");
    auto form = std::make_shared<std::string>();
    reference->add_option("FORM", *form, "man, bash, zsh, fish or settings")
        ->required()
        ->check(CLI::IsMember({"man", "bash", "zsh", "fish", "settings"}))
        ->type_name("");
    commands.RunWith(reference, [form, &commands] { return PrintReference(commands, *form); });

    // Started by the program itself, so that a hostile file can take down no more than this process.
    CLI::App* worker = commands.m_program.add_subcommand("pdf-worker", "Answer questions about PDF files");
    worker->group("");
    commands.RunWith(worker, [&context = commands.m_context] {
        return RunPdfWorker(*context.System().files, *context.System().terminal);
    });
}

}  // namespace quirepress
