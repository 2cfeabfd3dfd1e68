#include "backends/printer_selection.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "backends/printer_settings_file.h"
#include "backends/tray_file.h"
#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "logs/debug_log.h"
#include "platform/event_loop.h"
#include "platform/prompts.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

constexpr int kChangeWait = 100;  // milliseconds
constexpr int kLeastChangeWaits = 5;
constexpr std::string_view kPrinterSetTo = "Printer set to: ";

bool IsTrayFile(std::string_view path) {
    return EndsWith(path, ".tra") || EndsWith(path, ".TRA");
}

// `found`: whether there was a default printer to fall back to.
void TraceLoadFailure(DebugLog& debugLog, PrsReading reading, bool found, const PrsContent& content,
                      const std::string& message) {
    if (reading == PrsReading::kUnreadable)
        debugLog.Trace("Load Printer settings failed INVALID_HANDLE_VALUE, dret: %d\r\n", found);
    else if (reading == PrsReading::kModeTooLong)
        debugLog.Trace("Load Printer settings failed error at GlobalAlloc, dret: %d, len: %d\r\n", found,
                       content.mode.length);
    else if (reading == PrsReading::kNamesTooLong)
        debugLog.Trace("Load Printer settings failed error at GlobalAlloc m_hDevNames, dret: %d\r\n", found);
    else
        debugLog.Trace("Load Printer settings refused: %s\r\n", message);
}

}  // namespace

PrinterSelection::PrinterSelection(PrinterSelectionServices services)
    : m_services(std::move(services)),
      m_default(std::make_shared<RunDefault>(m_services.spooler, m_services.files, m_services.debugLog,
                                             m_services.workingFolder)) {}

int PrinterSelection::DPSetDefaultPrinter(std::string_view name) {
    const std::string printer(name);
    DebugLog& debugLog = m_services.debugLog;
    m_change = PrinterChange::kChanging;
    debugLog.Trace("DPSetDefaultPrinter: %s\r\n", printer);
    if (printer.empty()) {
        debugLog.Trace("SetDefaultPrinter failed position 1\r\n");
        return FailChange();
    }
    const int status = m_default->MakeDefaultPrinter(printer);
    if (status != 0) {
        debugLog.Trace("NT4.0 SetDefaultPrinter failed PrinterName: %s status: %d, err=%d\r\n", printer,
                       status, 0);
        return FailChange();
    }
    std::string message;
    if (UsePrinter(printer, message) != 0) {
        // It is the default all the same; only its settings are not known.
        debugLog.Trace("No print set-up: %s\r\n", message);
        m_selected.setup = {};
        m_selected.paper.ticket = {};
        m_selected.printer = printer;
    }
    debugLog.Trace("Changed Printer OK\r\n");
    AwaitChange();
    m_services.prompts.ShowStatus(std::string(kPrinterSetTo) + printer);
    return 0;
}

int PrinterSelection::FailChange() {
    m_change = PrinterChange::kFailed;
    return 1;
}

void PrinterSelection::AwaitChange() {
    const long long waits =
        static_cast<long long>(m_services.options.m_printerChangeDelay) + kLeastChangeWaits;
    for (long long i = 0; i < waits && !m_isStopped(); ++i) m_services.loop.Wait(kChangeWait);
    m_services.loop.Pump();
}

int PrinterSelection::UsePrinter(std::string_view name, std::string& message) {
    PrintSetup setup;
    if (WriteSetupOf(name, setup, message) != 0) return -1;
    return InstallSetup(std::move(setup), message);
}

int PrinterSelection::MoveDefault(std::string_view name) {
    if (DefaultPrinter() == name || m_default->MakeDefaultPrinter(name) == 0) return 0;
    m_services.debugLog.Trace("The default printer stays: %s\r\n", name);
    return -1;
}

void PrinterSelection::MoveDefaultBack() {
    const std::string own = m_default->BeforeRun().printer;
    if (!own.empty()) MoveDefault(own);
}

int PrinterSelection::MoveToPrinter(std::string_view name, std::string& message) {
    MoveDefault(name);
    if (m_selected.printer == name) return 0;
    PaperState paper = m_selected.paper;
    if (UsePrinter(name, message) != 0) return -1;
    m_services.prompts.ShowStatus(std::string(kPrinterSetTo) + std::string(name));
    if (paper.ticket == JobTicket()) return 0;
    const std::string trayName = paper.ticket.trayName;
    if (!trayName.empty() && TakeTray(trayName, paper.ticket, message) != 0) return -1;
    return ChangePaper(std::move(paper), message);
}

int PrinterSelection::SavePrinterSettings(std::string_view path) {
    const FileResult result = WritePrintSetup(m_services.files, m_services.debugLog, path, m_selected.setup);
    return result == FileResult::kDone ? 0 : -1;
}

int PrinterSelection::LoadPrinterSettings(std::string_view path, std::string& message) {
    DebugLog& debugLog = m_services.debugLog;
    debugLog.Trace("Load Printer settings: %s\r\n", path);
    m_selected.setup = {};
    m_selected.paper.ticket = {};
    PrsContent content;
    const PrsReading reading = ReadPrintSetup(m_services.files, path, content, message);
    if (HasPrintSetup(reading) &&
        InstallSetup({content.mode.bytes, std::move(content.names.bytes)}, message) == 0) {
        debugLog.Trace("Load Printer settings worked OK, devName:%s\r\n", m_selected.printer);
        m_services.loop.Pump();
        return 0;
    }
    const bool found = ResetToDefault();
    TraceLoadFailure(debugLog, reading, found, content, message);
    return -1;
}

int PrinterSelection::InstallSetup(PrintSetup setup, std::string& message) {
    PrintSetupFormat& format = m_services.spooler.SetupFormat();
    DeviceNames names;
    JobTicket ticket;
    if (format.ReadTicket(setup.deviceMode, ticket, message) != 0) return -1;
    if (format.ReadNames(setup.deviceNames, names, message) != 0) return -1;
    m_selected.setup = std::move(setup);
    m_selected.paper.ticket = std::move(ticket);
    m_selected.printer = std::move(names.device);
    return 0;
}

bool PrinterSelection::ResetToDefault() {
    std::string message;
    if (UsePrinter(DefaultPrinter(), message) == 0) {
        m_services.debugLog.Trace("CopyDefaultMfcPrinter() OK\r\n");
        return true;
    }
    m_selected.printer.clear();
    m_services.prompts.ShowStatus("printer not set...");
    return false;
}

std::string PrinterSelection::PrinterInUse() {
    return m_selected.printer.empty() ? DefaultPrinter() : m_selected.printer;
}

int PrinterSelection::WriteSetupOf(std::string_view printer, PrintSetup& setup, std::string& message) {
    std::vector<PrinterInfo> printers;
    message = "The printers can't be read.";
    if (m_services.spooler.ListPrinters(printers) != 0) return -1;
    const auto found = std::find_if(printers.begin(), printers.end(),
                                    [&](const PrinterInfo& info) { return info.name == printer; });
    if (found != printers.end())
        return m_services.spooler.SetupFormat().WriteSetup(*found, {}, setup, message);
    message = printer.empty() ? "There is no default printer."
                              : "There is no printer \"" + ToPrintableLine(printer) + "\".";
    return -1;
}

bool PrinterSelection::FindTray(std::string_view printer, std::string_view trayName, BinInfo& tray) {
    m_services.debugLog.Trace("Find Tray: %s\n", trayName);
    tray = {0, "Unknown"};
    std::vector<BinInfo> bins;
    m_services.spooler.ListBins(printer, bins);
    const std::string wanted = ToUtf8ForDisplay(trayName);
    const auto found = std::find_if(bins.begin(), bins.end(),
                                    [&](const BinInfo& bin) { return ListedTrayName(bin.name) == wanted; });
    if (found == bins.end()) return false;
    tray = *found;
    m_services.debugLog.Trace("Find Tray: %d - Found\n", tray.number);
    return true;
}

int PrinterSelection::TakeTray(std::string_view trayName, JobTicket& ticket, std::string& message) {
    const std::string printer = PrinterInUse();
    BinInfo tray;
    if (!FindTray(printer, trayName, tray)) {
        message = "The printer \"" + ToPrintableLine(printer) + "\" has no tray \"" +
                  ToPrintableLine(trayName) + "\".";
        return -1;
    }
    ticket.tray = tray.number;
    ticket.trayName = tray.name;
    return 0;
}

int PrinterSelection::ChangeTicket(const JobTicket& ticket, std::string& message) {
    PaperState paper = m_selected.paper;
    paper.ticket = ticket;
    return ChangePaper(std::move(paper), message);
}

bool PrinterSelection::TakesItem(std::string_view path) {
    return EndsWith(path, ".printer") || EndsWith(path, ".prs") || IsTrayFile(path) ||
           Contains(path, ".tra") || FindPaperItem(path, PaperGroup::kOrientation) != nullptr ||
           FindPaperItem(path, PaperGroup::kPaper) != nullptr;
}

ItemResult PrinterSelection::ApplyItem(std::string_view path) {
    if (EndsWith(path, ".printer")) return LoadPrinterItem(path);
    if (EndsWith(path, ".prs")) return LoadSettingsItem(path);
    if (IsTrayFile(path)) return LoadTrayItem(path);
    for (const PaperGroup group : {PaperGroup::kOrientation, PaperGroup::kPaper})
        if (const PaperItem* item = FindPaperItem(path, group)) return ApplyPaperItem(*item, path);
    return LoadTrayItem(path);
}

ItemResult PrinterSelection::LoadSettingsItem(std::string_view path) {
    m_services.debugLog.Trace("loading prs file: %s\r\n", path);
    ItemResult result;
    result.isApplied = LoadPrinterSettings(path, result.message) == 0;
    result.status = result.isApplied ? std::string(kPrinterSetTo) + PrinterInUse()
                                     : "Error - Printer settings not loaded";
    return result;
}

ItemResult PrinterSelection::LoadPrinterItem(std::string_view path) {
    // A file that merely has a printer's name as its own need not hold anything.
    if (m_services.files.Inspect(path).size > 0) return LoadSettingsItem(path);
    const std::string printer(TitleWithoutExtension(path));
    ItemResult result;
    result.isApplied = DPSetDefaultPrinter(printer) == 0;
    result.status = result.isApplied ? std::string(kPrinterSetTo) + printer : "Error - Printer not set";
    if (!result.isApplied)
        result.message = "The printer \"" + ToPrintableLine(printer) + "\" can't be made the default.";
    return result;
}

ItemResult PrinterSelection::LoadTrayItem(std::string_view path) {
    ItemResult result{false, "Error Tray Not Set", {}};
    std::string trayName;
    if (LoadTrayFile(m_services.files, path, trayName, result.message) != 0) return result;
    PaperState paper = m_selected.paper;
    if (TakeTray(trayName, paper.ticket, result.message) != 0) return result;
    result.isApplied = ChangePaper(std::move(paper), result.message) == 0;
    if (result.isApplied) result.status = "Set Tray";
    return result;
}

ItemResult PrinterSelection::ApplyPaperItem(const PaperItem& item, std::string_view name) {
    ItemResult result;
    PaperState paper = m_selected.paper;
    if (!item.apply(paper, name))
        result.message = Format("\"%s\" %s.", ToPrintableLine(FileTitle(name)), item.failedReason);
    else
        result.isApplied = ChangePaper(std::move(paper), result.message) == 0;
    result.status = result.isApplied ? item.doneStatus : item.failedStatus;
    return result;
}

int PrinterSelection::ChangePaper(PaperState paper, std::string& message) {
    PrintSetup setup = m_selected.setup;
    if (setup.IsEmpty() && WriteSetupOf(PrinterInUse(), setup, message) != 0) return -1;
    if (m_services.spooler.SetupFormat().ChangeTicket(setup.deviceMode, paper.ticket, message) != 0)
        return -1;
    m_selected.setup = std::move(setup);
    m_selected.paper = std::move(paper);
    return 0;
}

void PrinterSelection::SaveForRun() {
    m_services.debugLog.Trace("Creating temporary prs file\r\n");
    m_change = PrinterChange::kNone;
    m_beforeRun = m_selected;
    m_default->BeginRun();
    SavePrinterSettings(PathOf(kRunSetupFile));
    KeepSetupOf(m_default->BeforeRun().printer, kRunDefaultSetupFile);
}

int PrinterSelection::RestoreAfterRun(std::string& message) {
    const KeptDefault& before = m_default->BeforeRun();
    const int result = m_default->EndRun() ? SetDefaultBack(before) : 0;
    m_default->CloseNote(result == 0);
    if (result != 0)
        message = Format("The default printer can't be set back to \"%s\". The next start tries it again.",
                         ToPrintableLine(before.printer));
    // Not from the file: another program in this working folder may have put its own there meanwhile.
    m_selected = std::exchange(m_beforeRun, {});
    return result;
}

int PrinterSelection::KeepDefaultAtStart() {
    const KeptDefault kept = m_default->Keep();
    if (kept.printer.empty()) {
        m_services.debugLog.Trace("Printer not set! - No Access to printers or no printers installed!\r\n");
        m_services.prompts.ShowBox("Print Error!",
                                   "ERROR! No default printer!\n\nNo printers are installed or Windows isn't "
                                   "allowing access due to permissions issues!");
        return -1;
    }
    m_defaultAtStart = kept;
    KeepSetupOf(kept.printer, kStartSetupFile);
    m_services.prompts.ShowStatus(std::string(kPrinterSetTo) + kept.printer);
    return 0;
}

void PrinterSelection::RestoreOnQuit() {
    if (m_services.options.m_defaultPrinterOnQuit && m_defaultAtStart) SetDefaultBack(*m_defaultAtStart);
}

void PrinterSelection::KeepSetupOf(const std::string& printer, std::string_view file) {
    PrintSetup setup;
    std::string message;
    if (WriteSetupOf(printer, setup, message) == 0)
        WritePrintSetup(m_services.files, m_services.debugLog, PathOf(file), setup);
}

int PrinterSelection::SetDefaultBack(const KeptDefault& kept) {
    if (!kept.printer.empty() && DefaultPrinter() != kept.printer) {
        m_services.prompts.ShowStatus("Setting default printer: " + kept.printer);
        DPSetDefaultPrinter(kept.printer);
    }
    return m_default->RestoreChoice(kept);
}

}  // namespace quirepress
