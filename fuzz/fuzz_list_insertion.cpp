#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>

#include "base/text.h"
#include "core/print_list.h"
#include "documents/pdf_counter.h"
#include "logs/debug_log.h"
#include "memory_files.h"
#include "platform/clock.h"
#include "platform/event_loop.h"
#include "platform/machine.h"
#include "platform/prompts.h"
#include "platform/shell.h"
#include "settings/general_options.h"

namespace quirepress {
namespace {

class TextShell : public Shell {
public:
    explicit TextShell(Files& files) : m_files(files) {}
    // A shortcut's bytes are its target.
    std::string ResolveShortcut(std::string_view path) override {
        FileResult result = FileResult::kDone;
        const auto file = m_files.OpenForReading(path, result);
        std::string target(file ? static_cast<std::size_t>(file->Size()) : 0, '\0');
        if (file) file->ReadAt(0, target.data(), target.size());
        return target;
    }
    bool IsShortcut(std::string_view path) override { return EndsWith(path, ".lnk"); }
    std::string TypeOfFile(std::string_view) override { return {}; }
    bool FindPrintCommand(std::string_view, RegisteredCommand&) override { return false; }
    bool FindPhotoCommand(std::string_view, std::string_view, RegisteredCommand&) override { return false; }
    std::string FindProgram(std::string_view) override { return {}; }
    std::vector<std::string> ScriptCommand(std::string_view) override { return {}; }

private:
    Files& m_files;
};

class StillClock : public Clock {
public:
    Instant Now() override { return 0; }
    LocalTime ToLocal(Instant) override { return {2024, 1, 1, 0, 0, 0}; }
};

class StillLoop : public EventLoop {
public:
    void StartTimer(int, int, std::function<void()>) override {}
    void StopTimer(int) override {}
    int AddPumpTask(std::function<bool()>) override { return 1; }
    void RemovePumpTask(int) override {}
    void Pump() override {}
    void Wait(int) override {}
    long long MonotonicMilliseconds() override { return 0; }
};

class NoMachine : public Machine {
public:
    std::string HostName() override { return {}; }
    std::string LoginName() override { return {}; }
    std::string ProgramPath() override { return {}; }
    std::string TemporaryFolder() override { return {}; }
    std::string DataFolder() override { return {}; }
    SystemFamily Family() override { return SystemFamily::kWindowsXpOrLater; }
    std::string SystemVersion() override { return {}; }
    bool ReadEnvironment(std::string_view, std::string&) override { return false; }
};

class SilentPrompts : public Prompts {
public:
    void ShowBox(std::string_view, std::string_view) override {}
    bool AskYesNo(std::string_view, std::string_view, bool safeAnswer) override { return safeAnswer; }
    void ShowStatus(std::string_view) override {}
};

class NoPdfLibrary : public PdfLibrary {
public:
    long long CountPages(std::string_view, bool, std::string_view) override { return -1; }
};

constexpr std::size_t kLongestText = 400;
constexpr int kMostSteps = 12;
constexpr int kMostRows = 5'000;

// File names with the endings that mean something to the list, so that they come up often.
std::string TakePath(FuzzedDataProvider& input) {
    static const char* const kEndings[] = {"",     ".job", ".aob", ".repl", ".zip", ".tar.gz", ".lnk",
                                           ".pdf", ".ps",  ".pcl", ".msg",  ".bat", ".7z",     ".rar"};
    const char* const ending = kEndings[input.ConsumeIntegralInRange<std::size_t>(0, 13)];
    if (input.ConsumeBool()) return "/d/" + std::to_string(input.ConsumeIntegralInRange(0, 3)) + ending;
    return input.ConsumeRandomLengthString(kLongestText) + ending;
}

class Session {
public:
    explicit Session(FuzzedDataProvider& input) : m_input(input) {
        m_options.m_extractZip = input.ConsumeBool();
        m_options.m_deleteZipFiles = input.ConsumeBool();
        for (int i = input.ConsumeIntegralInRange(0, 4); i > 0; --i)
            m_files.Put(TakePath(input), input.ConsumeRandomLengthString(4000));
    }

    void Run() {
        for (int i = 0; i < kMostSteps && m_input.remaining_bytes() > 0; ++i) Step();
        for (int row = 0; row < m_list.RowCount(); ++row)
            for (int column = 0; column < kColumnCount; ++column) m_bytes += m_list.Text(row, column).size();
        if (m_list.CurrentRow() >= m_list.RowCount()) std::abort();
    }

private:
    std::string TakeText() { return m_input.ConsumeRandomLengthString(kLongestText); }
    int TakeNumber() { return m_input.ConsumeIntegralInRange(-2, 20); }

    void Step() {
        switch (m_input.ConsumeIntegralInRange(0, 7)) {
            case 0:
                m_list.SetPendingPosition(TakeNumber());
                m_list.InsertAtSelectedRow(TakeNumber());
                m_list.SetStartPosition(TakeNumber());
                break;
            case 1:
                m_list.SetText(TakeNumber(), TakeNumber(), TakeText());
                break;
            case 2:
                m_list.RemoveRow(TakeNumber());
                break;
            case 3:
                m_list.RefreshListStatus();
                m_list.SortByFileTitle();
                break;
            case 4:
                m_list.SetCurrentRow(m_input.ConsumeIntegralInRange(-1, m_list.RowCount() - 1));
                m_list.InsertFileIntoList(TakePath(m_input), kReplaceCurrentRow, TakeText(), {});
                break;
            default:
                m_list.InsertFileIntoList(
                    TakePath(m_input), TakeNumber(), TakeText(),
                    {TakeText(), TakeText(), TakeText(), TakeText(), TakeText(), TakeText(), {}, {}, {}});
        }
    }

    FuzzedDataProvider& m_input;
    MemoryFiles m_files;
    TextShell m_shell{m_files};
    StillClock m_clock;
    NoMachine m_machine;
    StillLoop m_loop;
    SilentPrompts m_prompts;
    DebugLog m_debugLog;
    NoPdfLibrary m_library;
    PdfCounter m_pdfCounter{m_files, m_library};
    GeneralOptions m_options;
    std::size_t m_bytes = 0;
    PrintList m_list{{m_files, m_shell, m_clock, m_machine, m_loop, m_prompts, m_debugLog, m_pdfCounter,
                      m_options, "/w/", [this] { return m_list.RowCount() < kMostRows; }}};
};

}  // namespace
}  // namespace quirepress

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    quirepress::Session(input).Run();
    return 0;
}
