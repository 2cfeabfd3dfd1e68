#include <memory>
#include <nlohmann/json.hpp>

#include "app/application.h"
#include "backends/printer_selection.h"
#include "backends/printer_settings_file.h"
#include "backends/tray_file.h"
#include "base/text.h"
#include "console/commands.h"
#include "console/context.h"
#include "console/setup_options.h"
#include "console/table.h"
#include "platform/prompts.h"
#include "platform/spooler.h"

namespace quirepress {

namespace {

struct SetupRequest {
    std::string file;
    std::string printer;
    std::string tray;
    SetupOptions options;
};

int SaveSetup(Context& context, const SetupRequest& request) {
    Application* application = context.OpenApplicationWithSpooler();
    if (application == nullptr) return kExitNoPrinter;
    PrinterSelection& selection = application->Selection();
    const std::string printer = request.printer.empty() ? selection.DefaultPrinter() : request.printer;
    std::string message;
    if (selection.UsePrinter(printer, message) != 0) {
        context.PrintResult(-1, message);
        return kExitNoPrinter;
    }
    if (ApplySetupOptions(request.options, selection, message) != 0) {
        context.PrintResult(-1, message);
        return kExitNotAllDone;
    }
    if (selection.SavePrinterSettings(request.file) != 0) {
        context.PrintResult(-1, "Can't open printer settings file for writing: " + request.file);
        return kExitNotAllDone;
    }
    context.PrintResult(0, "Printer settings of \"" + printer + "\" saved.");
    return kExitDone;
}

// A printer settings file, as far as this print system understands it.
struct ShownSetup {
    PrsContent content;
    DeviceNames names;
    JobTicket ticket;
    bool isWhole = false;
    std::string message;  // what is wrong with it; may be empty
};

void PrintSetupShown(Context& context, const ShownSetup& shown) {
    const std::size_t modeBytes = shown.content.mode.bytes.size();
    const std::size_t namesBytes = shown.content.names.bytes.size();
    if (context.WantsJson()) {
        context.PrintJson({{"device_mode_bytes", modeBytes},
                           {"device_names_bytes", namesBytes},
                           {"driver", ToUtf8ForDisplay(shown.names.driver)},
                           {"device", ToUtf8ForDisplay(shown.names.device)},
                           {"port", ToUtf8ForDisplay(shown.names.port)},
                           {"default", shown.names.isDefault},
                           {"settings", DescribeTicket(shown.ticket)},
                           {"message", ToUtf8ForDisplay(shown.message)}});
        return;
    }
    Table table({{"Field"}, {"Value", false, 90}});
    table.AddRow({"Printer", shown.names.device});
    table.AddRow({"Driver", shown.names.driver});
    table.AddRow({"Port", shown.names.port});
    table.AddRow({"Settings", OptionsText(shown.ticket, "")});
    table.AddRow({"Device mode", std::to_string(modeBytes) + " bytes"});
    table.AddRow({"Device names", std::to_string(namesBytes) + " bytes"});
    context.Print(table.Render(context.OutputHasColours()));
    if (!shown.message.empty()) context.Complain(shown.message);
}

int ShowSetup(Context& context, const SetupRequest& request) {
    Application* application = context.OpenApplicationWithSpooler();
    if (application == nullptr) return kExitNoPrinter;
    ShownSetup shown;
    const PrsReading reading =
        ReadPrintSetup(*application->System().files, request.file, shown.content, shown.message);
    if (!HasPrintSetup(reading)) {
        context.PrintResult(-1, shown.message);
        return kExitNotAllDone;
    }
    // Settings of another print system are whole, if not for this one: its names can be told all the same.
    PrintSetupFormat& format = application->PrintSpooler().SetupFormat();
    format.ReadTicket(shown.content.mode.bytes, shown.ticket, shown.message);
    const bool hasNames = format.ReadNames(shown.content.names.bytes, shown.names, shown.message) == 0;
    PrintSetupShown(context, shown);
    return hasNames && reading != PrsReading::kNamesCutShort ? kExitDone : kExitNotAllDone;
}

// The application and the printer's bins; null, and the answer is given, when there is no such printer.
Application* OpenWithTrays(Context& context, const std::string& printer, std::vector<BinInfo>& trays) {
    Application* application = context.OpenApplicationWithSpooler();
    if (application == nullptr) return nullptr;
    if (application->PrintSpooler().ListBins(printer, trays) == 0) return application;
    context.PrintResult(-1, "There is no printer \"" + printer + "\".");
    return nullptr;
}

int ListTrays(Context& context, const SetupRequest& request) {
    std::vector<BinInfo> trays;
    if (OpenWithTrays(context, request.printer, trays) == nullptr) return kExitNoPrinter;
    nlohmann::json list = nlohmann::json::array();
    Table table({{"Number", true}, {"Tray"}});
    for (const BinInfo& tray : trays) {
        list.push_back({{"number", tray.number}, {"name", ToUtf8ForDisplay(tray.name)}});
        table.AddRow({std::to_string(tray.number), tray.name});
    }
    if (context.WantsJson())
        context.PrintJson({{"result", 0}, {"message", ""}, {"trays", list}});
    else
        context.Print(table.Render(context.OutputHasColours()));
    return kExitDone;
}

int FindTray(Context& context, const SetupRequest& request) {
    std::vector<BinInfo> trays;
    Application* application = OpenWithTrays(context, request.printer, trays);
    if (application == nullptr) return kExitNoPrinter;
    BinInfo tray;
    if (!application->Selection().FindTray(request.printer, request.tray, tray)) {
        context.PrintResult(-1, tray.name + ": the printer \"" + request.printer + "\" has no tray \"" +
                                    request.tray + "\".");
        return kExitNotAllDone;
    }
    if (context.WantsJson())
        context.PrintJson({{"result", 0},
                           {"message", ToUtf8ForDisplay(tray.name)},
                           {"number", tray.number},
                           {"name", ToUtf8ForDisplay(tray.name)}});
    else
        context.Print(std::to_string(tray.number) + "\n");
    return kExitDone;
}

int SaveTray(Context& context, const SetupRequest& request) {
    Application* application = context.OpenApplication();
    if (application == nullptr) return kExitNotAllDone;
    std::string message;
    const int result = SaveTrayFile(*application->System().files, request.file, request.tray, message);
    if (result != 0) application->UserPrompts().ShowBox(kTraySaveErrorTitle, message);
    if (result == 0 || context.WantsJson()) context.PrintResult(result, message);
    return result == 0 ? kExitDone : kExitNotAllDone;
}

using SetupAction = int (*)(Context& context, const SetupRequest& request);

// A command with the items that `items` names, in their order.
struct SetupItem {
    const char* name;
    const char* description;
    std::string SetupRequest::*text;
};

void DefineSetupCommand(CommandSet& commands, CLI::App* parent, const char* verb, const char* description,
                        const std::vector<std::string>& examples, const std::vector<SetupItem>& items,
                        SetupAction action) {
    CLI::App* command = commands.Add(*parent, verb, description, examples);
    auto request = std::make_shared<SetupRequest>();
    if (action == SaveSetup) DefineSetupOptions(*command, request->options);
    for (const SetupItem& item : items) {
        CLI::Option* option = command->add_option(item.name, (*request).*item.text, item.description);
        if (item.name[0] == '-')
            option->type_name("NAME");
        else
            option->required()->type_name("");
    }
    commands.RunWith(command,
                     [request, action, &context = commands.m_context] { return action(context, *request); });
}

}  // namespace

void DefineSetupCommands(CommandSet& commands) {
    const SetupItem file{"FILE", "The file", &SetupRequest::file};
    const SetupItem printer{"PRINTER", "The printer", &SetupRequest::printer};
    const SetupItem tray{"NAME", "The tray's name, as \"qpr tray list\" shows it", &SetupRequest::tray};

    CLI::App* prs = commands.Add(commands.m_program, "prs", "Save and show printer settings files",
                                 {"qpr prs save office.prs --printer Office", "qpr prs show office.prs"});
    prs->require_subcommand(1);
    DefineSetupCommand(commands, prs, "save", "Save a printer with its settings, and with those given here",
                       {"qpr prs save office.prs --printer Office",
                        "qpr prs save draft.prs --duplex vertical --color bw --quality draft",
                        "qpr prs save labels.prs --tray \"Upper tray\" --paper-size A5 --copies 2"},
                       {file, {"--printer", "The printer; else the default printer", &SetupRequest::printer}},
                       SaveSetup);
    DefineSetupCommand(commands, prs, "show", "Show what a printer settings file holds",
                       {"qpr prs show office.prs", "qpr --json prs show office.prs"}, {file}, ShowSetup);

    CLI::App* trays =
        commands.Add(commands.m_program, "tray", "Show the trays of a printer, and save tray files",
                     {"qpr tray list Office", "qpr tray save upper.tra \"Upper tray\""});
    trays->require_subcommand(1);
    DefineSetupCommand(commands, trays, "list", "Show the trays of a printer", {"qpr tray list Office"},
                       {printer}, ListTrays);
    DefineSetupCommand(commands, trays, "find", "Show the number of a tray",
                       {"qpr tray find Office \"Upper tray\""}, {printer, tray}, FindTray);
    DefineSetupCommand(commands, trays, "save",
                       "Save a tray file, which sets the tray when a list reaches it",
                       {"qpr tray save upper.tra \"Upper tray\""}, {file, tray}, SaveTray);
}

}  // namespace quirepress
