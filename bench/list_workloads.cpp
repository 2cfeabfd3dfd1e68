#include "list_workloads.h"

#include <malloc.h>

#include <ctime>

#include "base/format.h"
#include "base/path.h"
#include "core/print_list.h"
#include "documents/pdf_counter.h"
#include "logs/debug_log.h"
#include "platform/clock.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/machine.h"
#include "platform/prompts.h"
#include "platform/services.h"
#include "platform/shell.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

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

double ProcessorSeconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

double HeapInUse() {
    const struct mallinfo2 heap = mallinfo2();
    return static_cast<double>(heap.uordblks) + static_cast<double>(heap.hblkhd);
}

}  // namespace

bool MakeSmallFiles(std::string_view folder, int count) {
    const Services services = MakeSystemServices();
    if (services.files->MakeFolders(folder) != FileResult::kDone) return false;
    for (int i = 0; i < count; ++i) {
        const std::string path = JoinPath(folder, Format("document-%06d.txt", i));
        FileResult result = FileResult::kDone;
        const auto file =
            services.files->OpenForWriting(path, OpenMode::kReplace, FileAccess::kShared, result);
        if (!file || file->Write("text", 4) != FileResult::kDone) return false;
    }
    return true;
}

ListWorkload InsertFolderIntoList(std::string_view folder) {
    const Services services = MakeSystemServices();
    SilentPrompts prompts;
    DebugLog debugLog;
    NoPdfLibrary library;
    PdfCounter pdfCounter(*services.files, library);
    const GeneralOptions options;
    const double heapBefore = HeapInUse();
    const double start = ProcessorSeconds();
    PrintList list({*services.files, *services.shell, *services.clock, *services.machine, *services.loop,
                    prompts, debugLog, pdfCounter, options, JoinPath(folder, "home/")});
    list.InsertFileIntoList(folder, 1, "", {});
    ListWorkload result;
    result.seconds = ProcessorSeconds() - start;
    result.rows = list.RowCount();
    result.bytesPerRow = result.rows == 0 ? 0 : (HeapInUse() - heapBefore) / result.rows;
    const double sortStart = ProcessorSeconds();
    list.SortByFileTitle();
    result.sortSeconds = ProcessorSeconds() - sortStart;
    return result;
}

}  // namespace quirepress
