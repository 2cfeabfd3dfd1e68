// Any bytes are a print log and an error log. The first byte switches what is compared, the second where the
// log is cut, so that its end comes later than its beginning. What the index answers is what a look at each
// line answers, for files that are in the log and for files that are not.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "../tests/fakes/line_by_line.h"
#include "logs/debug_log.h"
#include "logs/duplicate_check.h"
#include "logs/error_log.h"
#include "logs/log_pieces.h"
#include "logs/print_log.h"
#include "memory_files.h"
#include "platform/clock.h"
#include "platform/prompts.h"
#include "settings/log_options.h"

namespace {

using namespace quirepress;

class NoClock : public Clock {
public:
    Instant Now() override { return 0; }
    LocalTime ToLocal(Instant) override { return {}; }
};

class NoPrompts : public Prompts {
public:
    void ShowBox(std::string_view, std::string_view) override {}
    bool AskYesNo(std::string_view, std::string_view, bool safeAnswer) override { return safeAnswer; }
    void ShowStatus(std::string_view) override {}
};

std::string SwitchLines(const LogCheckOptions& options) {
    return std::string(options.m_compareName ? "" : "NOFILENAME\n") +
           (options.m_compareSize ? "" : "NOFILESIZE\n") +
           (options.m_compareCreated ? "" : "NOCREATEDDATE\n") +
           (options.m_compareModified ? "" : "NOMODIFIEDDATE\n");
}

// The file that a record, as it lies, seems to be about.
DocumentStamp StampOf(std::string_view line) {
    const std::vector<std::string> fields = CutRecord(PrintRecordLayout(), line);
    return {fields[2], std::atoll(fields[1].c_str()), fields[3], fields[4]};
}

void Check(MemoryFiles& files, DuplicateCheck& check, std::string_view log, const LogCheckOptions& options) {
    files.Put("home/print.log", std::string(log));
    files.Put("home/error.log", std::string(log));
    DuplicateCheck::Pass pass(check);
    const auto compare = [&](const DocumentStamp& stamp) {
        const bool isPrinted = LineByLine::IsPrinted(log, stamp, options);
        const HandledBy expected = isPrinted                                ? HandledBy::kPrintLog
                                   : LineByLine::HasFailed(log, stamp.path) ? HandledBy::kErrorLog
                                                                            : HandledBy::kNothing;
        if (pass.Check(stamp) != expected) std::abort();
    };
    compare({"/in/a.pdf", 5, "", ""});
    int lines = 0;
    for (std::string_view rest = log; !rest.empty() && lines < 8; ++lines) {
        const std::size_t end = std::min(rest.find('\n'), rest.size() - 1);
        const std::string_view line = WithoutLineEnd(rest.substr(0, end + 1));
        compare(StampOf(line));
        if (line.size() > 40) compare({std::string(line.substr(40, 200)), 0, "", ""});
        rest.remove_prefix(end + 1);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const LogCheckOptions options = {(data[0] & 1U) == 0, (data[0] & 2U) == 0, (data[0] & 4U) == 0,
                                     (data[0] & 8U) == 0};
    const std::string_view log(reinterpret_cast<const char*>(data) + 2, size - 2);
    MemoryFiles files;
    NoClock clock;
    NoPrompts prompts;
    DebugLog debugLog;
    files.Put("home/printlogcheck.ini", SwitchLines(options));
    DuplicateCheck check(clock, debugLog, {files, prompts, "home/"}, nullptr);
    Check(files, check, log.substr(0, log.size() * data[1] / 256), options);
    Check(files, check, log, options);
    return 0;
}
