#include "core/print_run_documents.h"

#include <utility>

#include "core/pdf_preparation.h"
#include "core/print_run_source.h"
#include "core/print_run_ways.h"
#include "core/processing_defaults.h"
#include "documents/form_data.h"
#include "logs/debug_log.h"

namespace quirepress {

namespace {

class DocumentWay : public RunWay {
public:
    DocumentWay(const DocumentWayServices& services, RunWays ways)
        : m_services(services), m_ways(std::move(ways)) {}

    bool Takes(const RunItem& item) override { return item.kind == ItemKind::kDocument; }

    WayResult Process(const RunItem& item, WayFeedback& feedback) override {
        using Kind = PageRange::Kind;
        if (item.processingParameters == ProcessingDefaults::kUnusable)
            return RefusedDocument(ProcessingDefaults::kFlaw);
        RunItem prepared = item;
        prepared.range = FindPageRange(item.processingParameters, item.extraOptions);
        if (prepared.range.kind == Kind::kImpossible) return RefusedDocument(prepared.range.flaw);
        // They keep the files that are printed.
        PreparedPdf form;
        PreparedPdf pages;
        if (IsFormData(m_services.files, item.path) && !FillForm(prepared, form, feedback))
            return Refused(form, feedback);
        if (IsPdf(prepared.Source()) && !TakePages(prepared, pages, feedback))
            return Refused(pages, feedback);
        const bool isRaw = IsSentDirectly(m_services.options, prepared);
        if (!pages.isPdf && !isRaw) return RefusedDocument(pages.doubt);
        if (prepared.range.kind != Kind::kNone && isRaw)
            return RefusedDocument("pages can't be chosen of a file that goes to the printer as it is");
        WayResult result = OfferToWays(prepared, feedback);
        const bool isDoubtful = !pages.doubt.empty() && !isRaw;
        if (result.end == WayResult::End::kPrinted && result.remark.empty() && isDoubtful)
            result.remark = "Printed, but may not be whole: " + pages.doubt;
        if (result.pages == 0) result.pages = pages.pages > 0 ? pages.pages : form.pages;
        return result;
    }

private:
    bool FillForm(RunItem& item, PreparedPdf& form, WayFeedback& feedback) {
        m_services.debugLog.Trace("found FDF / XDP\r\n");
        m_services.debugLog.Trace("Forms - Pre processing file: %s\r\n", item.path);
        feedback.ShowRowStatus("Pre processing file:");
        form = m_services.preparation.FillForm(item.path);
        item.preparedFile = form.file;
        return form.flaw.empty();
    }

    bool TakePages(RunItem& item, PreparedPdf& pages, WayFeedback& feedback) {
        m_services.debugLog.Trace("Checking for pre-processing: %s, processing params: '%s'\r\n", item.path,
                                  item.processingParameters);
        if (item.range.kind != PageRange::Kind::kNone) {
            m_services.debugLog.Trace("PDF - Pre processing file: %s\r\n", item.path);
            feedback.ShowRowStatus("Pre processing file:");
        }
        pages = m_services.preparation.Prepare(item.Source(), std::exchange(item.range, {}));
        if (pages.file != item.path) item.preparedFile = pages.file;
        return pages.flaw.empty() && !feedback.IsStopped();
    }

    static WayResult Refused(const PreparedPdf& pdf, const WayFeedback& feedback) {
        return feedback.IsStopped() ? StoppedWay() : RefusedDocument(pdf.flaw);
    }

    WayResult OfferToWays(const RunItem& item, WayFeedback& feedback) {
        for (const std::unique_ptr<RunWay>& way : m_ways)
            if (way->Takes(item)) return way->Process(item, feedback);
        return NoWayFor(item);
    }

    DocumentWayServices m_services;
    RunWays m_ways;
};

}  // namespace

std::unique_ptr<RunWay> MakeDocumentWay(const DocumentWayServices& services, RunWays ways) {
    return std::make_unique<DocumentWay>(services, std::move(ways));
}

}  // namespace quirepress
