#include "backends/pdf_conversion.h"

#include <algorithm>
#include <utility>

#include "backends/command_arguments.h"
#include "backends/program_run.h"
#include "base/command_words.h"
#include "base/path.h"
#include "base/text.h"
#include "documents/file_signature.h"
#include "logs/debug_log.h"
#include "platform/file_tools.h"
#include "settings/print_commands.h"

namespace quirepress {

namespace {

constexpr long long kMillisecondsInSecond = 1000;
constexpr std::size_t kLongestTitle = 200;
constexpr std::size_t kMostBytesOfPaths = 16'000;  // a command line has its limits

bool IsSameFile(const FileFacts& left, const FileFacts& right) {
    return left.kind == right.kind && left.size == right.size && left.written == right.written;
}

// Where the program is to put the PDF of `path`. %d: it names it like the file.
std::string PdfPathOf(const PrintCommand& command, const std::string& folder, const std::string& taken) {
    const std::string title = command.Uses("%o") ? "document" : std::string(TitleWithoutExtension(taken));
    return JoinPath(folder, title + ".pdf");
}

std::string DescribePdf(PdfState state) {
    switch (state) {
        case PdfState::kEmpty:
            return "the PDF that was made is empty";
        case PdfState::kNoPdf:
            return "what was made is no PDF";
        case PdfState::kCutOff:
            return "the PDF that was made breaks off";
        default:
            return "no PDF was made";
    }
}

}  // namespace

PdfConverter::PdfConverter(Processes& processes, Files& files, EventLoop& loop, DebugLog& debugLog,
                           std::string folder)
    : m_processes(processes),
      m_files(files),
      m_loop(loop),
      m_debugLog(debugLog),
      m_folder(std::move(folder)) {}

Conversion PdfConverter::Convert(const PrintCommand& command, const std::string& path,
                                 const std::vector<std::string>& upcoming,
                                 const std::function<bool()>& isStopped) {
    Conversion conversion;
    if (TakeMade(command, path, conversion)) return conversion;
    ForgetMade(command.name, upcoming);
    // Once more alone when it was not the only one.
    for (const bool isAlone : {false, true}) {
        const std::vector<Source> sources =
            ChooseFiles(command, path, isAlone ? std::vector<std::string>() : upcoming);
        if (sources.empty()) {
            conversion.flaw = "the file can't be read";
            return conversion;
        }
        const bool isWhole = RunCall(command, sources, isStopped);
        for (const Source& source : sources)
            if (source.isCopy) m_files.Erase(source.taken);
        if (!isWhole) {
            conversion.end = Conversion::End::kStopped;
            return conversion;
        }
        if (TakeMade(command, path, conversion)) return conversion;
    }
    conversion.flaw = "the file changed meanwhile";
    return conversion;
}

void PdfConverter::Discard(const std::string& path) {
    const auto found = m_made.find(path);
    if (found == m_made.end()) return;
    m_files.Erase(found->second.pdf);
    m_files.Erase(found->second.folder);  // once it is empty
    m_made.erase(found);
}

// A failure is told once; another attempt is to be a new one.
bool PdfConverter::TakeMade(const PrintCommand& command, const std::string& path, Conversion& conversion) {
    const auto found = m_made.find(path);
    if (found == m_made.end()) return false;
    const Made& made = found->second;
    if (made.command != command.name || !IsSameFile(made.facts, m_files.Inspect(path))) {
        Discard(path);
        return false;
    }
    conversion.end = made.pdf.empty() ? Conversion::End::kFailed : Conversion::End::kMade;
    conversion.pdf = made.pdf;
    conversion.flaw = made.flaw;
    if (made.pdf.empty()) m_made.erase(found);
    return true;
}

std::vector<PdfConverter::Source> PdfConverter::ChooseFiles(const PrintCommand& command,
                                                            const std::string& path,
                                                            const std::vector<std::string>& upcoming) {
    std::vector<Source> sources(1);
    if (!MakeSource(command, path, sources[0])) return {};
    if (m_loners.count(path) != 0) return sources;
    std::set<std::string> titles = {ToLowerAscii(PdfPathOf(command, "", sources[0].taken))};
    std::size_t bytes = sources[0].taken.size();
    for (const std::string& next : upcoming) {
        if (sources.size() >= static_cast<std::size_t>(command.batch)) break;
        Source source;
        if (m_loners.count(next) != 0 || m_made.count(next) != 0 || !HasSignatureOfItsName(m_files, next) ||
            !MakeSource(command, next, source))
            continue;
        bytes += source.taken.size() + 1;
        if (bytes > kMostBytesOfPaths) break;
        // Their PDFs would have the same name.
        if (titles.insert(ToLowerAscii(PdfPathOf(command, "", source.taken))).second)
            sources.push_back(std::move(source));
    }
    return sources;
}

bool PdfConverter::MakeSource(const PrintCommand& command, const std::string& path, Source& source) {
    source.path = path;
    source.facts = m_files.Inspect(path);
    if (source.facts.kind != FileKind::kRegular || !source.facts.readable) return false;
    // No name is taken for an option of a program.
    source.taken = IsAbsolutePath(path) ? path : JoinPath(m_files.ResolvePath("."), path);
    const bool isUsual = IsValidUtf8(path) && FileTitle(path).size() <= kLongestTitle;
    if (isUsual || command.Uses("%u")) return true;
    // Many programs do not find a file of such a name, or have no room for what they add to it.
    source.isCopy = true;
    const std::string extension(FileExtension(path));
    source.taken =
        JoinPath(m_folder, "copy" + std::to_string(++m_calls) + (IsValidUtf8(extension) ? extension : ""));
    m_files.MakePrivateFolders(m_folder);
    return CopyFileDurably(m_files, path, source.taken) == FileResult::kDone;
}

std::string PdfConverter::OwnFolderOf(const PrintCommand& command) {
    std::string& folder = m_ownFolders[command.name];
    if (folder.empty()) folder = JoinPath(m_folder, "own" + std::to_string(++m_calls));
    m_files.MakePrivateFolders(folder);
    return folder;
}

bool PdfConverter::RunCall(const PrintCommand& command, const std::vector<Source>& sources,
                           const std::function<bool()>& isStopped) {
    const std::string folder = JoinPath(m_folder, "call" + std::to_string(++m_calls));
    const std::string ownFolder = OwnFolderOf(command);
    const FileResult prepared = m_files.MakePrivateFolders(folder);
    if (prepared != FileResult::kDone) {
        m_made[sources[0].path] = {
            command.name,
            sources[0].facts,
            folder,
            {},
            "the folder " + folder + " can't be made: " + DescribeFileResult(prepared)};
        return true;
    }
    CommandPlaces places;
    for (const Source& source : sources) places.files.push_back(source.taken);
    places.pdf = PdfPathOf(command, folder, sources[0].taken);
    places.pdfFolder = folder;
    places.ownFolder = ownFolder;
    ProcessRequest request;
    request.arguments = FillPlaceholders(command.words, places);
    request.folder = folder;
    m_debugLog.Trace("ShellExecute: %s\r\n", JoinWords(request.arguments));

    ProgramWatch watch;
    watch.milliseconds = command.limitSeconds * kMillisecondsInSecond;
    watch.mostMilliseconds = watch.milliseconds * static_cast<long long>(sources.size());
    watch.isStopped = isStopped;
    watch.hasMoved = [this, &folder, before = std::size_t{0}]() mutable {
        std::vector<FolderEntry> entries;
        m_files.ListFolder(folder, entries);
        return std::exchange(before, entries.size()) < entries.size();
    };
    const ProgramResult result = RunProgram(m_processes, m_loop, request, watch);
    m_debugLog.Trace("ShellExecute result %d\r\n", result.exitCode);
    if (!result.IsSuccess()) {
        // What a program leaves behind that did not end by itself may hinder the next one.
        EraseTree(m_files, ownFolder);
    }
    if (result.end == ProgramResult::End::kStopped) {
        EraseTree(m_files, folder);
        return false;
    }
    TakeResults(command, sources, folder, result);
    return true;
}

void PdfConverter::TakeResults(const PrintCommand& command, const std::vector<Source>& sources,
                               const std::string& folder, const ProgramResult& result) {
    const bool isAlone = sources.size() == 1;
    bool isFirstMissing = true;
    for (const Source& source : sources) {
        Made made{command.name, source.facts, folder, PdfPathOf(command, folder, source.taken), {}};
        const PdfState state = InspectPdf(m_files, made.pdf);
        // What was made before a program of several files failed is whole all the same.
        if (state == PdfState::kWhole && (result.IsSuccess() || !isAlone)) {
            m_loners.erase(source.path);
            m_made[source.path] = std::move(made);
            continue;
        }
        m_files.Erase(made.pdf);
        made.pdf.clear();
        const bool hasUsedUpTime = result.end == ProgramResult::End::kTimedOut && isFirstMissing;
        isFirstMissing = false;
        if (!isAlone && !hasUsedUpTime) {
            m_loners.insert(source.path);
            continue;
        }
        m_loners.erase(source.path);
        made.flaw =
            DescribeProgramEnd(command.words[0], result, command.limitSeconds * kMillisecondsInSecond);
        if (result.IsSuccess()) made.flaw = DescribePdf(state) + ": " + made.flaw;
        m_made[source.path] = std::move(made);
    }
    m_files.Erase(folder);  // when nothing was made
}

void PdfConverter::ForgetMade(const std::string& command, const std::vector<std::string>& upcoming) {
    std::vector<std::string> paths;
    for (const auto& [path, made] : m_made)
        if (made.command == command && std::find(upcoming.begin(), upcoming.end(), path) == upcoming.end())
            paths.push_back(path);
    for (const std::string& path : paths) Discard(path);
}

}  // namespace quirepress
