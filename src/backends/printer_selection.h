#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "backends/paper_items.h"
#include "backends/printer_selection_default.h"
#include "platform/print_setup.h"
#include "platform/spooler.h"

namespace quirepress {

class DebugLog;
class EventLoop;
class Files;
class Prompts;
struct GeneralOptions;

// Set-ups that are kept in the working folder.
constexpr std::string_view kRunSetupFile = "temp.prs";                // the run's own, at its start
constexpr std::string_view kRunDefaultSetupFile = "tmp_default.prs";  // the default printer's, at its start
constexpr std::string_view kStartSetupFile = "DefaultPrinter.prs";    // the default printer's, at our start

// How far the change of printer is, for the run.
enum class PrinterChange { kFailed = -1, kNone = 0, kChanging = 1 };

struct PrinterSelectionServices {
    Spooler& spooler;
    Files& files;
    EventLoop& loop;
    Prompts& prompts;
    DebugLog& debugLog;
    const GeneralOptions& options;
    std::string workingFolder;
};

// What became of a command item, and the status for its row.
struct ItemResult {
    bool isApplied = false;
    std::string status;
    std::string message;  // why not; may be empty
};

// The run's current printer with its set-up, and all that changes them.
class PrinterSelection {
public:
    // A printer with its set-up.
    struct Selected {
        std::string printer;
        PrintSetup setup;
        PaperState paper;
    };

    explicit PrinterSelection(PrinterSelectionServices services);

    // Asked in every wait; true ends it. Nothing else is given up.
    void UseStop(std::function<bool()> isStopped) { m_isStopped = std::move(isStopped); }

    const std::string& CurrentPrinter() const { return m_selected.printer; }  // empty: the default printer
    const PrintSetup& Setup() const { return m_selected.setup; }
    const JobTicket& Ticket() const { return m_selected.paper.ticket; }  // what Setup() asks for
    PrinterChange ChangeState() const { return m_change; }

    // Of the system; empty when there is none.
    std::string DefaultPrinter() { return m_services.spooler.DefaultPrinter(); }
    // The user's own: not what a run of another program in this working folder has made of it.
    std::string OwnDefaultPrinter() { return m_default->UsersOwn(); }
    // Makes it the system's default and the current one, and gives other programs time to notice. 0, or 1
    // when it could not be done. May pump.
    int DPSetDefaultPrinter(std::string_view name);
    // Makes it the current one, with its own settings; the system's default stays. 0, or -1 with `message`.
    int UsePrinter(std::string_view name, std::string& message);

    // Makes it the current one and, where that is allowed, the system's default; the paper and the tray that
    // were set stay set. 0, or -1 with `message`.
    int MoveToPrinter(std::string_view name, std::string& message);

    // What is current now, and to come back to it; the system's default stays.
    const Selected& State() const { return m_selected; }
    void ComeBackTo(Selected state) { m_selected = std::move(state); }
    // The system's default alone, for a run to set back. 0; -1 where that is not allowed, and it stays.
    int MoveDefault(std::string_view name);

    // The default is what it was before the run, which goes on.
    void MoveDefaultBack();

    // The current set-up, into a file. 0 or -1.
    int SavePrinterSettings(std::string_view path);
    // Replaces the current set-up; when the file has none, by the default printer's. 0, or -1; `message` says
    // what is wrong with the file, if anything. May pump.
    int LoadPrinterSettings(std::string_view path, std::string& message);

    // The printer's bin of this name. When there is none, false, and `tray` is number 0, "Unknown".
    bool FindTray(std::string_view printer, std::string_view trayName, BinInfo& tray);

    // The tray of this name of the current printer, into `ticket`. 0, or -1 with `message`.
    int TakeTray(std::string_view trayName, JobTicket& ticket, std::string& message);
    // Makes the current set-up ask for this. 0, or -1 with `message`.
    int ChangeTicket(const JobTicket& ticket, std::string& message);

    // Whether ApplyItem is for a command item of this path.
    static bool TakesItem(std::string_view path);
    // ".prs" and ".printer" files, tray files and paper items. May pump.
    ItemResult ApplyItem(std::string_view path);
    // The parts of it, for actions of other origin.
    ItemResult LoadSettingsItem(std::string_view path);
    ItemResult LoadPrinterItem(std::string_view path);
    ItemResult LoadTrayItem(std::string_view path);
    ItemResult ApplyPaperItem(const PaperItem& item, std::string_view name);

    // Keeps what a run may change, and brings it back at its end: the default printer only while it is what
    // the run has made it. -1 when that could not be set back, with `message`. May pump.
    void SaveForRun();
    int RestoreAfterRun(std::string& message);
    // The default printer that an ended run has left changed. May pump.
    void BringDefaultBack() { m_default->BringBackLeft(); }
    // The same for the whole time that the program runs; back only when the options say so. -1 when there is
    // no printer, which is said in a box. May pump.
    int KeepDefaultAtStart();
    void RestoreOnQuit();

private:
    std::string PathOf(std::string_view name) const { return m_services.workingFolder + std::string(name); }
    std::string PrinterInUse();
    int WriteSetupOf(std::string_view printer, PrintSetup& setup, std::string& message);
    int InstallSetup(PrintSetup setup, std::string& message);
    bool ResetToDefault();
    int ChangePaper(PaperState paper, std::string& message);
    void KeepSetupOf(const std::string& printer, std::string_view file);
    int SetDefaultBack(const KeptDefault& kept);
    int FailChange();
    void AwaitChange();

    PrinterSelectionServices m_services;
    std::shared_ptr<RunDefault> m_default;  // one for all copies: it is the system's
    std::function<bool()> m_isStopped = [] { return false; };
    Selected m_selected;
    PrinterChange m_change = PrinterChange::kNone;
    Selected m_beforeRun;
    std::optional<KeptDefault> m_defaultAtStart;
};

}  // namespace quirepress
