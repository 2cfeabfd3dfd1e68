#include "core/print_run_shell.h"

#include <algorithm>

#include "backends/dialog_watch.h"
#include "backends/pdf_conversion.h"
#include "backends/program_run.h"
#include "backends/queue_watch.h"
#include "backends/shell_print.h"
#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "core/job_wait.h"
#include "core/pdf_preparation.h"
#include "core/print_list.h"
#include "core/print_run_source.h"
#include "core/print_run_ways.h"
#include "core/scratch_folder.h"
#include "documents/file_signature.h"
#include "logs/debug_log.h"
#include "platform/event_loop.h"
#include "platform/file_tools.h"
#include "platform/processes.h"
#include "platform/spooler.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

constexpr int kPollMilliseconds = 100;
// For a program whose job has come, to end by itself.
constexpr long long kGraceMilliseconds = 5'000;

WayResult Failed(std::string_view reason, bool canRetry) {
    WayResult result;
    result.remark = "Can't Print - " + std::string(reason);
    result.status = "Error - " + result.remark;
    result.canRetry = canRetry;
    return result;
}

WayResult Printed(std::int64_t jobId) {
    return {WayResult::End::kPrinted, std::string(kStatusDone), {}, false, jobId};
}

WayResult NotStarted(const ShellStart& start) {
    const std::string_view status =
        start.result == ShellStart::kNoAssociation ? kStatusNoAssociation : kStatusBrokenAssociation;
    WayResult result;
    result.status = Format("%s %s", status, kPrintCommandsHelp);
    result.remark = "Can't Print - " + start.flaw;
    return result;
}

bool IsTiff(std::string_view path) {
    const std::string ending = ToLowerAscii(FileExtension(path));
    return ending == ".tif" || ending == ".tiff";
}

bool IsSavedMail(std::string_view path) {
    const std::string ending = ToLowerAscii(FileExtension(path));
    return ending == ".msg" || ending == ".eml";
}

bool IsBatch(std::string_view program) {
    const std::string ending = ToLowerAscii(FileExtension(program));
    return ending == ".bat" || ending == ".cmd";
}

// A program that prints by itself, while its job is waited for. Its output is read in every pass of the
// pump, so that it never waits for a reader. A program that says by its exit code that it failed ends the
// wait, where that can be relied on.
class PrintingProgram : public WayFeedback {
public:
    PrintingProgram(const ShellStart& start, EventLoop& loop, WayFeedback& feedback, bool tellsFailure)
        : m_process(*start.process),
          m_dialogs(start.dialogs.get()),
          m_loop(loop),
          m_feedback(feedback),
          m_tellsFailure(tellsFailure) {
        m_task = m_loop.AddPumpTask([this] {
            TakeWords();
            return false;
        });
    }
    ~PrintingProgram() override { m_loop.RemovePumpTask(m_task); }
    PrintingProgram(const PrintingProgram&) = delete;
    PrintingProgram& operator=(const PrintingProgram&) = delete;

    void ShowRowStatus(std::string_view status) override { m_feedback.ShowRowStatus(status); }
    void ShowBytes(std::int64_t done, std::int64_t total) override { m_feedback.ShowBytes(done, total); }
    bool IsStopped() const override { return m_feedback.IsStopped() || HasFailed() || !Flaw().empty(); }
    bool KeepGoing() override { return m_feedback.KeepGoing() && !HasFailed() && Flaw().empty(); }

    // Why its dialogs will not let it print; empty: they will.
    std::string Flaw() const { return m_dialogs != nullptr ? m_dialogs->Flaw() : std::string(); }

    bool HasSucceeded() const { return !m_process.IsRunning() && m_process.ExitCode() == 0; }
    bool HasFailed() const { return m_tellsFailure && !m_process.IsRunning() && m_process.ExitCode() != 0; }

    void AwaitEnd(long long milliseconds) {
        const long long deadline = m_loop.MonotonicMilliseconds() + milliseconds;
        while (m_process.IsRunning() && !m_feedback.IsStopped() && m_loop.MonotonicMilliseconds() < deadline)
            m_loop.Wait(kPollMilliseconds);
    }

    std::string Describe(std::string_view program) {
        TakeWords();
        const std::string title(FileTitle(program));
        if (!Flaw().empty()) return title + ": " + Flaw();
        if (m_process.IsRunning()) {
            const std::string dialogs = m_dialogs != nullptr ? m_dialogs->DescribeOpenDialogs() : "";
            return title + " is still running" + (dialogs.empty() ? "" : ", its open windows: " + dialogs);
        }
        ProgramResult result;
        result.end = ProgramResult::End::kEnded;
        result.exitCode = m_process.ExitCode();
        result.lastWords = LastWords(m_said);
        return DescribeProgramEnd(program, result, 0);
    }

private:
    void TakeWords() {
        constexpr std::size_t kMostWords = 16'384;
        std::string errors;
        m_process.ReadOutput(m_said);
        m_process.ReadErrors(errors);
        m_said += errors;
        if (m_said.size() > kMostWords) m_said.erase(0, m_said.size() - kMostWords / 2);
    }

    ChildProcess& m_process;
    const DialogWatch* m_dialogs;  // null: nobody answers them
    EventLoop& m_loop;
    WayFeedback& m_feedback;
    bool m_tellsFailure;
    int m_task = 0;
    std::string m_said;
};

class ShellWay : public RunWay {
public:
    explicit ShellWay(ShellWayServices services)
        : m_services(std::move(services)),
          m_jobWait(m_services.watch, m_services.loop, m_services.debugLog, m_services.options) {}

    bool Takes(const RunItem& item) override { return item.kind == ItemKind::kDocument; }

    WayResult Process(const RunItem& item, WayFeedback& feedback) override {
        return IsSavedMail(item.path) ? PrintMail(item, feedback) : PrintDocument(item, feedback);
    }

private:
    // Programs that show a mail keep it open, and change it: they get a copy.
    WayResult PrintMail(const RunItem& item, WayFeedback& feedback) {
        Files& files = m_services.files;
        const ScratchFolder scratch(files, m_services.options, m_services.workingFolder, "MSG/");
        FileResult result = files.MakePrivateFolders(scratch.Path());
        RunItem copy = item;
        copy.path =
            JoinPath(files.ResolvePath(scratch.Path()), ScratchName(item.path, FileExtension(item.path)));
        if (result == FileResult::kDone)
            result = CopyFileDurably(files, item.path, copy.path, [&] { return feedback.KeepGoing(); });
        if (feedback.IsStopped()) return StoppedWay();
        if (result != FileResult::kDone)
            return Failed(
                Format("the message can't be copied to %s: %s", scratch.Path(), DescribeFileResult(result)),
                true);
        return PrintDocument(copy, feedback);
    }

    WayResult PrintDocument(const RunItem& item, WayFeedback& feedback) {
        const ShellCommand command = m_services.shellPrinter.FindCommand(item.printer, item.Source());
        const bool isRetry = std::exchange(m_lastPath, item.path) == item.path;
        m_services.debugLog.Trace(
            "Getting ready to print file: %s, printParameters: %s, retry: %d, action: %s, gs.m_waitBat: "
            "%d\r\n",
            item.path, item.processingParameters, isRetry, "print", m_services.options.m_waitBat);
        using Way = ShellCommand::Way;
        const bool isUsable = command.way != Way::kNone && command.way != Way::kBroken;
        if (isUsable && !HasSignatureOfItsName(m_services.files, item.Source())) return Unfit(item.Source());
        const bool canChoosePages = command.way == Way::kMakesPdf || command.way == Way::kBroken;
        if (item.range.kind != PageRange::Kind::kNone && !canChoosePages)
            return RefusedDocument(
                "pages can be chosen only of PDF files, and of those that a registered command makes PDFs "
                "of");
        return command.way == Way::kMakesPdf ? PrintAsPdf(command, item, feedback)
                                             : PrintByProgram(command, item, feedback);
    }

    static WayResult Unfit(std::string_view path) {
        WayResult result = Failed("the file is not what its name says", false);
        if (IsPdf(path)) result.status = kStatusBadPdf;
        return result;
    }

    PdfConverter& Converter() {
        if (!m_converter) {
            m_scratch = std::make_unique<ScratchFolder>(m_services.files, m_services.options,
                                                        m_services.workingFolder, "Print");
            // Programs are told of paths that hold wherever they go.
            m_services.files.MakePrivateFolders(m_scratch->Path());
            const std::string folder = m_services.files.ResolvePath(m_scratch->Path());
            m_converter = std::make_unique<PdfConverter>(m_services.processes, m_services.files,
                                                         m_services.loop, m_services.debugLog,
                                                         folder.empty() ? m_scratch->Path() : folder);
        }
        return *m_converter;
    }

    WayResult PrintAsPdf(const ShellCommand& command, const RunItem& item, WayFeedback& feedback) {
        feedback.ShowRowStatus("Running");
        const Conversion conversion =
            Converter().Convert(command.command, item.Source(), FindUpcoming(command, item),
                                [&feedback] { return feedback.IsStopped(); });
        if (conversion.end == Conversion::End::kStopped) return StoppedWay();
        if (conversion.end == Conversion::End::kFailed) return Failed(conversion.flaw, true);
        WayResult result = PrintPdf(conversion.pdf, item, feedback);
        Converter().Discard(item.Source());
        return result;
    }

    WayResult PrintPdf(const std::string& pdf, const RunItem& item, WayFeedback& feedback) {
        const PreparedPdf pages = m_services.preparation.Prepare(pdf, item.range);
        if (feedback.IsStopped()) return StoppedWay();
        if (!pages.flaw.empty()) return RefusedDocument(pages.flaw);
        feedback.ShowRowStatus("Spooling");
        WayResult result = HandOverDocument(m_services.spooler, m_services.watch, item, pages.file);
        result.pages = pages.pages > 0 ? pages.pages : m_services.preparation.CountPages(pages.file);
        return result;
    }

    // Ticked documents below the row at work that go by the same command.
    std::vector<std::string> FindUpcoming(const ShellCommand& command, const RunItem& item) {
        std::vector<std::string> paths;
        if (command.command.batch <= 1) return paths;
        constexpr int kRowsForEach = 4;
        const int start = m_services.list.CurrentRow() + 1;
        const int end = std::min(m_services.list.RowCount(), start + kRowsForEach * command.command.batch);
        for (int row = start; row < end; ++row) {
            const std::string path(m_services.list.Text(row, kColumnFilename));
            if (m_services.list.Text(row, kColumnSelected) != "Yes" ||
                KindOfItem(path) != ItemKind::kDocument || IsSavedMail(path) ||
                m_services.spooler.TakesDocument(item.printer, path))
                continue;
            const ShellCommand other = m_services.shellPrinter.FindCommand(item.printer, path);
            if (other.way == command.way && other.command.name == command.command.name) paths.push_back(path);
        }
        return paths;
    }

    WayResult PrintByProgram(const ShellCommand& command, const RunItem& item, WayFeedback& feedback) {
        ShellPrinter& shell = m_services.shellPrinter;
        m_jobWait.BeginForeignJob(item.printer);
        const std::string& path = item.Source();
        const bool isDocumentImage = IsPdf(path) || IsTiff(path);
        const ShellStart start = isDocumentImage ? shell.DoShellExecutePDF(command, item.printer, path)
                                                 : shell.DoShellExecute(command, item.printer, path);
        if (!start.process) return NotStarted(start);
        PrintingProgram program(start, m_services.loop, feedback, command.way == ShellCommand::Way::kPrints);
        if (m_services.options.m_waitBat && IsBatch(command.program))
            program.AwaitEnd(command.command.limitSeconds * 1000LL);
        const JobWait::End end = m_jobWait.ForForeignJob(item.printer, path, program);
        // Part of it may have come out.
        if (end == JobWait::End::kLost) return Failed(m_jobWait.Loss(), false);
        const bool hasGivenUp = program.HasFailed() || !program.Flaw().empty();
        // It was started: its job may just not have been seen, or not be whole.
        if (feedback.IsStopped() && end != JobWait::End::kSpooled && !hasGivenUp) return UnknownWay();
        if (end == JobWait::End::kSpooled) {
            program.AwaitEnd(kGraceMilliseconds);
            // Part of it may have come out.
            if (program.HasFailed()) return Failed(program.Describe(command.program), false);
            return Printed(0);
        }
        if (hasGivenUp) return Failed(program.Describe(command.program), end != JobWait::End::kBegun);
        // It may have printed where nobody looked: twice is worse than not at all.
        const bool canRetry = !program.HasSucceeded();
        return {WayResult::End::kFailed, std::string(kStatusDidNotSpool),
                "Can't Print - did not spool: " + program.Describe(command.program), canRetry};
    }

    ShellWayServices m_services;
    JobWait m_jobWait;
    std::unique_ptr<ScratchFolder> m_scratch;
    std::unique_ptr<PdfConverter> m_converter;
    std::string m_lastPath;
};

}  // namespace

std::unique_ptr<RunWay> MakeShellWay(ShellWayServices services) {
    return std::make_unique<ShellWay>(std::move(services));
}

}  // namespace quirepress
