#include <memory>
#include <nlohmann/json.hpp>

#include "app/application.h"
#include "base/text.h"
#include "console/commands.h"
#include "console/context.h"
#include "console/table.h"
#include "settings/settings_catalog.h"

namespace quirepress {

namespace {

struct SettingsRequest {
    std::string name;
    std::string key;
    std::vector<std::string> values;
};

nlohmann::json ToJson(const SettingValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return ToUtf8ForDisplay(*text);
    return std::visit([](const auto& plain) { return nlohmann::json(plain); }, value);
}

std::string ToText(const SettingValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    if (const auto* flag = std::get_if<bool>(&value)) return *flag ? "yes" : "no";
    return ToJson(value).dump();
}

std::unique_ptr<SettingsDocument> OpenDocument(Context& context, const std::string& name) {
    Application* application = context.OpenApplication();
    return application == nullptr ? nullptr : OpenSettings(name, application->Settings());
}

int ShowSettings(Context& context, const SettingsRequest& request) {
    const auto document = OpenDocument(context, request.name);
    if (!document) return kExitNotAllDone;
    const std::string path = context.OpenApplication()->PathOf(document->FileName());
    if (context.WantsJson()) {
        nlohmann::json values = nlohmann::json::object();
        for (const auto& [key, value] : document->Values()) values[key] = ToJson(value);
        context.PrintJson(
            {{"file", ToUtf8ForDisplay(path)}, {"result", document->LoadResult()}, {"values", values}});
        return kExitDone;
    }
    if (document->LoadResult() != kSettingsDone)
        context.Complain(path + " is not there, or can't be read; these are the defaults");
    Table table({{"Key"}, {"Value", false, 100}});
    for (const auto& [key, value] : document->Values()) table.AddRow({key, ToText(value)});
    context.Print(table.Render(context.OutputHasColours()));
    return kExitDone;
}

int SaveDocument(Context& context, SettingsDocument& document) {
    const int result = document.Save();
    if (result == kSettingsDone && !document.SaveNote().empty()) context.Complain(document.SaveNote());
    context.PrintResult(result, result == kSettingsDone ? "" : document.FileName() + " was not written.");
    return result == kSettingsDone ? kExitDone : kExitNotAllDone;
}

int ChangeSetting(Context& context, const SettingsRequest& request, bool isUnset) {
    const auto document = OpenDocument(context, request.name);
    if (!document) return kExitNotAllDone;
    std::string message;
    std::vector<std::string> notes;
    const int result = isUnset ? document->ClearKey(request.key, message)
                               : document->ChangeKey(request.key, request.values, message, notes);
    if (result != 0) {
        context.PrintResult(result, message);
        return kExitNotAllDone;
    }
    for (const std::string& note : notes) context.Complain(note);
    return SaveDocument(context, *document);
}

int SaveSettings(Context& context, const SettingsRequest& request) {
    const auto document = OpenDocument(context, request.name);
    return document ? SaveDocument(context, *document) : kExitNotAllDone;
}

CLI::App* DefineVerb(CommandSet& commands, CLI::App* settings, const char* verb, const char* description,
                     const std::vector<std::string>& examples,
                     const std::shared_ptr<SettingsRequest>& request) {
    CLI::App* command = commands.Add(*settings, verb, description, examples);
    std::string names;
    for (const std::string& name : SettingsNames()) names += (names.empty() ? "" : ", ") + name;
    command->add_option("NAME", request->name, "The settings file: " + names)
        ->required()
        ->check(CLI::IsMember(SettingsNames()))
        ->type_name("");
    return command;
}

}  // namespace

void DefineSettingsCommands(CommandSet& commands) {
    Context& context = commands.m_context;
    CLI::App* settings =
        commands.Add(commands.m_program, "settings", "Show and change the settings files",
                     {"qpr settings show general", "qpr settings set general PAUSE1AFTER 5"});
    settings->require_subcommand(1);

    auto shown = std::make_shared<SettingsRequest>();
    CLI::App* show = DefineVerb(commands, settings, "show", "Show every key of a settings file",
                                {"qpr settings show general", "qpr --json settings show misc"}, shown);
    commands.RunWith(show, [shown, &context] { return ShowSettings(context, *shown); });

    auto set = std::make_shared<SettingsRequest>();
    CLI::App* change = DefineVerb(
        commands, settings, "set", "Set one key and save the file",
        {"qpr settings set general USEINTERNALZPL", "qpr settings set general STARTUPRECT 0 600 0 800"}, set);
    change->add_option("KEY", set->key, "The key")->required()->type_name("");
    change->add_option("VALUE", set->values, "Its value or values; none for a flag")->type_name("");
    commands.RunWith(change, [set, &context] { return ChangeSetting(context, *set, false); });

    auto unset = std::make_shared<SettingsRequest>();
    CLI::App* clear =
        DefineVerb(commands, settings, "unset", "Take one key back to its default and save the file",
                   {"qpr settings unset general USEINTERNALZPL"}, unset);
    clear->add_option("KEY", unset->key, "The key")->required()->type_name("");
    commands.RunWith(clear, [unset, &context] { return ChangeSetting(context, *unset, true); });

    auto saved = std::make_shared<SettingsRequest>();
    CLI::App* save = DefineVerb(commands, settings, "save", "Load a settings file and save it again",
                                {"qpr settings save general"}, saved);
    commands.RunWith(save, [saved, &context] { return SaveSettings(context, *saved); });
}

}  // namespace quirepress
