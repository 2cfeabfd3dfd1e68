#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "backends/balance.h"
#include "backends/color_split.h"
#include "backends/direct_print.h"
#include "backends/printer_selection.h"
#include "backends/queue_watch.h"
#include "backends/viewer_windows.h"
#include "base/path.h"
#include "base/text.h"
#include "core/pdf_preparation.h"
#include "core/post_print.h"
#include "core/print_list.h"
#include "core/print_run.h"
#include "core/print_run_documents.h"
#include "core/print_run_ways.h"
#include "core/processing_defaults.h"
#include "core/run_downloads.h"
#include "core/run_notices.h"
#include "core/run_outcomes.h"
#include "core/run_separators.h"
#include "core/run_snapshot.h"
#include "documents/page_colors.h"
#include "documents/page_renderer.h"
#include "documents/pdf_counter.h"
#include "documents/pdf_forms.h"
#include "fakes/fake_app_windows.h"
#include "fakes/fake_clock.h"
#include "fakes/fake_event_loop.h"
#include "fakes/fake_prompts.h"
#include "fakes/fake_spooler.h"
#include "fakes/faulty_files.h"
#include "fakes/temporary_folder.h"
#include "logs/debug_log.h"
#include "logs/error_log.h"
#include "logs/hang_log.h"
#include "logs/print_log.h"
#include "logs/transfer_logs.h"
#include "platform/files.h"
#include "platform/services.h"
#include "settings/color_printer_options.h"
#include "settings/general_options.h"
#include "settings/separator_options.h"

namespace quirepress {

// One page each; for a splitting, as many as there are letters in `colors`: "c" colour, "m" none.
class StagePdfs : public PdfLibrary, public PdfPages, public PdfForms {
public:
    long long CountPages(std::string_view, bool, std::string_view) override { return opens ? 1 : -1; }
    PdfResult InspectColors(std::string_view, std::string_view, int, std::vector<PageColor>& pages) override {
        if (onCall) onCall();
        for (const char c : colors) pages.push_back(c == 'c' ? PageColor::kColor : PageColor::kMono);
        return colors.empty() ? PdfResult::kUnreadable : PdfResult::kDone;
    }
    PdfResult ExtractPages(std::string_view, std::string_view, const std::vector<PdfPageRange>& ranges,
                           std::string_view target) override {
        if (onCall) onCall();
        std::string text;
        for (const PdfPageRange& range : ranges)
            text += std::to_string(range.first) + "-" + std::to_string(range.last);
        if (extracted == PdfResult::kDone) std::ofstream(std::string(target)) << text;
        return extracted;
    }
    PdfResult FillForm(std::string_view data, std::string_view, std::string_view target,
                       FormFilling& filling) override {
        if (onCall) onCall();
        filling = filled;
        std::ofstream(std::string(target)) << "filled by " << FileTitle(data);
        return filled.flaw.empty() ? PdfResult::kDone : PdfResult::kUnreadable;
    }
    std::string colors;
    std::function<void()> onCall;  // may act in the middle of a run
    bool opens = true;             // without a password
    PdfResult extracted = PdfResult::kDone;
    FormFilling filled;
};

// Also has files that this user may not read, and pipes, by their names.
class StageFiles : public FaultyFiles {
public:
    using FaultyFiles::FaultyFiles;
    FileFacts Inspect(std::string_view path) override {
        FileFacts facts = FaultyFiles::Inspect(path);
        if (EndsWith(path, "secret.ps")) facts.readable = false;
        if (EndsWith(path, "pipe.ps")) facts.kind = FileKind::kOther;
        return facts;
    }
};

class NoticeRecorder : public RunNotices {
public:
    void Notify(int kind, std::string_view body, std::string_view attachment) override {
        told.push_back(std::to_string(kind) + ":" + std::string(body) + std::string(attachment));
        if (onNotify) onNotify();
    }
    std::function<void()> onNotify;  // may act in the middle of a run
    std::vector<std::string> told;
};

// Notes what it is told; `onProgress` and `onFinished` may act in the middle of a run.
class RunRecorder : public RunObserver {
public:
    void OnRunStarted(int rows, int copies) override { started.emplace_back(rows, copies); }
    void OnWaiting(std::string_view what) override { waits.emplace_back(what); }
    void OnRowStarted(const RunProgress& progress) override { startedRows.push_back(progress.row); }
    void OnProgress(const RunProgress& progress) override {
        last = progress;
        if (onProgress) onProgress(progress);
    }
    void OnRowFinished(const RunProgress& progress, RowOutcome outcome) override {
        last = progress;
        outcomes.push_back(outcome);
        if (onFinished) onFinished(progress);
    }

    std::vector<std::pair<int, int>> started;
    std::vector<std::string> waits;
    std::vector<int> startedRows;
    std::vector<RowOutcome> outcomes;
    RunProgress last;
    std::function<void(const RunProgress&)> onProgress;
    std::function<void(const RunProgress&)> onFinished;
};

// A run with everything around it: real files in a folder of its own, the rest in memory and virtual time.
template <typename SpoolerType>
class RunStage {
public:
    template <typename... Arguments>
    explicit RunStage(Arguments&&... arguments)
        : spooler(files, std::forward<Arguments>(arguments)...),
          list({files, *services.shell, clock, *services.machine, loop, prompts, debugLog, pdfCounter,
                options, WithTrailingSeparator(folder.Path())}),
          run({list,
               spooler,
               files,
               loop,
               prompts,
               debugLog,
               selection,
               watch,
               balance,
               snapshot,
               viewers,
               processing,
               downloads,
               separators,
               outcomes,
               hangLog,
               options,
               balanceOptions,
               {list, files, clock, debugLog, pdfs, options, WithTrailingSeparator(folder.Path())}},
              MakeWays()) {
        spooler.PutPrinter("Laser");
        spooler.PutPrinter("Plotter");
        run.UseObserver(&recorder);
        postPrint.UseNotices(&notices);
    }

    // Adds a row for a file of these bytes; answers its path.
    std::string AddFile(std::string_view name, std::string_view bytes = "bytes",
                        const ItemTexts& texts = {}) {
        std::string path = folder.Write(name, bytes);
        list.InsertFileIntoList(path, 1, "", texts);
        return path;
    }
    void AddFiles(const std::vector<std::string>& names) {
        for (const std::string& name : names) AddFile(name);
    }
    std::string Text(int row, int column) const { return std::string(list.Text(row, column)); }
    std::vector<std::string> Statuses() const {
        std::vector<std::string> statuses;
        for (int row = 0; row < list.RowCount(); ++row) statuses.push_back(Text(row, kColumnStatus));
        return statuses;
    }
    // File titles of the documents that the spooler keeps, in order, without so many of them.
    std::vector<std::string> Printed(std::size_t passedOver = 0) const {
        std::vector<std::string> titles;
        for (const SentDocument& sent : spooler.Sent())
            if (sent.finished && (passedOver == 0 || passedOver-- == 0))
                titles.push_back(sent.name.substr(sent.name.find_last_of("/\\") + 1));
        return titles;
    }
    std::string ErrorRecords() const { return folder.Read("error.log"); }
    // The report of this ending, and that it is the only one.
    std::string ReportText(std::string_view ending) const {
        std::string text;
        for (const auto& entry : std::filesystem::directory_iterator(folder.PathOf("Reports"))) {
            const std::string name = entry.path().filename().string();
            if (!EndsWith(name, ending)) continue;
            EXPECT_TRUE(text.empty()) << "another report: " << name;
            text = folder.Read("Reports/" + name);
        }
        return text;
    }
    std::string DebugLines() const { return folder.Read("qpr.log"); }
    // Runs `action` once, in the first pump in which `when` holds.
    void InPump(std::function<bool()> when, std::function<void()> action) {
        loop.AddPumpTask([when = std::move(when), action = std::move(action), done = false]() mutable {
            if (!done && when()) {
                done = true;
                action();
            }
            return false;
        });
    }
    // While row `row` (as numbered when it begins) is the one at work.
    std::function<bool()> AtRow(int row) {
        return [this, row] { return run.IsRunning() && list.CurrentRow() == row; };
    }

    // Leaves a run of this list that was cut off when these rows were done and this one was at work.
    void LeaveCutOff(const RunHead& head, const std::vector<int>& done = {}, int atWork = -1) {
        RunSnapshot cut(files, WithTrailingSeparator(folder.Path()));
        EXPECT_EQ(cut.Create(list, head, 1), "");
        for (const int row : done) {
            EXPECT_TRUE(cut.NoteBegun(list, row, 1));
            list.MarkOf(row).pass = list.MarkOf(row).printed = 1;
            list.MarkOf(row).outcome = RowOutcome::kDone;
            EXPECT_TRUE(cut.NoteFinished(list, row));
        }
        if (atWork >= 0) {
            EXPECT_TRUE(cut.NoteBegun(list, atWork, 1));
        }
    }
    CutOffRun LoadCutOff() {
        CutOffRun cutOff;
        EXPECT_EQ(snapshot.Load(cutOff), SnapshotResult::kLoaded);
        return cutOff;
    }

    RunWays MakeWays() {
        RunWays ways;
        ways.push_back(MakeProcessingWay(processing));
        ways.push_back(MakeSettingsWay(selection));
        RunWays documentWays;
        documentWays.push_back(MakeDirectWay({directPrinter, spooler, watch, debugLog, options}));
        documentWays.push_back(MakeColorWay({spooler, watch, selection, colorSplit, files, options,
                                             colorOptions, WithTrailingSeparator(folder.Path())}));
        documentWays.push_back(MakeSpoolerWay(spooler, watch));
        ways.push_back(MakeDocumentWay({preparation, files, debugLog, options}, std::move(documentWays)));
        return ways;
    }

    TemporaryFolder folder;
    Services services = MakeSystemServices();
    StageFiles files{*services.files};
    FakeEventLoop loop;
    FakeClock clock{loop};
    FakePrompts prompts;
    SpoolerType spooler;
    GeneralOptions options;
    DebugLog debugLog;
    ErrorLog errorLog{files, clock, folder.PathOf("error.log")};
    StagePdfs pdfs;
    PdfCounter pdfCounter{files, pdfs};
    PdfPreparation preparation{
        {files, pdfs, pdfs, pdfs, pdfCounter, debugLog, options, WithTrailingSeparator(folder.Path())}};
    PageRenderer renderer{*services.processes, loop, files};
    PageColors pageColors{pdfs, renderer, loop, files, folder.Path()};
    ColorSplit colorSplit{pageColors, pdfs, files};
    ColorPrinterOptions colorOptions;
    PrintList list;
    DirectPrinter directPrinter{spooler, files, loop, debugLog};
    PrinterSelection selection{
        {spooler, files, loop, prompts, debugLog, options, WithTrailingSeparator(folder.Path())}};
    QueueWatch watch{spooler, files, prompts, debugLog, options};
    BalanceOptions balanceOptions;
    PrinterBalance balance{spooler, files, loop, prompts, debugLog, balanceOptions};
    RunSnapshot snapshot{files, WithTrailingSeparator(folder.Path())};
    PrintLog printLog{files, clock, prompts, debugLog, folder.PathOf(kPrintLogName)};
    HangLog hangLog{files, clock, folder.PathOf(kHangLogName)};
    PostPrint postPrint{
        {files, loop, clock, prompts, debugLog, errorLog, options, WithTrailingSeparator(folder.Path())}};
    NoticeRecorder notices;
    RunOutcomes outcomes{{files, clock, loop, *services.machine, prompts, printLog, errorLog, postPrint,
                          notices, options, WithTrailingSeparator(folder.Path())}};
    FakeAppWindows windows;
    ViewerWindows viewers{windows, loop, options};
    ProcessingDefaults processing{files};
    TransferLogs transferLogs{files, clock, debugLog, WithTrailingSeparator(folder.Path())};
    RunDownloads downloads{
        {files, clock, prompts, transferLogs, {loop, ""}, options, WithTrailingSeparator(folder.Path())}};
    SeparatorOptions separatorOptions;
    RunSeparators separators{{list, files, clock, *services.machine, loop, debugLog, spooler, selection,
                              options, separatorOptions, WithTrailingSeparator(folder.Path())}};
    RunRecorder recorder;
    PrintRun run;
};

class PrintRunTest : public testing::Test, protected RunStage<FakeSpooler> {};

using TextList = std::vector<std::string>;

}  // namespace quirepress
