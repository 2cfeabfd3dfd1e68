#pragma once

#include <cstdint>
#include <string>

namespace quirepress {

// The program-wide options, kept in general_setup.ini; read once at start-up and consulted by every
// feature. The key of a field and its meaning stand in the table of general_settings.cpp. A field of a key
// with a negative sense ("DONT...", "NO...") holds the positive option.
struct GeneralOptions {
    // Counting and list
    bool m_noPdfPages = false;
    bool m_removeItem = false;
    bool m_pageMask = false;
    bool m_generateReports = false;
    bool m_generateAndPrintList = false;
    bool m_alwaysAppend = false;
    bool m_dontPrintPdfZero = false;
    bool m_extractZip = false;
    bool m_deleteZipFiles = false;
    std::string m_unzipFolder;
    bool m_removeMonitoredList = true;

    // Pauses, times and retries; seconds where nothing else is said
    std::int32_t m_pauseBefore = 0;
    std::int32_t m_pauseAfter = 0;
    std::int32_t m_closeOfficePasswordBox = 20;
    std::int32_t m_pauseMove = 0;
    std::int32_t m_printerChangeDelay = 0;  // PRINTCHANGEDELAYALLOWANCE, tenths of a second
    std::int32_t m_extraMoveRetry = 0;
    std::int32_t m_timeAllow = 14000;  // milliseconds
    bool m_onErrorPrintOneMoreTime = false;
    bool m_onErrorHangPrintOneMoreTime = false;
    bool m_dontRetryPdf = false;

    // The run and the queue
    std::int32_t m_printCopies = 1;
    std::int32_t m_printCopiesRepeat = 1;
    bool m_copiesPrompt = false;
    bool m_waitBat = false;
    bool m_waitSpoolClearBeforePrint = false;
    bool m_waitForPrinter = false;
    bool m_showPrinterAttention = false;
    bool m_checkPrinterIsValid = false;
    bool m_dontCheckSpoolerForPrint = false;
    bool m_noShareViolationCheck = false;
    std::int32_t m_printPriority = 0;
    bool m_decreasePrintPriority = false;
    bool m_snapshotRestore = false;
    bool m_defaultPrinterOnQuit = false;  // DEFAULTPRINTER
    bool m_hpClickOk = false;

    // Families that go to the printer as they are
    bool m_useInternalPostScript = true;
    bool m_useInternalTif = false;
    bool m_useInternalPdf = false;
    bool m_useInternalSpl = false;
    bool m_useInternalZpl = false;
    bool m_useInternalHpgl = false;
    bool m_useInternalPcl = true;
    bool m_useInternalTxt = false;
    bool m_useInternalPrn = true;

    // PDF and photos
    bool m_closeAcrobat = true;      // when the program exits
    bool m_closeAcrobatList = true;  // when the list has finished
    bool m_closeAcrobatPrs = true;   // before a printer settings file
    bool m_closeAcrobatEveryFile = false;
    bool m_xpPhoto = true;
    bool m_dontPrintToDefaultPdf = false;
    bool m_dontUseIntPrintingPdf = false;
    bool m_dontPdfAutoRotate = false;
    bool m_pdfFitToPaper = false;
    bool m_dontPdfShrinkLarge = false;
    std::string m_openPassword;

    // Logs
    bool m_errorLog = false;
    bool m_clearPrintLog = false;
    bool m_clearErrorLog = false;
    bool m_clearEmailLog = false;
    bool m_clearFtpLog = false;
    bool m_clearFtpErrorLog = false;
    bool m_clearQprLog = false;
    std::int32_t m_logFontSize = 7;

    // Folders, window and the rest
    std::string m_tempFolder = "Temp";
    std::string m_setupIni;
    std::string m_moveToDialogFolder;
    std::int32_t m_alwaysMoveTo = 0;
    bool m_quietMode = false;
    bool m_noSplash = false;
    bool m_loadColumnPositions = false;
    std::string m_screen = "Default Size";
    std::int32_t m_startupTop = 0;
    std::int32_t m_startupBottom = 0;
    std::int32_t m_startupLeft = 0;
    std::int32_t m_startupRight = 0;
};

}  // namespace quirepress
