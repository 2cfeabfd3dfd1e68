#include <memory>
#include <nlohmann/json.hpp>

#include "app/application.h"
#include "base/path.h"
#include "base/text.h"
#include "console/commands.h"
#include "console/context.h"
#include "console/table.h"
#include "logs/duplicate_check.h"
#include "logs/log_exports.h"
#include "logs/log_housekeeping.h"
#include "logs/log_viewer.h"
#include "logs/print_log.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "settings/monitor_value.h"

namespace quirepress {

namespace {

int ShowLog(Context& context, const std::string& name) {
    Application* application = context.OpenApplication();
    if (application == nullptr) return kExitNotAllDone;
    const ViewedLog& log = *FindViewedLog(name);
    Files& files = *application->System().files;
    const std::string path = application->PathOf(log.fileName);
    std::vector<std::vector<std::string>> records;
    if (ReadRecords(files, path, log.layout(), records) != 0 &&
        files.Inspect(path).kind != FileKind::kMissing) {
        context.PrintResult(1, ReadFailureText(log, path));
        return kExitNotAllDone;
    }
    if (context.WantsJson()) {
        nlohmann::json list = nlohmann::json::array();
        for (const std::vector<std::string>& record : records) {
            nlohmann::json fields = nlohmann::json::array();
            for (const std::string& field : record) fields.push_back(ToUtf8ForDisplay(field));
            list.push_back(std::move(fields));
        }
        context.PrintJson({{"records", list}});
        return kExitDone;
    }
    std::vector<Table::Column> columns;
    for (const RecordColumn& column : log.layout().columns) columns.push_back({column.title});
    Table table(columns);
    for (std::vector<std::string>& record : records) table.AddRow(std::move(record));
    context.Print(table.Render(context.OutputHasColours()));
    return kExitDone;
}

struct ExportOptions {
    std::string name;
    std::string target;
    bool isSafe = false;
};

int ExportLog(Context& context, const ExportOptions& options) {
    Application* application = context.OpenApplication();
    if (application == nullptr) return kExitNotAllDone;
    LogExport request;
    request.logPath = application->PathOf(FindViewedLog(options.name)->fileName);
    request.target = options.target;
    request.isGuarded = options.isSafe;
    const auto exportCsv = options.name == "print" ? ExportPrintLogCsv : ExportErrorLogCsv;
    const int result = exportCsv(*application->System().files, application->UserPrompts(), request);
    context.PrintResult(result, result == 0 ? "" : "The log was not exported.");
    return result == 0 ? kExitDone : kExitNotAllDone;
}

struct CheckOptions {
    std::string file;
    int folder = -1;
};

// The logs name files by their full paths; those that are gone may be in them too.
std::string FullPathOf(Files& files, std::string file) {
    if (IsAbsolutePath(file)) return file;
    while (StartsWith(file, "./")) file.erase(0, 2);
    return JoinPath(files.ResolvePath("."), file);
}

int CheckLog(Context& context, const CheckOptions& options) {
    Application* application = context.OpenApplication();
    if (application == nullptr) return kExitNotAllDone;
    const Services& system = application->System();
    const SettingsPlace place = application->Settings();
    DuplicateCheck check(*system.clock, application->Debug(), place,
                         [&place](int folder) { return ReadMonitorValue(place, "MONCHECK_LOG", folder); });
    const HandledBy handledBy = check.CheckPrintLog(FullPathOf(*system.files, options.file), options.folder);
    const bool isHandled = handledBy != HandledBy::kNothing;
    const std::string log = handledBy == HandledBy::kPrintLog ? "print" : "error";
    if (context.WantsJson())
        context.PrintJson({{"handled", isHandled}, {"log", isHandled ? nlohmann::json(log) : nullptr}});
    else
        context.Print(isHandled ? "Handled before: it is in the " + log + " log.\n" : "New.\n");
    return isHandled ? kExitNotAllDone : kExitDone;
}

int CleanLogs(Context& context, bool isForced) {
    Application* application = context.OpenApplication();
    if (application == nullptr) return kExitNotAllDone;
    LogOptions options;
    LoadLogOptions(options, application->Settings());
    const Services& system = application->System();
    LogHousekeeping housekeeping(*system.clock, *system.loop, application->Debug(), application->Settings());
    const LogCleanup cleanup = housekeeping.RunLogHousekeeping(options, isForced);
    if (cleanup.hasFailed) context.Complain("the print log could not be cleaned up; it is as it was");
    if (!options.m_removeMissing && !options.m_removeOld)
        context.Complain("nothing is to be removed: qpr settings set log NOLONGER, or CLEAROLDER");
    if (context.WantsJson())
        context.PrintJson({{"missing", cleanup.missing}, {"old", cleanup.old}});
    else
        context.Print("Removed records: " + std::to_string(cleanup.missing) + " of missing files, " +
                      std::to_string(cleanup.old) + " old.\n");
    return cleanup.hasFailed ? kExitNotAllDone : kExitDone;
}

int ConvertLog(Context& context) {
    Application* application = context.OpenApplication();
    if (application == nullptr) return kExitNotAllDone;
    const Services& system = application->System();
    PrintLog log(*system.files, *system.clock, application->UserPrompts(), application->Debug(),
                 application->PathOf(kPrintLogName));
    bool isConverted = false;
    const int result = log.ConvertOldPrintLog(isConverted);
    context.PrintResult(result, result != 0   ? "The print log was not converted."
                                : isConverted ? "Converted; print.log.bak is the old one."
                                              : "The print log is not of the old layout.");
    return result == 0 ? kExitDone : kExitNotAllDone;
}

void DefineShow(CommandSet& commands, CLI::App& log) {
    std::vector<std::string> names;
    for (const ViewedLog& viewed : ViewedLogs()) names.emplace_back(viewed.name);
    CLI::App* show = commands.Add(log, "show", "Show the records of a log",
                                  {"qpr log show print", "qpr --json log show error"});
    auto name = std::make_shared<std::string>();
    show->add_option("NAME", *name, "The log: print, error, mail, ftp, ftp-error or hangs")
        ->required()
        ->check(CLI::IsMember(names))
        ->type_name("");
    commands.RunWith(show, [name, &context = commands.m_context] { return ShowLog(context, *name); });
}

void DefineExport(CommandSet& commands, CLI::App& log) {
    CLI::App* command =
        commands.Add(log, "export", "Write a log as comma-separated text",
                     {"qpr log export print prints.csv", "qpr log export error errors.csv --safe"});
    auto options = std::make_shared<ExportOptions>();
    command->add_option("NAME", options->name, "The log: print or error")
        ->required()
        ->check(CLI::IsMember({"print", "error"}))
        ->type_name("");
    command->add_option("TARGET", options->target, "The file; \"nofile\" asks for it")
        ->required()
        ->type_name("");
    command->add_flag("--safe", options->isSafe, "Keep spreadsheets from taking texts for formulas");
    commands.RunWith(command,
                     [options, &context = commands.m_context] { return ExportLog(context, *options); });
}

void DefineCheck(CommandSet& commands, CLI::App& log) {
    CLI::App* command =
        commands.Add(log, "check", "Tell whether a file was printed, or failed, before (exit code 1)",
                     {"qpr log check invoice.pdf", "qpr log check /in/a.pdf --folder 0"});
    auto options = std::make_shared<CheckOptions>();
    command->add_option("FILE", options->file, "The file")->required()->type_name("");
    command->add_option("--folder", options->folder, "As for this monitored folder, by its MONCHECK_LOG")
        ->check(CLI::NonNegativeNumber)
        ->type_name("INDEX");
    commands.RunWith(command,
                     [options, &context = commands.m_context] { return CheckLog(context, *options); });
}

}  // namespace

void DefineLogCommands(CommandSet& commands) {
    Context& context = commands.m_context;
    CLI::App* log = commands.Add(commands.m_program, "log", "Read, export and clean up the logs",
                                 {"qpr log show print", "qpr log clean --force"});
    log->require_subcommand(1);
    DefineShow(commands, *log);
    DefineExport(commands, *log);
    DefineCheck(commands, *log);

    CLI::App* clean = commands.Add(*log, "clean", "Remove records from the print log, as its settings say",
                                   {"qpr log clean", "qpr log clean --force"});
    auto isForced = std::make_shared<bool>(false);
    clean->add_flag("--force", *isForced, "Even when it is not yet time");
    commands.RunWith(clean, [isForced, &context] { return CleanLogs(context, *isForced); });

    CLI::App* convert = commands.Add(
        *log, "convert", "Bring a print log of the old layout into the present one", {"qpr log convert"});
    commands.RunWith(convert, [&context] { return ConvertLog(context); });
}

}  // namespace quirepress
