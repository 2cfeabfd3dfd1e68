#include "console/setup_options.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <string_view>
#include <vector>

#include "backends/printer_selection.h"
#include "base/text.h"
#include "platform/job_ticket.h"

namespace quirepress {

namespace {

// In the order of the ticket's values, whose first one asks for nothing.
constexpr std::array<std::string_view, 3> kOrientations = {"", "portrait", "landscape"};
constexpr std::array<std::string_view, 3> kColors = {"", "bw", "color"};
constexpr std::array<std::string_view, 4> kDuplexes = {"", "simplex", "vertical", "horizontal"};
constexpr std::array<std::string_view, 4> kQualities = {"", "draft", "normal", "high"};

template <typename Words>
void DefineChoice(CLI::App& command, const char* name, std::string& text, const char* description,
                  const Words& words) {
    command.add_option(name, text, description)
        ->check(CLI::IsMember(std::vector<std::string>(words.begin() + 1, words.end())))
        ->type_name("WORD");
}

// The word is one of them, or empty.
template <typename Words, typename Choice>
void Choose(const Words& words, const std::string& word, Choice& choice) {
    if (!word.empty())
        choice = static_cast<Choice>(std::find(words.begin(), words.end(), word) - words.begin());
}

template <typename Words, typename Choice>
std::string WordOf(const Words& words, Choice choice) {
    return std::string(words.at(static_cast<std::size_t>(choice)));
}

std::string CheckPaperSize(const std::string& text) {
    return PaperSizeOf(text) ? "" : "There is no paper size \"" + text + "\"; a number of 1 to 1000 is one";
}

}  // namespace

void DefineSetupOptions(CLI::App& command, SetupOptions& options) {
    DefineChoice(command, "--orientation", options.orientation, "portrait or landscape", kOrientations);
    DefineChoice(command, "--duplex", options.duplex,
                 "simplex, vertical (turned at the long edge) or horizontal (at the short one)", kDuplexes);
    DefineChoice(command, "--color", options.color, "bw or color", kColors);
    DefineChoice(command, "--quality", options.quality, "draft, normal or high", kQualities);
    command
        .add_option("--paper-size", options.paperSize,
                    "The paper: A4, Letter and the like, or the systems' common number of it, 1 to 1000")
        ->check(CheckPaperSize)
        ->type_name("SIZE");
    command.add_option("--scale", options.scale, "In percent, 1 to 1000")
        ->check(CLI::Range(1, 1000))
        ->type_name("N");
    command.add_option("--copies", options.copies, "Of each document, 1 to 1000000")
        ->check(CLI::Range(1, 1'000'000))
        ->type_name("N");
    command.add_option("--tray", options.tray, "The tray's name, as \"qpr tray list\" shows it")
        ->type_name("NAME");
}

int ApplySetupOptions(const SetupOptions& options, PrinterSelection& selection, std::string& message) {
    JobTicket ticket = selection.Ticket();
    Choose(kOrientations, options.orientation, ticket.orientation);
    Choose(kDuplexes, options.duplex, ticket.duplex);
    Choose(kColors, options.color, ticket.color);
    Choose(kQualities, options.quality, ticket.quality);
    if (!options.paperSize.empty()) ticket.paperSize = PaperSizeOf(options.paperSize).value_or(0);
    if (options.scale != 0) ticket.scale = options.scale;
    if (options.copies != 0) ticket.copies = options.copies;
    if (!options.tray.empty() && selection.TakeTray(options.tray, ticket, message) != 0) return -1;
    return ticket == selection.Ticket() ? 0 : selection.ChangeTicket(ticket, message);
}

nlohmann::json DescribeTicket(const JobTicket& ticket) {
    return {{"orientation", WordOf(kOrientations, ticket.orientation)},
            {"scale", ticket.scale},
            {"paper_size", ticket.paperSize},
            {"copies", ticket.copies},
            {"duplex", WordOf(kDuplexes, ticket.duplex)},
            {"color", WordOf(kColors, ticket.color)},
            {"quality", WordOf(kQualities, ticket.quality)},
            {"tray", ticket.tray},
            {"tray_name", ToUtf8ForDisplay(ticket.trayName)}};
}

}  // namespace quirepress
