#include "settings/general_settings.h"

#include <algorithm>
#include <array>

#include "settings/keyword_file.h"

namespace quirepress {

namespace {

using Options = GeneralOptions;

constexpr std::int32_t kLeastTimeAllow = 5000;  // milliseconds

bool HasOwnRectangle(const Options& options) {
    return options.m_screen == "Current Size" || options.m_screen == "Last Used Size";
}

void ClearPauseAfter(Options& options) {
    options.m_pauseAfter = 0;
}

}  // namespace

// clang-format off
const KeywordTable<GeneralOptions>& GeneralKeywords() {
    static const KeywordTable<GeneralOptions> table(
        {"general_setup.ini", "Can't save to general_setup.ini file.", FileAccess::kOwnerOnly}, {
        Flag("NOPDFPAGES", &Options::m_noPdfPages,
             "Don't count pdf pages, this will speed it up slightly."),
        NegativeFlag("DONTCLOSEACROBAT", &Options::m_closeAcrobat,
             "Close down Acrobat when Quirepress exits."),
        NegativeFlag("DONTCLOSEACROBATLIST", &Options::m_closeAcrobatList,
             "Close down Acrobat when list has finished printing."),
        NegativeFlag("DONTCLOSEACROBATPRS", &Options::m_closeAcrobatPrs,
             "Close down Acrobat before prs file change, this is required for Adobe 6 & 7 to pickup new printer "
             "settings on startup."),
        Flag("REMOVEITEM", &Options::m_removeItem,
             "Remove file item from list after print is successful."),
        Flag("PAGEMASK", &Options::m_pageMask,
             "Use page mask in count column, e.g. 00099 for 99 pages."),
        Number("PAUSE1BEFORE", &Options::m_pauseBefore,
             "Seconds to pause before each print.")
             .WhenMissing(0).WrittenWhenNonZero().KeptByLoad(),
        Number("PAUSE1AFTER", &Options::m_pauseAfter,
             "Pause n seconds inbetween each print.")
             .WhenMissing(2).WrittenWhenNonZero(),
        Number("CLOSEOFFICEPASSWORDBOX", &Options::m_closeOfficePasswordBox,
             "Close Microsoft Office enter password box after n seconds, if set to 0 then this is ignored.")
             .WhenMissing(20).KeptByLoad(),
        Number("PAUSEMOVE", &Options::m_pauseMove,
             "Pause n seconds before actioning a file move.")
             .WhenMissing(0).WrittenWhenNonZero(),
        Text("TEMPFOLDER", &Options::m_tempFolder,
             "Temporary folder used by the run, in the working folder unless it is a whole path.")
             .WhenMissing("Temp").KeptByLoad(),
        Flag("CLOSEACROBATEVERYFILE", &Options::m_closeAcrobatEveryFile,
             "Close the PDF viewer after every file."),
        // Without a value this key clears the pause after each print and leaves its own field alone.
        Number("PRINTCHANGEDELAYALLOWANCE", &Options::m_printerChangeDelay,
             "Increase printer change delay for slower networks.")
             .WhenMissing(ClearPauseAfter).WrittenWhenNonZero(),
        Flag("SHOWPRINTERATTENTION", &Options::m_showPrinterAttention,
             "Show that the printer asks for attention."),
        Flag("ERRORLOG", &Options::m_errorLog,
             "Log move file, rename &&& can't print errors to error.log."),
        Flag("GENERATEREPORTS", &Options::m_generateReports,
             "Automatically generate txt and csv reports on files printed in current list."),
        NegativeFlag("NOXPPHOTO", &Options::m_xpPhoto,
             "Use Microsoft windows photo printing instead of using the shell print association setup in windows "
             "(XP / 2003 / Vista Only)"),
        Flag("WAITBAT", &Options::m_waitBat,
             "Wait for a script (.bat) to end that a document's print command has started."),
        Flag("WAITSPOOLCLEARBEFOREPRINT", &Options::m_waitSpoolClearBeforePrint,
             "Waits for all prints to finish in spool queue before sending next printer change request."),
        Flag("QUIETMODE", &Options::m_quietMode,
             "Quiet mode - suppresses certain QPR dialogs."),
        Flag("WAITFORPRINTER", &Options::m_waitForPrinter,
             "If printer has an error status then wait."),
        Flag("NOSHAREVIOLATIONCHECK", &Options::m_noShareViolationCheck,
             "Don't check before printing whether another program has the file open for itself."),
        Flag("CLEARPRINTLOG", &Options::m_clearPrintLog, "Clear the print log."),
        Flag("CLEARERRORLOG", &Options::m_clearErrorLog, "Clear the error log."),
        Flag("CLEAREMAILLOG", &Options::m_clearEmailLog, "Clear the mail log."),
        Flag("CLEARFTPLOG", &Options::m_clearFtpLog, "Clear the FTP log."),
        Flag("CLEARFTPERRORLOG", &Options::m_clearFtpErrorLog, "Clear the FTP error log."),
        Flag("CLEARQPRLOG", &Options::m_clearQprLog, "Clear the program's own log."),
        Flag("COPIESPROMPT", &Options::m_copiesPrompt,
             "Prompt for copies before printing.")
             .KeptByLoad(),
        NegativeFlag("DONTUSEINTERNALPOSTSCRIPT", &Options::m_useInternalPostScript,
             "Use internal postscript printing (7bit ASCII not Binary)."),
        Flag("USEINTERNALTIF", &Options::m_useInternalTif,
             "Use internal TIF printing. note: this will only work with a TIF printer driver"),
        Flag("USEINTERNALPDF", &Options::m_useInternalPdf,
             "Use internal PDF printing. note: this will only work with a PDF printer driver"),
        Flag("USEINTERNALSPL", &Options::m_useInternalSpl,
             "Use internal SPL printing. note: this will only work with same driver that created the .spl spooler "
             "file"),
        Flag("USEINTERNALZPL", &Options::m_useInternalZpl,
             "Use internal ZPL printing. note: this will only work with same driver that created the .zpl spooler "
             "file"),
        Flag("USEINTERNALHPGL", &Options::m_useInternalHpgl,
             "Use internal HPGL printing. note: this will only work with same driver that created the .hpgl spooler "
             "file"),
        NegativeFlag("DONTUSEINTERNALPCL", &Options::m_useInternalPcl, "Use internal PCL printing."),
        Flag("USEINTERNALTXT", &Options::m_useInternalTxt,
             "Use internal TEXT printing. note: this is the raw format, no wrapping or form feeds etc will be sent"),
        Flag("CHECKPRINTERISVALID", &Options::m_checkPrinterIsValid,
             "Before any printing takes place it will check to make sure it's accessable (this is per list not "
             "within a list & in monitor / scheduler mode only)"),
        NegativeFlag("DONTUSEINTERNALPRN", &Options::m_useInternalPrn, "Use internal prn file printing."),
        Flag("HPCLICKOK", &Options::m_hpClickOk,
             "Confirm a printer driver's pop-up with OK during printing."),
        Flag("DEFAULTPRINTER", &Options::m_defaultPrinterOnQuit,
             "On Quit default back to default printer, same printer that was set when QPR was run."),
        Flag("DONTCHECKSPOOLERFORPRINT", &Options::m_dontCheckSpoolerForPrint,
             "Don't check the spooler queue for the print, mark as printed OK"),
        NegativeFlag("DONTREMOVEMONITOREDLIST", &Options::m_removeMonitoredList,
             "Remove monitored files from list when printed."),
        Flag("GENERATEANDPRINTLIST", &Options::m_generateAndPrintList,
             "Generate the report of the list and print it; lasts until the program ends.")
             .WriteOnly(),
        Number("EXTRAMOVERETRY", &Options::m_extraMoveRetry,
             "Retry n times extra before failing to move, copy, delete (internal default is 200)")
             .WrittenWhenAtLeast(1),
        Number("TIMEALLOW", &Options::m_timeAllow,
             "Time to allow 3rd party programs to print before showing error can't print. In milliseconds.")
             .WrittenWhenAtLeast(kLeastTimeAllow),
        Text("SCREEN", &Options::m_screen,
             "Main window size: \"Default Size\", \"Current Size\" or \"Last Used Size\"."),
        Numbers("STARTUPRECT", {&Options::m_startupTop, &Options::m_startupBottom, &Options::m_startupLeft,
                                &Options::m_startupRight},
             "Main window rectangle: top, bottom, left, right.")
             .WrittenWhen(HasOwnRectangle, "`SCREEN` is \"Current Size\" or \"Last Used Size\""),
        Flag("NOSPLASH", &Options::m_noSplash, "No splash window at start-up."),
        Flag("LOADCOLPOS", &Options::m_loadColumnPositions, "Restore the list's column positions."),
        Number("PRINTCOPIES", &Options::m_printCopies, "Copies to print.").WrittenWhenNonZero(),
        Number("PRINTCOPIESREPEAT", &Options::m_printCopiesRepeat,
             "How often the whole set is repeated.")
             .WrittenWhenNonZero(),
        Text("SETUPINI", &Options::m_setupIni, "Alternative monitor settings file."),
        Text("MOVETODLG", &Options::m_moveToDialogFolder,
             "Folder last chosen in the move-to dialog.")
             .WrittenWhenNotEmpty().KeptByLoad(),
        Number("ALWAYSMOVETO", &Options::m_alwaysMoveTo,
             "Move-to rule applied after every print.")
             .WrittenWhenNonZero(),
        Number("LOGFONTSIZE", &Options::m_logFontSize, "Font size of the log viewers.").WrittenWhenNonZero(),
        Number("PRINTPRIORITY", &Options::m_printPriority,
             "Change print priority if the job in the spooler queue to 1-99, 1 been the lowest & 99 been the highest. "
             "default is 0 for windows default priority (unchanged)")
             .WrittenWhenAtLeast(1).KeptByLoad(),
        Flag("DECREASEPRINTPRIORITY", &Options::m_decreasePrintPriority,
             "Decrease print priority above for every print button clicked then start at 99 again, this is to keep "
             "set's together and change the priority for each set group")
             .KeptByLoad(),
        Flag("SNAPSHOTRESTORE", &Options::m_snapshotRestore,
             "Snapshot restore keeps a log on the current print status of files waiting to print, so if e.g. a power "
             "fail occurs QPR will check for this on startup and try to load the status of where it currently was."),
        Flag("ONERRORPRINTONEMORETIME", &Options::m_onErrorPrintOneMoreTime,
             "If a print error occurs then try once again."),
        Flag("ONERRORHANGPRINTONEMORETIME", &Options::m_onErrorHangPrintOneMoreTime,
             "On previous process hang that has been killed by Quirepress try printing the same file again. (monitor "
             "mode only)"),
        Flag("EXTRACTZIP", &Options::m_extractZip, "Unpack archives that are added to the list."),
        Flag("DELETEZIPFILES", &Options::m_deleteZipFiles,
             "Delete an archive that was unpacked whole once its documents begin to print."),
        Text("UNZIPFOLDER", &Options::m_unzipFolder, "Folder into which archives are unpacked."),
        Flag("DONTRETRYPDF", &Options::m_dontRetryPdf, "Do not retry a PDF that failed."),
        Flag("ALWAYSAPPEND", &Options::m_alwaysAppend, "Always append added files to the list."),
        Flag("DONTPRINTPDFIFZEROCOUNT", &Options::m_dontPrintPdfZero, "Skip a PDF whose page count is 0."),
        Flag("DONTPRINTTODEFAULTPDF", &Options::m_dontPrintToDefaultPdf,
             "Do not print to the default PDF printer."),
        Flag("DONTUSEINTPRINTINGPDF", &Options::m_dontUseIntPrintingPdf,
             "Do not use the internal PDF printing engine.")
             .NeedsModernSystem(),
        Flag("DONTPDFAUTOROTATE", &Options::m_dontPdfAutoRotate,
             "Internal PDF printing: no automatic rotation.")
             .NeedsModernSystem(),
        Flag("PDFFITTOPAPER", &Options::m_pdfFitToPaper,
             "Internal PDF printing: fit page to paper.")
             .NeedsModernSystem(),
        Flag("DONTPDFSHRINKLARGE", &Options::m_dontPdfShrinkLarge,
             "Internal PDF printing: do not shrink large pages.")
             .NeedsModernSystem(),
        Text("USEOPENPASSWORD", &Options::m_openPassword,
             "Password with which protected PDFs are opened, stored as plain text.")
             .NeedsModernSystem(),
    });
    return table;
}
// clang-format on

int LoadGeneralOptions(GeneralOptions& options, const SettingsPlace& place, SystemFamily family,
                       bool isUnattended) {
    KeywordReading reading;
    reading.isModernSystem = family == SystemFamily::kWindowsXpOrLater;
    const int result = LoadSettings(GeneralKeywords(), place, options, reading);
    // Older systems cannot run the engine: any line at all switches it off.
    if (!reading.isModernSystem && reading.hasLines) options.m_dontUseIntPrintingPdf = true;
    if (isUnattended) options.m_errorLog = true;
    return result;
}

int SaveGeneralOptions(const GeneralOptions& options, const SettingsPlace& place, bool isInhibited) {
    return isInhibited ? kSettingsDone : SaveSettings(GeneralKeywords(), place, options);
}

void ApplyDialogCouplings(GeneralOptions& options) {
    if (options.m_dontUseIntPrintingPdf) return;
    options.m_dontRetryPdf = true;
    if (!options.m_openPassword.empty()) options.m_dontPrintPdfZero = false;
}

bool IsCoupledKey(std::string_view key) {
    constexpr std::array<std::string_view, 4> kKeys = {"DONTUSEINTPRINTINGPDF", "DONTRETRYPDF",
                                                       "USEOPENPASSWORD", "DONTPRINTPDFIFZEROCOUNT"};
    return std::find(kKeys.begin(), kKeys.end(), key) != kKeys.end();
}

}  // namespace quirepress
