#include "backends/direct_print.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "base/numbers.h"
#include "base/text.h"
#include "logs/debug_log.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/spooler.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

constexpr std::int64_t kChunkSize = 65535;
constexpr int kChunksBetweenPumps = 16;  // about 1 MiB

struct DirectFamily {
    bool GeneralOptions::*flag;
    std::vector<std::string_view> spellings;
};

const std::vector<DirectFamily>& DirectFamilies() {
    static const std::vector<DirectFamily> families = {
        {&GeneralOptions::m_useInternalPostScript, {".ps", ".PS"}},
        {&GeneralOptions::m_useInternalTif, {".tif", ".TIF", ".Tif", ".tiff", ".TIFF"}},
        {&GeneralOptions::m_useInternalPdf, {".pdf", ".PDF"}},
        {&GeneralOptions::m_useInternalSpl, {".spl", ".SPL"}},
        {&GeneralOptions::m_useInternalZpl, {".zpl", ".ZPL", ".Zpl"}},
        {&GeneralOptions::m_useInternalHpgl, {".hpgl", ".HPGL", ".HpGL", ".Hpgl", ".hpGL", ".HPgl"}},
        {&GeneralOptions::m_useInternalPcl, {".pcl", ".PCL"}},
        {&GeneralOptions::m_useInternalTxt, {".txt", ".TXT"}},
        {&GeneralOptions::m_useInternalPrn, {".prn", ".PRN"}},
    };
    return families;
}

int RepeatCountAt(std::string_view number) {
    const bool isNumber = !number.empty() && (number[0] == '+' || (number[0] >= '0' && number[0] <= '9'));
    return isNumber ? std::max(1, ParseLong(number)) : 1;
}

}  // namespace

bool IsDirectPrintFile(const GeneralOptions& options, std::string_view path) {
    const auto takesPath = [&](const DirectFamily& family) {
        return options.*family.flag &&
               std::any_of(family.spellings.begin(), family.spellings.end(),
                           [&](std::string_view spelling) { return EndsWith(path, spelling); });
    };
    return std::any_of(DirectFamilies().begin(), DirectFamilies().end(), takesPath);
}

int DirectRepeatCount(std::initializer_list<std::string_view> optionTexts) {
    constexpr std::string_view kSwitch = "-r";
    for (std::string_view text : optionTexts) {
        const std::size_t at = text.find(kSwitch);
        if (at != std::string_view::npos) return RepeatCountAt(text.substr(at + kSwitch.size()));
    }
    return 1;
}

DirectPrinter::DirectPrinter(Spooler& spooler, Files& files, EventLoop& loop, DebugLog& debugLog)
    : m_spooler(spooler), m_files(files), m_loop(loop), m_debugLog(debugLog) {}

int DirectPrinter::PrintExtPS(std::string_view printer, std::string_view path, const DirectProgress& progress,
                              DirectOutcome& outcome) {
    outcome = {};
    m_debugLog.Trace("PrintExtPS: %s\r\n", path);
    // A copy: a pump may load another printer settings file.
    const std::string target(m_currentPrinter.empty() ? printer : std::string_view(m_currentPrinter));

    const std::unique_ptr<RawPrinter> raw = m_spooler.OpenRawPrinter(target, outcome.systemError);
    if (!raw) {
        m_debugLog.Trace("Can't open printer err = %d\r\n", outcome.systemError);
        return -1;
    }
    DocumentInfo document;
    document.name = path;
    document.priority = m_priority;
    if (raw->StartDocument(document) != 0) {
        outcome.systemError = raw->SystemError();
        m_debugLog.Trace("Can't start doc; err = %d\r\n", outcome.systemError);
        return -2;
    }
    outcome.jobId = raw->JobId();
    if (SendFile(*raw, path, progress, outcome)) {
        const int finished = raw->Finish();
        outcome.accepted = finished == 0;
        outcome.isUnknown = finished > 0;
        outcome.jobId = raw->JobId();
        if (!outcome.accepted) outcome.systemError = raw->SystemError();
    }
    m_debugLog.Trace("PrintExtPS: %s, Done: %d\r\n", path, 0);
    return 0;
}

bool DirectPrinter::SendFile(RawPrinter& raw, std::string_view path, const DirectProgress& progress,
                             DirectOutcome& outcome) {
    FileResult opened = FileResult::kDone;
    const std::unique_ptr<InputFile> file = m_files.OpenForReading(path, opened);
    if (!file) {
        outcome.sourceWhole = false;
        return true;
    }
    const std::int64_t length = file->Size();
    int chunks = 0;
    for (std::int64_t offset = 0; offset < length; offset += kChunkSize) {
        // Fresh for every chunk: a spooler may still hold the one before.
        const auto buffer = std::make_unique_for_overwrite<char[]>(kChunkSize);
        const std::int64_t size = std::min(kChunkSize, length - offset);
        if (file->ReadAt(offset, buffer.get(), static_cast<std::size_t>(size)) != size) {
            outcome.sourceWhole = false;
            return false;
        }
        SendChunk(raw, buffer.get(), static_cast<std::size_t>(size), outcome);
        if (++chunks % kChunksBetweenPumps == 0) m_loop.Pump();
        if (progress && !progress(offset + size, length)) {
            outcome.stopped = true;
            return false;
        }
    }
    outcome.sourceWhole = length >= 0 && file->Size() == length;
    return outcome.sourceWhole;
}

void DirectPrinter::SendChunk(RawPrinter& raw, const char* data, std::size_t size, DirectOutcome& outcome) {
    if (raw.WriteChunk(data, size) == 0) {
        outcome.bytesSent += static_cast<std::int64_t>(size);
        return;
    }
    ++outcome.failedChunks;
    outcome.systemError = raw.SystemError();
    m_debugLog.Trace("Can't write to printer: err = %d\r\n", outcome.systemError);
}

std::string_view DirectPrintWarning(std::string_view fileTypes) {
    for (std::string_view known : {".prn", ".ps", ".pcl", ".spl"}) {
        if (Contains(fileTypes, known)) return {};
    }
    return "Warning: This is only used to print files directly to the printer if your printer supports that "
           "format natively!, by default leave unchecked";
}

}  // namespace quirepress
