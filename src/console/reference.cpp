#include "console/reference.h"

#include <CLI/App.hpp>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "console/commands.h"

namespace quirepress {

namespace {

struct Option {
    std::vector<std::string> names;  // with their dashes; none for an item of the command line
    std::string value;               // name of its value; empty for a switch
    std::string description;
};

// One command with everything below it, out of the parser's own definitions.
struct Command {
    std::string path;  // "qpr printers add"
    std::string description;
    std::string examples;
    std::vector<Option> options;
    std::vector<Option> items;
    std::vector<Command> commands;
};

Option ReadOption(const CLI::Option& definition) {
    Option option;
    for (const std::string& name : definition.get_lnames()) option.names.push_back("--" + name);
    for (const std::string& name : definition.get_snames()) option.names.push_back("-" + name);
    if (definition.get_items_expected_max() > 0)
        option.value = option.names.empty() ? definition.get_name(true) : definition.get_type_name();
    option.description = definition.get_description();
    return option;
}

Command ReadCommand(const CLI::App& app, const std::string& path) {
    Command command;
    command.path = path;
    command.description = app.get_description();
    command.examples = app.get_footer();
    const std::size_t hint = command.examples.find(kGeneralOptionsHint);
    if (hint != std::string::npos) command.examples.erase(hint);
    for (const CLI::Option* definition : app.get_options()) {
        Option option = ReadOption(*definition);
        (option.names.empty() ? command.items : command.options).push_back(std::move(option));
    }
    for (const CLI::App* below : app.get_subcommands([](const CLI::App*) { return true; }))
        if (!below->get_group().empty())
            command.commands.push_back(ReadCommand(*below, path + " " + below->get_name()));
    return command;
}

std::string LastWord(const std::string& path) {
    return path.substr(path.rfind(' ') + 1);
}

// Text for troff: no line of it is taken for a request, and dashes stay dashes.
std::string Troff(std::string_view text) {
    std::string out = ReplaceAll(ReplaceAll(text, "\\", "\\e"), "-", "\\-");
    out = ReplaceAll(out, "\n.", "\n\\&.");
    out = ReplaceAll(out, "\n'", "\n\\&'");
    if (!out.empty() && (out[0] == '.' || out[0] == '\'')) out.insert(0, "\\&");
    return out;
}

std::string TroffOptions(const std::vector<Option>& options) {
    std::string out;
    for (const Option& option : options) {
        out += ".TP\n";
        for (std::size_t i = 0; i < option.names.size(); ++i)
            out += (i > 0 ? ", " : "") + ("\\fB" + Troff(option.names[i]) + "\\fR");
        if (!option.value.empty())
            out += (option.names.empty() ? "" : " ") + ("\\fI" + Troff(option.value) + "\\fR");
        out += "\n" + Troff(option.description) + "\n";
    }
    return out;
}

void AppendTroffCommand(std::string& out, const Command& command) {
    out += ".SS \"" + Troff(command.path) + "\"\n" + Troff(command.description) + ".\n";
    out += TroffOptions(command.items) + TroffOptions(command.options);
    if (!command.examples.empty()) out += ".PP\n.nf\n" + Troff(command.examples.substr(1)) + "\n.fi\n";
    for (const Command& below : command.commands) AppendTroffCommand(out, below);
}

std::string RenderMan(const Command& program) {
    std::string out = ".TH QPR 1 \"\" \"Quirepress 6.04\" \"User Commands\"\n.SH NAME\nqpr \\- " +
                      Troff(program.description) +
                      "\n.SH SYNOPSIS\n.B qpr\n[\\fIOPTIONS\\fR] \\fICOMMAND\\fR [\\fIARGUMENTS\\fR]\n"
                      ".SH OPTIONS\n" +
                      TroffOptions(program.options) + ".SH COMMANDS\n";
    for (const Command& command : program.commands) AppendTroffCommand(out, command);
    out +=
        ".SH EXIT STATUS\n"
        ".TP\n0\nEverything is done.\n"
        ".TP\n1\nSomething was not done: a row failed, was missing, empty or skipped, a file could not be "
        "written, a check said no.\n"
        ".TP\n2\nThe command line is wrong.\n"
        ".TP\n3\nThere is no printer, no such printer, or no spooler.\n"
        ".TP\n130\nStopped by Ctrl\\-C, in order; a second Ctrl\\-C ends at once.\n"
        ".SH ENVIRONMENT\n"
        ".TP\n\\fBQUIREPRESS_HOME\\fR\nThe working folder, when \\fB\\-\\-home\\fR names none.\n"
        ".TP\n\\fBQUIREPRESS_SPOOLER\\fR\nThe print spooler, when \\fB\\-\\-spooler\\fR names none.\n"
        ".TP\n\\fBNO_COLOR\\fR\nNo colours, when it is set.\n";
    return out;
}

std::vector<std::string> WordsOf(const Command& command) {
    std::vector<std::string> words;
    for (const Command& below : command.commands) words.push_back(LastWord(below.path));
    for (const Option& option : command.options)
        words.insert(words.end(), option.names.begin(), option.names.end());
    return words;
}

std::string Joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

// One arm of the bash script's case for each command: which words may follow it.
void AppendBashCases(std::string& out, const Command& command) {
    out += "        \"" + command.path + "\") words=\"" + Joined(WordsOf(command)) + "\" ;;\n";
    for (const Command& below : command.commands) AppendBashCases(out, below);
}

void AppendBashPaths(std::string& out, const Command& command) {
    for (const Command& below : command.commands) {
        out += (out.empty() ? "\"" : "|\"") + below.path + "\"";
        AppendBashPaths(out, below);
    }
}

std::string RenderBash(const Command& program) {
    std::string paths;
    AppendBashPaths(paths, program);
    std::string out =
        "# bash completion for qpr\n"
        "_qpr() {\n"
        "    local current=${COMP_WORDS[COMP_CWORD]} path=qpr words= i\n"
        "    for ((i = 1; i < COMP_CWORD; i++)); do\n"
        "        case \"$path ${COMP_WORDS[i]}\" in\n"
        "            " +
        paths +
        ") path=\"$path ${COMP_WORDS[i]}\" ;;\n"
        "        esac\n"
        "    done\n"
        "    case $path in\n";
    AppendBashCases(out, program);
    out +=
        "    esac\n"
        "    COMPREPLY=($(compgen -W \"$words\" -- \"$current\"))\n"
        "    [[ $current == -* ]] || COMPREPLY+=($(compgen -f -- \"$current\"))\n"
        "}\n"
        "complete -o filenames -F _qpr qpr\n";
    return out;
}

// zsh takes bash's own completion functions.
std::string RenderZsh(const Command& program) {
    return "#compdef qpr\nautoload -U +X bashcompinit && bashcompinit\n" + RenderBash(program);
}

std::string FishQuoted(std::string_view text) {
    return "'" + ReplaceAll(ReplaceAll(text, "\\", "\\\\"), "'", "\\'") + "'";
}

void AppendFish(std::string& out, const Command& command, const std::string& condition) {
    const std::string start = "complete -c qpr" + (condition.empty() ? "" : " -n " + FishQuoted(condition));
    for (const Option& option : command.options) {
        out += start;
        for (const std::string& name : option.names)
            out += StartsWith(name, "--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
        out += (option.value.empty() ? "" : " -r") + (" -d " + FishQuoted(option.description)) + "\n";
    }
    for (const Command& below : command.commands) {
        const std::string word = LastWord(below.path);
        const std::string here = condition.empty() ? "__fish_use_subcommand" : condition;
        out += "complete -c qpr -n " + FishQuoted(here) + " -a " + word + " -d " +
               FishQuoted(below.description) + "\n";
        AppendFish(out, below, "__fish_seen_subcommand_from " + word);
    }
}

std::string RenderFish(const Command& program) {
    std::string out = "# fish completion for qpr\n";
    AppendFish(out, program, "");
    return out;
}

}  // namespace

std::string RenderReference(const CLI::App& program, const std::string& form) {
    const Command root = ReadCommand(program, "qpr");
    if (form == "man") return RenderMan(root);
    if (form == "bash") return RenderBash(root);
    if (form == "zsh") return RenderZsh(root);
    return RenderFish(root);
}

}  // namespace quirepress
