#include "core/print_run_ways.h"

#include <algorithm>
#include <array>

#include "backends/direct_print.h"
#include "backends/printer_selection.h"
#include "backends/queue_watch.h"
#include "base/format.h"
#include "base/text.h"
#include "logs/debug_log.h"
#include "platform/spooler.h"

namespace quirepress {

namespace {

constexpr std::string_view kSourceBroke =
    "Can't Print - the file could not be read whole, or changed meanwhile";

WayResult DidNotSpool(Spooler& spooler, std::string_view reason, int systemError) {
    const std::string text = spooler.ErrorText(systemError);
    return {WayResult::End::kFailed, std::string(kStatusDidNotSpool),
            Format("Can't Print - did not spool: %s: %s (error %d)", reason, text, systemError), true};
}

WayResult Printed(std::string remark, std::int64_t jobId) {
    return {WayResult::End::kPrinted, std::string(kStatusDone), std::move(remark), false, jobId};
}

bool IsSaidYes(std::string_view text) {
    constexpr std::array<std::string_view, 4> kYes = {"yes", "1", "true", "on"};
    return std::find(kYes.begin(), kYes.end(), ToLowerAscii(text)) != kYes.end();
}

class DirectWay : public RunWay {
public:
    explicit DirectWay(const DirectWayServices& services) : m_services(services) {}

    bool Takes(const RunItem& item) override {
        if (item.kind != ItemKind::kDocument) return false;
        m_services.debugLog.Trace("Check for internal printing of file: %s\r\n", item.path);
        return IsSentDirectly(m_services.options, item);
    }

    WayResult Process(const RunItem& item, WayFeedback& feedback) override {
        const int times =
            DirectRepeatCount({item.processingParameters, item.addonParameters, item.extraOptions});
        m_services.debugLog.Trace("Sending file directly to printer: %s\r\n", item.path);
        feedback.ShowRowStatus("Spooling");
        m_services.printer.UsePriority(m_services.watch.RunPriority());
        int printed = 0;
        std::vector<std::int64_t> jobs;
        WayResult flaw;  // the last call that was not as it should be
        for (int i = 0; i < times; ++i) {
            if (i > 0 && !feedback.KeepGoing()) return Stopped(printed, times, flaw);
            const WayResult call = SendOnce(item, feedback);
            if (call.end == WayResult::End::kStopped) return Stopped(printed, times, flaw);
            if (call.end == WayResult::End::kPrinted) {
                ++printed;
                jobs.push_back(call.jobId);
            }
            if (call.end != WayResult::End::kPrinted || !call.remark.empty()) flaw = call;
        }
        if (printed == 0) return flaw;
        WayResult result = Printed(flaw.remark, jobs.back());
        if (printed < times)
            result.remark = Format("Printed %d of %d times: %s", printed, times, flaw.remark);
        else if (printed < item.ticket.copies)
            TellUnsetCopies(printed, item.ticket.copies, result);
        jobs.pop_back();
        result.earlierJobs = std::move(jobs);
        return result;
    }

private:
    // The bytes themselves say how they are to be printed, and a set-up changes none of them.
    static void TellUnsetCopies(int printed, int wanted, WayResult& result) {
        const std::string text =
            Format("sent %d of %d times: copies are not set for printer-ready files, -r%d is", printed,
                   wanted, wanted);
        result.status = std::string(kStatusDone) + ", " + text;
        if (result.remark.empty()) result.remark = "Printed, " + text;
    }

    WayResult SendOnce(const RunItem& item, WayFeedback& feedback) {
        const auto onChunk = [&feedback](std::int64_t done, std::int64_t total) {
            feedback.ShowBytes(done, total);
            return !feedback.IsStopped();
        };
        DirectOutcome outcome;
        const int result = m_services.printer.PrintExtPS(item.printer, item.Source(), onChunk, outcome);
        if (outcome.stopped) return StoppedWay();
        if (result == -1)
            return DidNotSpool(m_services.spooler, "the printer can't be opened", outcome.systemError);
        if (result != 0)
            return DidNotSpool(m_services.spooler, "the document can't be started", outcome.systemError);
        if (!outcome.sourceWhole)
            return {WayResult::End::kFailed, "Error - " + std::string(kSourceBroke),
                    std::string(kSourceBroke), true};
        if (outcome.isUnknown) return UnknownWay();
        if (!outcome.accepted)
            return DidNotSpool(m_services.spooler, "the spooler did not keep the document",
                               outcome.systemError);
        if (outcome.failedChunks == 0) return Printed({}, outcome.jobId);
        return Printed(Format("%d parts of the file did not reach the spooler (error %d)",
                              outcome.failedChunks, outcome.systemError),
                       outcome.jobId);
    }

    // `flaw`: of the calls before.
    static WayResult Stopped(int printed, int times, const WayResult& flaw) {
        if (flaw.status == kStatusUnknown) return flaw;
        WayResult result = StoppedWay();
        if (printed == 0) return result;
        result.isUntouched = false;
        result.status = Format("Error - Stopped, printed %d of %d times", printed, times);
        result.wholeCopies = printed;
        return result;
    }

    DirectWayServices m_services;
};

class SpoolerWay : public RunWay {
public:
    SpoolerWay(Spooler& spooler, QueueWatch& watch) : m_spooler(spooler), m_watch(watch) {}

    bool Takes(const RunItem& item) override {
        return item.kind == ItemKind::kDocument && item.range.kind == PageRange::Kind::kNone &&
               m_spooler.TakesDocument(item.printer, item.Source());
    }

    WayResult Process(const RunItem& item, WayFeedback& feedback) override {
        feedback.ShowRowStatus("Spooling");
        return HandOverDocument(m_spooler, m_watch, item, item.Source());
    }

private:
    Spooler& m_spooler;
    QueueWatch& m_watch;
};

class SettingsWay : public RunWay {
public:
    explicit SettingsWay(PrinterSelection& selection) : m_selection(selection) {}

    bool Takes(const RunItem& item) override {
        return item.kind == ItemKind::kCommand && PrinterSelection::TakesItem(item.path);
    }

    WayResult Process(const RunItem& item, WayFeedback&) override {
        const ItemResult applied = m_selection.ApplyItem(item.path);
        WayResult result;
        if (applied.isApplied) result.end = WayResult::End::kPrinted;
        result.status = applied.status;
        result.remark = applied.isApplied ? std::string() : applied.status + ": " + applied.message;
        return result;
    }

private:
    PrinterSelection& m_selection;
};

}  // namespace

bool IsSentDirectly(const GeneralOptions& options, const RunItem& item) {
    return IsSaidYes(item.printDirect) || IsDirectPrintFile(options, item.Source());
}

std::unique_ptr<RunWay> MakeSettingsWay(PrinterSelection& selection) {
    return std::make_unique<SettingsWay>(selection);
}

std::unique_ptr<RunWay> MakeDirectWay(const DirectWayServices& services) {
    return std::make_unique<DirectWay>(services);
}

std::unique_ptr<RunWay> MakeSpoolerWay(Spooler& spooler, QueueWatch& watch) {
    return std::make_unique<SpoolerWay>(spooler, watch);
}

WayResult HandOverDocument(Spooler& spooler, const QueueWatch& watch, const RunItem& item,
                           const std::string& file) {
    DocumentInfo document;
    document.name = item.path;
    document.ticket = item.ticket;
    document.priority = watch.RunPriority();
    int systemError = 0;
    const std::int64_t jobId = spooler.PrintDocument(item.printer, file, document, systemError);
    if (jobId >= 0) return Printed({}, jobId);
    if (jobId == kDocumentUnknown) return UnknownWay();
    return DidNotSpool(spooler, "the spooler did not take the document", systemError);
}

WayResult StoppedWay() {
    WayResult result;
    result.end = WayResult::End::kStopped;
    result.status = "Error - Stopped, nothing was printed";
    result.isUntouched = true;
    return result;
}

WayResult UnknownWay() {
    return {WayResult::End::kFailed, std::string(kStatusUnknown), {}, false};
}

WayResult RefusedDocument(std::string_view reason) {
    WayResult result;
    result.remark = "Can't Print - " + std::string(reason);
    result.status = "Error - " + result.remark;
    return result;
}

WayResult NoWayFor(const RunItem& item) {
    WayResult result;
    result.status = item.kind == ItemKind::kDocument
                        ? "Error - this kind of file can't be printed on this print system yet"
                        : "Error - this kind of item can't be applied on this print system yet";
    return result;
}

}  // namespace quirepress
