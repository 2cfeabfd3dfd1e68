#pragma once

#include <CLI/App.hpp>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace quirepress {

class PrinterSelection;
struct JobTicket;

// What is asked of a printer, in the words of the paper items. Empty texts and 0 ask for nothing.
struct SetupOptions {
    std::string orientation;
    std::string color;
    std::string duplex;
    std::string quality;
    std::string paperSize;
    std::string tray;
    int scale = 0;
    int copies = 0;
};

void DefineSetupOptions(CLI::App& command, SetupOptions& options);

// Puts them on top of the current set-up. 0, or -1 with `message`.
int ApplySetupOptions(const SetupOptions& options, PrinterSelection& selection, std::string& message);

// All of a set-up, in the same words.
nlohmann::json DescribeTicket(const JobTicket& ticket);

}  // namespace quirepress
