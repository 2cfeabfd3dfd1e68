#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "documents/pdf_counter.h"
#include "documents/pdf_forms.h"
#include "documents/pdf_pages.h"

namespace quirepress {

class ChildProcess;
class EventLoop;
class Processes;
class Terminal;
struct PdfWorkerRequest;

struct PdfWorkerLimits {
    int milliseconds = 30'000;                    // for a count; thrice for colours, ten times for a new file
    std::int64_t memory = std::int64_t{1} << 30;  // bytes of address space
};

// The PDF library in a process of its own, which is started when it is first needed and serves one file
// after the other. When it hangs, dies, takes too much or answers nonsense, it is ended, that file's count
// is -1 (its result kGaveUp), and the next file gets a new one.
class PdfWorker : public PdfLibrary, public PdfPages, public PdfForms {
public:
    // `program` is started with the argument "pdf-worker" and then does RunPdfWorker().
    PdfWorker(Processes& processes, EventLoop& loop, Files& files, std::string program,
              PdfWorkerLimits limits = {});
    ~PdfWorker() override;

    // Asked again and again while it waits: the answer true ends the process and the call, as a hang does.
    void UseStop(std::function<bool()> isStopped) { m_isStopped = std::move(isStopped); }

    // They may pump, and may be called again from there: such a call has a process of its own.
    long long CountPages(std::string_view path, bool full, std::string_view password) override;
    PdfResult InspectColors(std::string_view path, std::string_view password, int tolerance,
                            std::vector<PageColor>& pages) override;
    PdfResult ExtractPages(std::string_view path, std::string_view password,
                           const std::vector<PdfPageRange>& ranges, std::string_view target) override;
    PdfResult FillForm(std::string_view data, std::string_view password, std::string_view target,
                       FormFilling& filling) override;

private:
    // False when there was no answer that `read` takes.
    bool Ask(const PdfWorkerRequest& request, long long milliseconds, std::size_t mostAnswer,
             const std::function<bool(std::string_view)>& read);
    PdfResult AskForResult(const PdfWorkerRequest& request, long long milliseconds,
                           std::vector<PageColor>& pages);
    void EraseDraft(std::string_view target);
    std::unique_ptr<ChildProcess> StartProcess();
    bool WaitForAnswer(ChildProcess& process, long long milliseconds, std::size_t mostAnswer,
                       std::string& answer);

    Processes& m_processes;
    EventLoop& m_loop;
    Files& m_files;
    std::string m_program;
    PdfWorkerLimits m_limits;
    std::function<bool()> m_isStopped = [] { return false; };
    std::unique_ptr<ChildProcess> m_idle;  // a started process that waits for a request
};

// The worker's side: answers the requests on standard input until its end. Answers an exit code.
int RunPdfWorker(Files& files, Terminal& terminal);

}  // namespace quirepress
