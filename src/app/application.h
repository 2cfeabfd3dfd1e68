#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/services.h"
#include "settings/balance_options.h"
#include "settings/color_printer_options.h"
#include "settings/email_options.h"
#include "settings/general_options.h"
#include "settings/print_to_file_options.h"
#include "settings/separator_options.h"
#include "settings/settings_file.h"

namespace quirepress {

class DebugLog;
class DirectPrinter;
class EmbeddedSpooler;
class ErrorLog;
class AppWindows;
class DialogRules;
class HangLog;
class MailSender;
class Notifications;
class PdfCounter;
class PdfPreparation;
class PdfWorker;
class PageColors;
class PageRenderer;
class ColorSplit;
class PostPrint;
class PrintCommandFile;
class PrinterAdministration;
class PrintList;
class PrintLog;
class PrintRun;
class ProcessingDefaults;
class PrinterBalance;
class PrinterSelection;
class Prompts;
class QueueWatch;
class RunDownloads;
class RunSeparators;
class RunOutcomes;
class RunSnapshot;
class ShellPrinter;
class Spooler;
class TransferLogs;
class ViewerWindows;
struct TransferPlace;

// The folder that a program works in: `named`, else $QUIREPRESS_HOME, else the user's own. It is made when
// missing; `folder` is its absolute path, ending in a separator. 0, or -1 with `message`.
int PrepareWorkingFolder(Services& services, std::string_view named, std::string& folder,
                         std::string& message);

// How far a spooler is that delivers its jobs itself while the program runs. One with a server of its own is
// always idle.
struct DeliveryProgress {
    bool isIdle = true;                          // nothing waits but what cannot go out now
    int waiting = 0;                             // jobs
    std::int64_t bytesSent = 0, bytesTotal = 0;  // of those that are going out
};

struct ApplicationRequest {
    std::string workingFolder;  // as PrepareWorkingFolder gives it
    bool unattended = false;    // boxes go to the error log, questions take their safe answer
    bool debug = false;
    std::function<bool()> keepLoading = [] { return true; };  // false ends the loading of items
};

// The one place where the services, the settings, the list and the run are made and wired. Everything lives
// as long as it does. The options are read, and the debug log is open, once it is constructed.
class Application {
public:
    Application(Services& services, Prompts& userPrompts, ApplicationRequest request);
    ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    // The spooler of this name; empty: $QUIREPRESS_SPOOLER, else the best one that is there. 0, or -1 with
    // `message`. `wasNamed` tells whether the user chose it.
    int OpenSpooler(std::string_view name, bool& wasNamed, std::string& message);

    const std::string& WorkingFolder() const { return m_request.workingFolder; }
    std::string PathOf(std::string_view name) const { return m_request.workingFolder + std::string(name); }
    SettingsPlace Settings();
    Services& System() { return m_services; }
    Prompts& UserPrompts() { return *m_prompts; }
    GeneralOptions& Options() { return m_options; }
    const BalanceOptions& BalancedPrinters() const { return m_balanceOptions; }
    const ColorPrinterOptions& ColorPrinters() const { return m_colorOptions; }
    DebugLog& Debug() { return *m_debugLog; }
    ErrorLog& Errors() { return *m_errorLog; }
    RunOutcomes& Outcomes() { return *m_outcomes; }
    PdfCounter& PdfPages() { return *m_pdfCounter; }
    PageColors& PdfColors() { return *m_pageColors; }
    PrintList& List() { return *m_list; }
    RunSnapshot& Snapshot() { return *m_snapshot; }
    Notifications& Notices() { return *m_notifications; }
    // $SSL_CERT_FILE names the certificates that are trusted instead of the system's.
    TransferPlace Transfers();
    TransferLogs& TransferRecords() { return *m_transferLogs; }

    // After OpenSpooler.
    Spooler& PrintSpooler() { return *m_spooler; }
    PrinterAdministration* Administration();  // null when the spooler has tools of its own
    DeliveryProgress Delivery();
    PrintRun& Run() { return *m_run; }
    PrinterSelection& Selection() { return *m_selection; }
    QueueWatch& Watch() { return *m_watch; }
    PrinterBalance& Balance() { return *m_balance; }
    ShellPrinter& PrintCommands() { return *m_shellPrinter; }

private:
    void OpenCups(bool wasNamed, std::string& message);
    void OpenEmbedded(std::string& message);
    void MakePrinting();
    void MakeDialogs();
    void MakeOutcomes();
    void MakeRowServices();
    void MakeRun();
    void MakeNotifications();

    Services& m_services;
    ApplicationRequest m_request;
    std::unique_ptr<ErrorLog> m_errorLog;
    std::unique_ptr<Prompts> m_unattendedPrompts;
    Prompts* m_prompts;
    std::unique_ptr<DebugLog> m_debugLog;
    std::unique_ptr<TransferLogs> m_transferLogs;
    GeneralOptions m_options;
    std::unique_ptr<PdfWorker> m_pdfWorker;
    std::unique_ptr<PdfCounter> m_pdfCounter;
    std::unique_ptr<PdfPreparation> m_preparation;
    std::unique_ptr<PrintList> m_list;
    EmailOptions m_emailOptions;
    std::unique_ptr<MailSender> m_mailSender;
    std::unique_ptr<Notifications> m_notifications;
    std::unique_ptr<Spooler> m_spooler;
    EmbeddedSpooler* m_embedded = nullptr;
    std::unique_ptr<DirectPrinter> m_directPrinter;
    BalanceOptions m_balanceOptions;
    ColorPrinterOptions m_colorOptions;
    SeparatorOptions m_separatorOptions;
    std::unique_ptr<PageRenderer> m_pageRenderer;
    std::unique_ptr<PageColors> m_pageColors;
    std::unique_ptr<ColorSplit> m_colorSplit;
    std::unique_ptr<PrinterSelection> m_selection;
    std::unique_ptr<QueueWatch> m_watch;
    std::unique_ptr<PrinterBalance> m_balance;
    std::unique_ptr<RunSnapshot> m_snapshot;
    PrintToFileSettings m_printToFile;
    std::unique_ptr<AppWindows> m_appWindows;
    std::unique_ptr<DialogRules> m_dialogs;
    std::unique_ptr<ViewerWindows> m_viewers;
    std::unique_ptr<PrintCommandFile> m_printCommands;
    std::unique_ptr<ShellPrinter> m_shellPrinter;
    std::unique_ptr<PrintLog> m_printLog;
    std::unique_ptr<HangLog> m_hangLog;
    std::unique_ptr<PostPrint> m_postPrint;
    std::unique_ptr<RunOutcomes> m_outcomes;
    std::unique_ptr<ProcessingDefaults> m_processing;
    std::unique_ptr<RunDownloads> m_downloads;
    std::unique_ptr<RunSeparators> m_separators;
    std::unique_ptr<PrintRun> m_run;
};

}  // namespace quirepress
