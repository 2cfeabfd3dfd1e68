#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

#include "app/application.h"
#include "backends/balance_check.h"
#include "backends/printer_selection.h"
#include "base/path.h"
#include "base/text.h"
#include "console/commands.h"
#include "console/context.h"
#include "console/progress.h"
#include "console/row_output.h"
#include "console/run_session.h"
#include "core/file_target.h"
#include "core/list_commands.h"
#include "core/print_list.h"
#include "core/print_run.h"
#include "core/print_run_source.h"
#include "core/run_outcomes.h"
#include "platform/files.h"
#include "platform/interrupts.h"
#include "platform/prompts.h"
#include "platform/spooler.h"

namespace quirepress {

namespace {

struct RowOptions {
    std::vector<std::string> items;
    std::string moveTo;
    ItemTexts texts;
    bool direct = false;
    bool applyBalancing = false;
    bool clearBalancing = false;
    int select = 1;
};

void DefineRowOptions(CLI::App* command, RowOptions& row) {
    command
        ->add_option("ITEM", row.items,
                     "A document, folder, archive, job file, command item, separator text or address; "
                     "after \"--\" a name may begin with a dash")
        ->required()
        ->type_name("");
    command->add_option("--move-to", row.moveTo, "Folder for the file after printing (\"copy:DIR\" copies)")
        ->type_name("DIR");
    command->add_option("--move-to-on-error", row.texts.moveToOnError, "Folder for the file when it fails")
        ->type_name("DIR");
    command->add_option("--addon-params", row.texts.addonParameters, "Parameters for the add-on")
        ->type_name("TEXT");
    command->add_option("--processing-params", row.texts.processingParameters, "Processing parameters")
        ->type_name("TEXT");
    command->add_option("--title", row.texts.fileTitle, "Title of the document")->type_name("TEXT");
    command->add_option("--extra", row.texts.extraOptions, "Extra options, such as -r3")->type_name("TEXT");
    command->add_option("--profile", row.texts.profiling, "Profile of the row")->type_name("TITLE");
    command->add_option("--priority", row.texts.priority, "Priority of the job, 1 to 99")
        ->check(CLI::Range(1, 99))
        ->type_name("N");
    command
        ->add_option("--balanced-printers", row.texts.balancedPrinters,
                     "Printers of balancedprinters.ini to spread over, by their numbers (1 to 10) or names "
                     "with , or ; between; for rows that name none of their own")
        ->type_name("LIST");
    CLI::Option* apply = command->add_flag("--apply-balancing", row.applyBalancing,
                                           "Let all rows, or the ticked ones, be spread over those printers, "
                                           "else over all of balancedprinters.ini");
    command
        ->add_flag("--clear-balancing", row.clearBalancing,
                   "Take the printers to spread over from all rows, or from the ticked ones")
        ->excludes(apply);
    command->add_flag("--direct", row.direct, "Send the bytes as they are, whatever the type");
}

// Rows hold full paths, so that they stay good wherever a program changes to. What is no file here (a command
// item, a separator, an address, a name that is missing) stays as it was given.
std::string WithFullPath(Files& files, std::string item) {
    if (IsAbsolutePath(item) || files.Inspect(item).kind == FileKind::kMissing) return item;
    while (StartsWith(item, "./")) item.erase(0, 2);
    return JoinPath(files.ResolvePath("."), item);
}

// A folder is meant from where the user stands; the markers and "copy:" stay.
std::string WithFullFolder(Files& files, const std::string& moveTo) {
    const MoveTarget target = ParseMoveTo(moveTo);
    const bool isFolder = target.action == MoveAction::kMove || target.action == MoveAction::kCopy;
    if (!isFolder || target.folder.empty() || IsAbsolutePath(target.folder)) return moveTo;
    return (target.action == MoveAction::kCopy ? "copy:" : "") +
           JoinPath(files.ResolvePath("."), target.folder);
}

// The two commands of the list, for what has been loaded.
void ChangeBalancing(Application& application, const RowOptions& row) {
    PrintList& list = application.List();
    Prompts& prompts = application.UserPrompts();
    const SelectedRows ticked = [&list] {
        std::vector<int> rows;
        for (int i = 0; i < list.RowCount(); ++i)
            if (list.Text(i, kColumnSelected) == "Yes") rows.push_back(i);
        return rows;
    };
    if (row.clearBalancing) LoadBalancingClearCommand(list, prompts, ticked);
    if (!row.applyBalancing) return;
    std::string printers = row.texts.balancedPrinters;
    if (printers.empty()) printers = TextOfBalancedPrinters(application.BalancedPrinters());
    if (printers.empty())
        prompts.ShowBox("Printer Load Balancing",
                        CheckBalanceOptions(application.BalancedPrinters()).front());
    else
        LoadBalancingCommand(list, prompts, ticked, printers);
}

enum class Loading { kWhole, kIncomplete, kStopped };

// Puts the items into the list. It is incomplete without what a job file that can't be read would bring.
Loading LoadItems(Application& application, const RowOptions& row) {
    PrintList& list = application.List();
    Files& files = *application.System().files;
    const std::string moveTo = WithFullFolder(files, row.moveTo);
    ItemTexts texts = row.texts;
    texts.moveToOnError = WithFullFolder(files, row.texts.moveToOnError);
    Loading loading = Loading::kWhole;
    for (const std::string& item : ShowSeparators(row.items)) {
        const int before = list.RowCount();
        const std::string path = WithFullPath(files, item);
        if (list.InsertFileIntoList(path, row.select, moveTo, texts) == 0) loading = Loading::kIncomplete;
        for (int i = before; row.direct && i < list.RowCount(); ++i)
            list.SetText(i, kColumnPrintDirect, "Yes");
        if (InterruptCount() > 0) return Loading::kStopped;
    }
    ChangeBalancing(application, row);
    return loading;
}

int ExitCodeOf(Loading loading) {
    if (loading == Loading::kStopped) return kExitStopped;
    return loading == Loading::kWhole ? kExitDone : kExitNotAllDone;
}

int RunList(Context& context, const RowOptions& row) {
    Application* application = context.OpenApplication();
    if (application == nullptr) return kExitNotAllDone;
    if (!CheckBalancedPrinters(context, *application, row.texts.balancedPrinters)) return kExitUsage;
    const Loading loading = LoadItems(*application, row);
    if (context.WantsJson())
        context.PrintJson({{"rows", RowsToJson(application->List())}});
    else
        context.Print(RenderRows(application->List(), context.OutputHasColours()));
    return ExitCodeOf(loading);
}

struct PrintOptions {
    RowOptions row;
    std::string printer;
    int copies = 0;
    bool balance = false;
    bool append = false;
    bool dryRun = false;
};

// Nobody may be there to see it: the log, the mail and the report tell that nothing of the list was printed.
void TellNoPrintSystem(Context& context, const PrintOptions& options, const std::string& why) {
    Application* application = context.OpenApplication();
    if (application == nullptr || options.dryRun) return;
    LoadItems(*application, options.row);
    TellRefusedRun(*application, options.printer, std::max(1, options.copies), why);
}

int RunPrint(Context& context, const PrintOptions& options) {
    std::string failure;
    Application* application = context.OpenApplicationWithSpooler(&failure);
    if (application == nullptr) {
        if (!failure.empty()) TellNoPrintSystem(context, options, failure);
        return kExitNoPrinter;
    }
    const std::string printer =
        options.printer.empty() ? application->Selection().OwnDefaultPrinter() : options.printer;
    // A run tells by itself, also whom it sends mail, that there is no such printer.
    if (options.dryRun && !CheckPrinterExists(context, *application, printer)) return kExitNoPrinter;
    if (!CheckBalancedPrinters(context, *application, options.row.texts.balancedPrinters)) return kExitUsage;
    ProgressLine progress(*context.System().terminal, application->List(), context.ErrorsHaveColours());
    progress.Show("Loading the list ...");
    const Loading loading = LoadItems(*application, options.row);
    progress.Clear();
    if (loading == Loading::kStopped) {
        context.PrintResult(kExitStopped, "Stopped while the list was loading; nothing was printed.");
        return kExitStopped;
    }
    if (options.dryRun) {
        if (context.WantsJson())
            context.PrintJson(
                {{"printer", ToUtf8ForDisplay(printer)}, {"rows", RowsToJson(application->List())}});
        else
            context.Print(RenderRows(application->List(), context.OutputHasColours()));
        const bool isAllThere = FindMissedRows(*application->System().files, application->List()).empty();
        return isAllThere ? ExitCodeOf(loading) : kExitNotAllDone;
    }
    const auto start = [&](PrintRun& run) {
        run.UsePrinter(printer);
        run.UseBalancing(options.balance);
        run.UseAppending(options.append);
        if (options.copies > 0) run.SetCopies(options.copies);
        return run.OnButtonPrint();
    };
    const int exitCode = RunAndReport(context, *application, printer, progress, start);
    return exitCode == kExitDone ? ExitCodeOf(loading) : exitCode;
}

void DefinePrint(CommandSet& commands) {
    CLI::App* command =
        commands.Add(commands.m_program, "print", "Load the items into a list and print it",
                     {"qpr print invoices/", "qpr print --printer Office --copies 2 letter.ps plan.hpgl",
                      "qpr print --direct -- label.zpl -odd-name.ps", "qpr print --balance reports/",
                      "qpr --json print archive.zip"});
    auto options = std::make_shared<PrintOptions>();
    DefineRowOptions(command, options->row);
    command->add_option("--printer", options->printer, "The printer; else the default printer")
        ->type_name("NAME");
    command->add_option("--copies", options->copies, "How often the whole list is printed")
        ->check(CLI::Range(1, 9999))
        ->type_name("N");
    command->add_flag("--balance", options->balance,
                      "Spread the documents over the printers of balancedprinters.ini");
    command->add_flag("--append", options->append,
                      "Merge the PDFs of the list into one document, printed where the first of them stands");
    command->add_flag("--dry-run", options->dryRun, "Load and show the list, print nothing");
    commands.RunWith(command,
                     [options, &context = commands.m_context] { return RunPrint(context, *options); });
}

void DefineList(CommandSet& commands) {
    CLI::App* command =
        commands.Add(commands.m_program, "list", "Load the items into a list and show its rows",
                     {"qpr list invoices/", "qpr --json list letter.ps -------Separator------- notes.txt"});
    auto options = std::make_shared<RowOptions>();
    DefineRowOptions(command, *options);
    command->add_option("--select", options->select, "1 ticks the rows, 0 does not")
        ->check(CLI::Range(0, 1))
        ->type_name("0|1");
    commands.RunWith(command,
                     [options, &context = commands.m_context] { return RunList(context, *options); });
}

}  // namespace

void DefinePrintCommands(CommandSet& commands) {
    DefinePrint(commands);
    DefineList(commands);
}

}  // namespace quirepress
