#include "backends/hang_recovery.h"

#include <string>

#include "base/path.h"
#include "base/text.h"
#include "logs/hang_log.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

constexpr std::string_view kWordProcessor = "WINWORD.EXE";

bool IsWatchedFile(std::string_view path) {
    const std::string ending = ToLowerAscii(FileExtension(path));
    return ending == ".doc" || ending == ".docx";
}

}  // namespace

HangDecision CheckForHang(HangWatch* watch, HangLog& log, const GeneralOptions& options,
                          std::string_view path) {
    HangDecision decision;
    if (watch == nullptr || !IsWatchedFile(path)) return decision;
    const std::string file(path);  // the watch may pump
    const int code = watch->CheckForHang();
    decision.hung = code == HangWatch::kHung;
    if (!decision.hung) return decision;
    // A hang that was not recorded would be the first one again and again.
    const bool isRecorded = log.Append(kWordProcessor, code, file) == 0;
    decision.tryAgain = isRecorded && options.m_onErrorHangPrintOneMoreTime && log.CountHangs(file) == 1;
    return decision;
}

}  // namespace quirepress
