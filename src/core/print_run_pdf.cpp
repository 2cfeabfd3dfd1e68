#include <algorithm>
#include <vector>

#include "backends/color_split.h"
#include "backends/printer_selection.h"
#include "backends/queue_watch.h"
#include "base/format.h"
#include "core/page_range.h"
#include "core/print_run_source.h"
#include "core/print_run_ways.h"
#include "core/scratch_folder.h"
#include "documents/pdf_pages.h"
#include "logs/debug_log.h"
#include "platform/spooler.h"
#include "settings/color_printer_options.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

WayResult Refused(const std::string& reason) {
    WayResult result;
    result.status = "Error - Can't Print - " + reason;
    result.remark = "Can't Print - " + reason;
    return result;
}

class PdfWay : public RunWay {
public:
    explicit PdfWay(const PdfWayServices& services) : m_services(services) {}

    bool Takes(const RunItem& item) override {
        if (item.kind != ItemKind::kDocument || !IsPdf(item.path)) return false;
        m_services.debugLog.Trace("Checking for pre-processing: %s, processing params: '%s'\r\n", item.path,
                                  item.processingParameters);
        int first = 0;
        int last = 0;
        const bool isWorkedOn =
            m_services.colorOptions.m_split || ReadPageRange(item.processingParameters, first, last);
        return isWorkedOn && m_services.spooler.TakesDocument(item.printer, item.path);
    }

    WayResult Process(const RunItem& item, WayFeedback& feedback) override {
        m_services.debugLog.Trace("PDF - Pre processing file: %s\r\n", item.path);
        feedback.ShowRowStatus("Pre processing file:");
        const ScratchFolder scratch(m_services.files, m_services.options, m_services.workingFolder, "Pages");
        std::string path = item.path;
        PdfPageRange range;
        if (ReadPageRange(item.processingParameters, range.first, range.last)) {
            path = scratch.Path() + "/pages.pdf";
            m_services.files.MakeFolders(scratch.Path());
            const PdfResult extracted =
                m_services.pages.ExtractPages(item.path, m_services.options.m_openPassword, {range}, path);
            if (extracted != PdfResult::kDone) return Refused(DescribePdfResult(extracted));
        }
        std::vector<ColorPiece> pieces;
        std::string message;
        if (!m_services.colorOptions.m_split)
            pieces.push_back({path, true, 1, 1, false});
        else if (m_services.colorSplit.SplitByColor(path, m_services.options.m_openPassword,
                                                    m_services.colorOptions, scratch.Path(), pieces,
                                                    message) != 0)
            return Refused(message);
        // Sets, not each part so many times.
        RunItem once = item;
        const int copies = pieces.size() > 1 ? std::max(1, item.ticket.copies) : 1;
        if (pieces.size() > 1) once.ticket.copies = JobTicket().copies;
        WayResult result;
        for (int copy = 1; copy <= copies; ++copy) {
            result = PrintPieces(once, pieces, feedback);
            if (result.end == WayResult::End::kPrinted) continue;
            if (copy > 1 && result.status != kStatusUnknown) {
                result.status = Format("Error - Printed %d of %d times", copy - 1, copies);
                result.canRetry = false;
            }
            return result;
        }
        return result;
    }

private:
    // A document of which a part has come out is never offered again.
    WayResult PrintPieces(const RunItem& item, const std::vector<ColorPiece>& pieces, WayFeedback& feedback) {
        WayResult result;
        std::size_t printed = 0;
        for (const ColorPiece& piece : pieces) {
            if (!feedback.KeepGoing()) {
                result.end = WayResult::End::kStopped;
                result.status = "Error - Stopped, nothing was printed";
            } else {
                result = PrintPiece(item, piece, feedback);
            }
            if (result.end != WayResult::End::kPrinted) break;
            ++printed;
        }
        if (printed == pieces.size() || printed == 0 || result.status == kStatusUnknown) return result;
        result.status = Format("Error - Printed to page %d only", pieces[printed - 1].lastPage);
        result.canRetry = false;
        return result;
    }

    WayResult PrintPiece(const RunItem& item, const ColorPiece& piece, WayFeedback& feedback) {
        RunItem part = item;
        std::string message;
        if (m_services.colorOptions.m_split && !SelectPrinter(piece.isColor, part, message))
            return Refused(message);
        if (!m_services.spooler.TakesDocument(part.printer, part.path))
            return Refused("the printer \"" + part.printer + "\" takes no PDF files");
        feedback.ShowRowStatus("Spooling");
        return HandOverDocument(m_services.spooler, m_services.watch, part, piece.file);
    }

    // The run's own printer and settings stay current.
    bool SelectPrinter(bool isColor, RunItem& part, std::string& message) {
        const ColorPrinterOptions& options = m_services.colorOptions;
        const std::string& prs = isColor ? options.m_colorPrs : options.m_monoPrs;
        const std::string& printer = isColor ? options.m_colorPrinter : options.m_monoPrinter;
        if (!prs.empty()) {
            PrinterSelection selection = m_services.selection;
            if (selection.LoadPrinterSettings(prs, message) != 0) return false;
            part.printer = selection.CurrentPrinter();
            part.ticket = selection.Ticket();
        }
        if (!printer.empty()) part.printer = printer;
        return true;
    }

    PdfWayServices m_services;
};

}  // namespace

std::unique_ptr<RunWay> MakePdfWay(const PdfWayServices& services) {
    return std::make_unique<PdfWay>(services);
}

}  // namespace quirepress
