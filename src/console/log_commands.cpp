#include <nlohmann/json.hpp>

#include "app/application.h"
#include "base/text.h"
#include "console/commands.h"
#include "console/context.h"
#include "console/table.h"
#include "logs/error_log.h"
#include "logs/fixed_record.h"
#include "platform/files.h"

namespace quirepress {

namespace {

int ShowLog(Context& context) {
    Application* application = context.OpenApplication();
    if (application == nullptr) return kExitNotAllDone;
    const RecordLayout& layout = ErrorRecordLayout();
    std::vector<std::vector<std::string>> records;
    if (ReadRecords(*application->System().files, application->Errors().Path(), layout, records) != 0 &&
        application->System().files->Inspect(application->Errors().Path()).kind != FileKind::kMissing) {
        context.PrintResult(1, "Can't open '" + application->Errors().Path() + "' for reading");
        return kExitNotAllDone;
    }
    nlohmann::json list = nlohmann::json::array();
    std::vector<Table::Column> columns;
    for (const RecordColumn& column : layout.columns) columns.push_back({column.title});
    Table table(columns);
    for (std::vector<std::string>& record : records) {
        nlohmann::json fields = nlohmann::json::array();
        for (const std::string& field : record) fields.push_back(ToUtf8ForDisplay(field));
        list.push_back(std::move(fields));
        table.AddRow(std::move(record));
    }
    if (context.WantsJson())
        context.PrintJson({{"records", list}});
    else
        context.Print(table.Render(context.OutputHasColours()));
    return kExitDone;
}

}  // namespace

void DefineLogCommands(CommandSet& commands) {
    CLI::App* log = commands.Add(commands.m_program, "log", "Read the logs", {"qpr log show error"});
    log->require_subcommand(1);
    CLI::App* show = commands.Add(*log, "show", "Show the records of a log",
                                  {"qpr log show error", "qpr --json log show error"});
    show->add_option("NAME", "The log: error")->required()->check(CLI::IsMember({"error"}))->type_name("");
    commands.RunWith(show, [&context = commands.m_context] { return ShowLog(context); });
}

}  // namespace quirepress
