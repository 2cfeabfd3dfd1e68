#include <filesystem>
#include <fstream>
#include <memory>

#include "fakes/fake_prompts.h"
#include "platform/clock.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/libraries.h"
#include "platform/machine.h"
#include "platform/network.h"
#include "platform/processes.h"
#include "platform/registry.h"
#include "platform/services.h"
#include "platform/shell.h"
#include "platform/terminal.h"
#include "settings/general_settings.h"
#include "settings/misc_options.h"
#include "workloads.h"

namespace quirepress {

namespace {

constexpr int kPairs = 31;  // single starts swing widely

double TimeTrue() {
    return TimeCommand({"true"});
}

struct SettingsBench {
    Services services = MakeSystemServices();
    std::string folder = (std::filesystem::temp_directory_path() / "quirepress-bench-settings/").string();
    FakePrompts prompts;

    SettingsBench() {
        std::filesystem::create_directories(folder);
        const SettingsPlace place{*services.files, prompts, folder};
        SaveGeneralOptions(GeneralOptions(), place, false);
        SaveMiscOptions(MiscOptions(), place);
    }
    ~SettingsBench() { std::filesystem::remove_all(folder); }

    double Load() {
        return TimeCall([&] {
            const SettingsPlace place{*services.files, prompts, folder};
            GeneralOptions general;
            MiscOptions misc;
            LoadGeneralOptions(general, place, services.machine->Family(), false);
            LoadMiscOptions(misc, place);
        });
    }
};

}  // namespace

void AddStartWorkloads(std::vector<Workload>& workloads) {
    // `true` takes about a millisecond, so that a goal in milliseconds is one in its multiples.
    const std::string home = (std::filesystem::temp_directory_path() / "quirepress-bench-home").string();
    const std::string sample = home + "/letter.ps";
    workloads.push_back({"start-version", 20, nullptr,
                         [] {
                             return TimeCommand({QUIREPRESS_QPR, "--version"});
                         },
                         TimeTrue, kPairs});
    workloads.push_back({"start-list", 60,
                         [home, sample](std::string&) {
                             std::filesystem::create_directories(home);
                             std::ofstream(sample) << "%!PS-Adobe-3.0\n%%Pages: 1\nshowpage\n";
                             return true;
                         },
                         [home, sample] {
                             return TimeCommand({QUIREPRESS_QPR, "--home", home, "list", sample});
                         },
                         TimeTrue, kPairs});
    auto settings = std::make_shared<std::unique_ptr<SettingsBench>>();
    workloads.push_back({"load-settings", 2,
                         [settings](std::string&) {
                             *settings = std::make_unique<SettingsBench>();
                             return true;
                         },
                         [settings] { return (*settings)->Load(); }, TimeTrue, kPairs});
}

}  // namespace quirepress
