#include <algorithm>
#include <vector>

#include "backends/color_split.h"
#include "backends/printer_selection.h"
#include "backends/queue_watch.h"
#include "base/format.h"
#include "core/print_run_source.h"
#include "core/print_run_ways.h"
#include "core/scratch_folder.h"
#include "platform/spooler.h"
#include "settings/color_printer_options.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

class ColorWay : public RunWay {
public:
    explicit ColorWay(const ColorWayServices& services) : m_services(services) {}

    bool Takes(const RunItem& item) override {
        const ColorPrinterOptions& options = m_services.colorOptions;
        if (item.kind != ItemKind::kDocument || !options.m_split || !IsPdf(item.Source())) return false;
        // Where each half has a printer of its own, the run's takes part in nothing.
        const bool hasColor = !options.m_colorPrs.empty() || !options.m_colorPrinter.empty();
        const bool hasMono = !options.m_monoPrs.empty() || !options.m_monoPrinter.empty();
        return (hasColor && hasMono) || m_services.spooler.TakesDocument(item.printer, item.Source());
    }

    WayResult Process(const RunItem& item, WayFeedback& feedback) override {
        feedback.ShowRowStatus("Pre processing file:");
        const ScratchFolder scratch(m_services.files, m_services.options, m_services.workingFolder, "Colors");
        std::vector<ColorPiece> pieces;
        std::string message;
        // What needs a password has been prepared.
        const int end = m_services.colorSplit.SplitByColor(item.Source(), "", m_services.colorOptions,
                                                           scratch.Path(), pieces, message);
        if (feedback.IsStopped()) return StoppedWay();
        if (end != 0) return RefusedDocument(message);
        // Sets, not each part so many times.
        RunItem once = item;
        const int copies = pieces.size() > 1 ? std::max(1, item.ticket.copies) : 1;
        if (pieces.size() > 1) once.ticket.copies = JobTicket().copies;
        WayResult result;
        std::vector<std::string> printers;
        for (int copy = 1; copy <= copies; ++copy) {
            result = PrintPieces(once, pieces, feedback, printers);
            result.printers = printers;
            if (result.end == WayResult::End::kPrinted) continue;
            result.wholeCopies = copy - 1;
            if (copy > 1 && result.status != kStatusUnknown) {
                result.status = Format("Error - Printed %d of %d times", copy - 1, copies);
                result.canRetry = result.isUntouched = false;
            }
            return result;
        }
        return result;
    }

private:
    // A document of which a part has come out is never offered again.
    WayResult PrintPieces(const RunItem& item, const std::vector<ColorPiece>& pieces, WayFeedback& feedback,
                          std::vector<std::string>& printers) {
        WayResult result;
        std::size_t printed = 0;
        for (const ColorPiece& piece : pieces) {
            if (!feedback.KeepGoing()) {
                result = StoppedWay();
            } else {
                result = PrintPiece(item, piece, feedback, printers);
            }
            if (result.end != WayResult::End::kPrinted) break;
            ++printed;
        }
        if (printed == pieces.size() || printed == 0 || result.status == kStatusUnknown) return result;
        result.status = Format("Error - Printed to page %d only", pieces[printed - 1].lastPage);
        result.canRetry = result.isUntouched = false;
        return result;
    }

    // Its printer joins those that have got a part.
    WayResult PrintPiece(const RunItem& item, const ColorPiece& piece, WayFeedback& feedback,
                         std::vector<std::string>& printers) {
        RunItem part = item;
        std::string message;
        if (!SelectPrinter(piece.isColor, item, part, message)) return RefusedDocument(message);
        if (!m_services.spooler.TakesDocument(part.printer, part.Source()))
            return RefusedDocument("the printer \"" + part.printer + "\" takes no PDF files");
        feedback.ShowRowStatus("Spooling");
        WayResult result = HandOverDocument(m_services.spooler, m_services.watch, part, piece.file);
        if (result.end != WayResult::End::kPrinted && result.status != kStatusUnknown) return result;
        printers.erase(std::remove(printers.begin(), printers.end(), part.printer), printers.end());
        printers.push_back(part.printer);
        return result;
    }

    // The run's own printer and settings stay current.
    bool SelectPrinter(bool isColor, const RunItem& item, RunItem& part, std::string& message) {
        const ColorPrinterOptions& options = m_services.colorOptions;
        const std::string& prs = isColor ? options.m_colorPrs : options.m_monoPrs;
        const std::string& printer = isColor ? options.m_colorPrinter : options.m_monoPrinter;
        if (!prs.empty()) {
            PrinterSelection selection = m_services.selection;
            if (selection.LoadPrinterSettings(prs, message) != 0) return false;
            part.printer = selection.CurrentPrinter();
            part.ticket = selection.Ticket();
            part.ticket.copies = item.ticket.copies;  // of each half as many
        }
        if (!printer.empty()) part.printer = printer;
        return true;
    }

    ColorWayServices m_services;
};

}  // namespace

std::unique_ptr<RunWay> MakeColorWay(const ColorWayServices& services) {
    return std::make_unique<ColorWay>(services);
}

}  // namespace quirepress
