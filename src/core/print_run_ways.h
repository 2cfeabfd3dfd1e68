#pragma once

#include <memory>
#include <string>

#include "core/run_way.h"

namespace quirepress {

class ColorSplit;
class DebugLog;
class DirectPrinter;
class Files;
class PdfPages;
class PrinterSelection;
class QueueWatch;
class Spooler;
struct ColorPrinterOptions;
struct GeneralOptions;

// Command items that change the printer, its tray or its paper for the rows below.
std::unique_ptr<RunWay> MakeSettingsWay(PrinterSelection& selection);

struct DirectWayServices {
    DirectPrinter& printer;
    Spooler& spooler;
    QueueWatch& watch;
    DebugLog& debugLog;
    const GeneralOptions& options;
};

// Printer-ready files go to the spooler as they are, as often as the row asks for.
std::unique_ptr<RunWay> MakeDirectWay(const DirectWayServices& services);

struct PdfWayServices {
    Spooler& spooler;
    QueueWatch& watch;
    PrinterSelection& selection;
    ColorSplit& colorSplit;
    PdfPages& pages;
    Files& files;
    DebugLog& debugLog;
    const GeneralOptions& options;
    const ColorPrinterOptions& colorOptions;
    std::string workingFolder;
};

// PDF files of which only some pages are wanted, or whose pages go to two printers. Any other PDF is left to
// the ways behind.
std::unique_ptr<RunWay> MakePdfWay(const PdfWayServices& services);

// Documents that the print system renders, or stores, by itself.
std::unique_ptr<RunWay> MakeSpoolerWay(Spooler& spooler, QueueWatch& watch);

// Hands `file` to the print system as the document of the item, to the item's printer.
WayResult HandOverDocument(Spooler& spooler, const QueueWatch& watch, const RunItem& item,
                           const std::string& file);

}  // namespace quirepress
