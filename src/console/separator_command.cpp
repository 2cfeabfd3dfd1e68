#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "app/application.h"
#include "console/commands.h"
#include "console/context.h"
#include "core/list_pages.h"
#include "platform/files.h"
#include "platform/machine.h"
#include "plugins/separator_page.h"

namespace quirepress {

namespace {

struct SeparatorRequest {
    std::string templatePath;
    std::string separatorPath;
    std::string file;
    std::vector<std::string> set;
};

int MakeSeparator(Context& context, const SeparatorRequest& request) {
    Application* application = context.OpenApplication();
    if (application == nullptr) return kExitNotAllDone;
    Services& services = context.System();
    if (services.files->Inspect(request.file).kind != FileKind::kRegular) {
        context.PrintResult(kExitNotAllDone, request.file + ": there is no such file");
        return kExitNotAllDone;
    }
    SeparatorFacts facts =
        FindSeparatorFacts(*services.files, *services.clock, *services.machine, request.file);
    facts.path = services.files->ResolvePath(request.file);
    const ListPages pages(*services.files, application->PdfPages(), application->Options(), false);
    facts.pages = std::max(0, pages.CountPages(request.file));
    facts.set = request.set;
    if (facts.set.empty()) facts.set.push_back(request.file);
    std::string message;
    const int result =
        GenerateSeparator(*services.files, request.templatePath, request.separatorPath, facts, message);
    context.PrintResult(result, result == 0 ? request.separatorPath : message);
    return result == 0 ? kExitDone : kExitNotAllDone;
}

}  // namespace

void DefineSeparatorCommand(CommandSet& commands) {
    CLI::App* command =
        commands.Add(commands.m_program, "separator", "Make a separator page from a template, as a run does",
                     {"qpr separator cover.rtf out.rtf report.pdf",
                      "qpr separator list.html out.html one.pdf --set one.pdf --set two.pdf"});
    auto request = std::make_shared<SeparatorRequest>();
    const auto add = [&](const char* name, std::string& value, const char* help) {
        command->add_option(name, value, help)->required()->type_name("");
    };
    add("TEMPLATE", request->templatePath, "A text, HTML or RTF file with placeholders: docs/separators.md");
    add("OUT", request->separatorPath, "The separator; a file that exists is replaced");
    add("FILE", request->file, "The file that the separator stands for");
    command
        ->add_option(
            "--set", request->set,
            "A file of the set that [FILENAME1], [FILENAME2]... name, in this order; without it FILE "
            "alone")
        ->expected(1)
        ->take_all()
        ->type_name("FILE");
    commands.RunWith(command,
                     [request, &context = commands.m_context] { return MakeSeparator(context, *request); });
}

}  // namespace quirepress
