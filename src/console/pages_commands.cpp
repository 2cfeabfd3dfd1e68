#include <memory>
#include <nlohmann/json.hpp>

#include "app/application.h"
#include "backends/color_split.h"
#include "base/text.h"
#include "console/commands.h"
#include "console/context.h"
#include "console/table.h"
#include "documents/page_colors.h"
#include "documents/page_counts.h"
#include "documents/pdf_counter.h"
#include "platform/files.h"
#include "platform/interrupts.h"
#include "settings/color_printer_options.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

struct PagesOptions {
    std::vector<std::string> files;
    bool full = false;
    bool colors = false;
};

// What each page of a PDF puts on paper; none, with `status`, when it cannot be told.
std::vector<PageColor> JudgeColors(Application& application, const std::string& file, std::string& status) {
    std::vector<PageColor> pages;
    const PdfResult result = application.PdfColors().Judge(
        file, application.Options().m_openPassword, application.ColorPrinters().m_grayTolerance, pages);
    if (result != PdfResult::kDone) status = DescribePdfResult(result, *application.System().files, file);
    return pages;
}

// "c" for each page with colours, "m" for each without.
std::string ColorLetters(const std::vector<PageColor>& pages) {
    std::string letters;
    for (const PageColor page : pages) letters += page == PageColor::kMono ? 'm' : 'c';
    return letters;
}

std::string ColorWords(const std::vector<PageColor>& pages) {
    std::string words;
    for (const ColorRun& run : PlanColorRuns(pages, {})) {
        words += (words.empty() ? "" : ", ") + std::string(run.isColor ? "colour " : "mono ");
        words += std::to_string(run.firstPage);
        if (run.lastPage > run.firstPage) words += "-" + std::to_string(run.lastPage);
    }
    return words;
}

int CountPages(Application& application, const std::string& file, bool full, std::string& status) {
    Files& files = *application.System().files;
    const std::string name = ToLowerAscii(file);
    if (EndsWith(name, ".pdf"))
        return application.PdfPages().CountPages(file, full, application.Options().m_openPassword, status);
    if (EndsWith(name, ".ps") || EndsWith(name, ".eps")) return CountPostScriptPages(files, file, status);
    if (EndsWith(name, ".pcl") || EndsWith(name, ".dat") || EndsWith(name, ".prn"))
        return CountPclPages(files, file, status);
    status = "Unknown";
    return files.Inspect(file).readable ? 0 : -1;
}

// The status is a word of the list's.
std::string WhyUncounted(Files& files, const std::string& file) {
    const FileFacts facts = files.Inspect(file);
    if (facts.kind == FileKind::kMissing) return "there is no such file";
    if (facts.kind != FileKind::kRegular) return "it is no file, but a folder or a device";
    if (!facts.readable) return "the file can't be read";
    if (facts.size == 0) return "the file is empty";
    return EndsWith(ToLowerAscii(file), ".pdf") ? DescribePdfResult(PdfResult::kUnreadable, files, file)
                                                : std::string();
}

int RunPages(Context& context, const PagesOptions& options) {
    Application* application = context.OpenApplication();
    if (application == nullptr) return kExitNotAllDone;
    nlohmann::json files = nlohmann::json::array();
    std::vector<Table::Column> columns = {{"Pages", true}, {"Status"}, {"File", false, 120}};
    if (options.colors) columns.push_back({"Colours", false, 120});
    Table table(columns);
    int exitCode = kExitDone;
    for (const std::string& file : options.files) {
        std::string status;
        std::vector<PageColor> colors;
        const int pages = CountPages(*application, file, options.full, status);
        std::string reason;
        if (pages < 0) reason = WhyUncounted(*application->System().files, file);
        if (options.colors) colors = JudgeColors(*application, file, status);
        const bool isBad = pages < 0 || (options.colors && colors.empty());
        if (isBad) exitCode = kExitNotAllDone;
        nlohmann::json entry = {{"file", ToUtf8ForDisplay(file)}, {"pages", pages}, {"status", status}};
        if (!reason.empty()) entry["reason"] = reason;
        if (!reason.empty() && !Contains(status, reason)) status += ": " + reason;
        std::vector<std::string> row = {std::to_string(pages), status, file};
        if (options.colors) {
            entry["colors"] = ColorLetters(colors);
            row.push_back(ColorWords(colors));
        }
        files.push_back(entry);
        table.AddRow(row, isBad ? Shade::kBad : Shade::kPlain);
        if (InterruptCount() > 0) {
            exitCode = kExitStopped;
            break;
        }
    }
    if (context.WantsJson())
        context.PrintJson({{"files", files}});
    else
        context.Print(table.Render(context.OutputHasColours()));
    return exitCode;
}

}  // namespace

void DefinePagesCommand(CommandSet& commands) {
    CLI::App* command = commands.Add(
        commands.m_program, "pages", "Count the pages of PostScript, PCL and PDF files",
        {"qpr pages letter.ps prices.pdf", "qpr --json pages --full *.pdf", "qpr pages --colors report.pdf"});
    auto options = std::make_shared<PagesOptions>();
    command->add_option("FILE", options->files, "The files")->required()->type_name("");
    command->add_flag("--full", options->full,
                      "Count the pages that are there, not what a PDF says of itself");
    command->add_flag("--colors", options->colors, "Tell the pages of a PDF with colours from those without");
    commands.RunWith(command,
                     [options, &context = commands.m_context] { return RunPages(context, *options); });
}

}  // namespace quirepress
