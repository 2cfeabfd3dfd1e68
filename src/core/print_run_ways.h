#pragma once

#include <memory>
#include <string>

#include "core/run_way.h"

namespace quirepress {

class ColorSplit;
class DebugLog;
class DirectPrinter;
class Files;
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

// Whether a document is printer-ready, by its name or because its row says so.
bool IsSentDirectly(const GeneralOptions& options, const RunItem& item);

// Printer-ready files go to the spooler as they are, as often as the row asks for.
std::unique_ptr<RunWay> MakeDirectWay(const DirectWayServices& services);

struct ColorWayServices {
    Spooler& spooler;
    QueueWatch& watch;
    PrinterSelection& selection;
    ColorSplit& colorSplit;
    Files& files;
    const GeneralOptions& options;
    const ColorPrinterOptions& colorOptions;
    std::string workingFolder;
};

// PDF files whose pages go to two printers. Any other PDF is left to the ways behind.
std::unique_ptr<RunWay> MakeColorWay(const ColorWayServices& services);

// Documents that the print system renders, or stores, by itself.
std::unique_ptr<RunWay> MakeSpoolerWay(Spooler& spooler, QueueWatch& watch);

// Hands `file` to the print system as the document of the item, to the item's printer.
WayResult HandOverDocument(Spooler& spooler, const QueueWatch& watch, const RunItem& item,
                           const std::string& file);

}  // namespace quirepress
