#include "platform/embedded/printer_directory.h"

#include <algorithm>

#include "base/path.h"
#include "base/text.h"
#include "platform/file_tools.h"

namespace quirepress {

namespace {

constexpr std::string_view kFirstPrinter = "Quirepress";
constexpr std::string_view kFirstPort = "folder:";
constexpr std::string_view kDefaultPrinterFile = "default-printer";
constexpr std::int64_t kLongestDefaultPrinterFile = 4096;

std::string Quote(std::string_view name) {
    return "\"" + ToPrintableLine(name) + "\"";
}

std::string DescribeMissing(std::string_view printer) {
    return "There is no printer " + Quote(printer) + ".";
}

std::string DescribeFailure(const std::string& what, FileResult result) {
    return what + ": " + DescribeFileResult(result) + ".";
}

// Writes the file of a printer that must not exist yet, whole or not at all.
FileResult WriteNewSettings(Files& files, const PrinterFolder& printer, std::string_view text) {
    const std::string draft = printer.SettingsPath() + ".new";
    FileResult result = ReplaceFileDurably(files, draft, text);
    if (result == FileResult::kDone) result = files.Rename(draft, printer.SettingsPath(), false);
    if (result != FileResult::kDone) files.Erase(draft);
    return result;
}

bool HasJobs(const PrinterFolder& printer) {
    const std::vector<JobFiles> all = printer.Jobs().List();
    return std::any_of(all.begin(), all.end(),
                       [](const JobFiles& job) { return job.IsWaiting() || job.IsUnclosed(); });
}

}  // namespace

std::string PrinterDirectory::DefaultPath() const {
    return JoinPath(PrintersFolder(m_workingFolder), kDefaultPrinterFile);
}

// The file that names the default printer is written last, so that a first start that was broken off is
// taken up again.
int PrinterDirectory::MakeFirst(std::string& message) {
    const std::string folder = PrintersFolder(m_workingFolder);
    if (m_files.Inspect(DefaultPath()).kind != FileKind::kMissing) return 0;
    const PrinterFolder first = At(kFirstPrinter);
    FileResult result = m_files.MakeFolders(first.Path());
    if (result == FileResult::kDone && !first.Exists())
        result = WriteNewSettings(m_files, first, WritePrinterSettings(kFirstPort));
    const bool isThere = result == FileResult::kDone || first.Exists();
    if (isThere) result = ReplaceFileDurably(m_files, DefaultPath(), std::string(kFirstPrinter) + "\n");
    if (isThere && result == FileResult::kDone) return 0;
    message = DescribeFailure("The printers can't be set up in " + folder, result);
    return -1;
}

std::vector<std::string> PrinterDirectory::Names() const {
    std::vector<FolderEntry> entries;
    m_files.ListFolder(PrintersFolder(m_workingFolder), entries);
    std::vector<std::string> names;
    for (const FolderEntry& entry : entries)
        if (entry.kind == FileKind::kFolder && At(entry.name).Exists()) names.push_back(entry.name);
    std::sort(names.begin(), names.end());
    return names;
}

PrinterFolder PrinterDirectory::At(std::string_view printer) const {
    return {m_files, m_workingFolder, printer};
}

std::string PrinterDirectory::Default() const {
    std::string text;
    FileResult result = FileResult::kDone;
    const std::string path = DefaultPath();
    ReadWholeFile(m_files, path, kLongestDefaultPrinterFile, text, result);
    const std::string name = text.substr(0, text.find_first_of("\r\n"));
    return At(name).Exists() ? name : std::string();
}

int PrinterDirectory::MakeDefault(std::string_view printer) {
    if (!At(printer).Exists()) return -1;
    const std::string path = DefaultPath();
    return ReplaceFileDurably(m_files, path, std::string(printer) + "\n") == FileResult::kDone ? 0 : -1;
}

int PrinterDirectory::ForgetDefault() {
    return ReplaceFileDurably(m_files, DefaultPath(), "\n") == FileResult::kDone ? 0 : -1;
}

int PrinterDirectory::Create(std::string_view printer, std::string_view port, std::string& message) {
    PrinterPort parsed;
    if (!CheckPrinterName(printer, message) || !ParsePrinterPort(port, parsed, message)) return 1;
    if (printer == kDefaultPrinterFile) {
        message = Quote(printer) + " can't be a printer's name: a file of the spooler is called so.";
        return 1;
    }
    const PrinterFolder folder = At(printer);
    FileResult result = m_files.MakeFolders(folder.Path());
    if (result == FileResult::kDone) result = WriteNewSettings(m_files, folder, WritePrinterSettings(port));
    if (result == FileResult::kDone) return 0;
    if (result == FileResult::kExists && folder.Exists()) {
        message = "There is a printer " + Quote(printer) + " already.";
        return 2;
    }
    message = DescribeFailure("The printer " + Quote(printer) + " can't be made", result);
    return -1;
}

int PrinterDirectory::Remove(std::string_view printer, std::string& message) {
    PrinterFolder folder = At(printer);
    message = DescribeMissing(printer);
    if (!folder.Exists()) return 2;
    const std::string shown = "The printer " + Quote(printer);
    message = shown + " has jobs in its queue. Cancel them, or let them be delivered, first.";
    if (HasJobs(folder)) return -1;
    const bool wasDefault = Default() == printer;
    std::string settings;
    FileResult result = folder.ReadSettingsText(settings);
    if (result == FileResult::kDone) result = m_files.Erase(folder.SettingsPath());
    if (result != FileResult::kDone) {
        message = DescribeFailure(shown + " can't be removed", result);
        return -1;
    }
    // A job that began to be spooled meanwhile found the printer; one that begins from now on does not.
    if (HasJobs(folder)) {
        WriteNewSettings(m_files, folder, settings);
        return -1;
    }
    message.clear();
    if (wasDefault) ForgetDefault();
    ClearFolder(folder);
    return 0;
}

void PrinterDirectory::ClearFolder(PrinterFolder& printer) {
    m_files.Erase(printer.DeliveryLockPath());
    m_files.Erase(printer.TroublePath());
    // With documents in its output folder the numbers go on, should a printer of this name come again.
    const FileResult emptied = m_files.Erase(printer.OwnOutputFolder());
    if (emptied == FileResult::kDone || emptied == FileResult::kMissing) EraseTree(m_files, printer.Path());
}

int PrinterDirectory::SetPaused(std::string_view printer, bool paused, std::string& message) {
    PrinterFolder folder = At(printer);
    message = DescribeMissing(printer);
    if (!folder.Exists()) return 2;
    std::string text;
    FileResult result = folder.ReadSettingsText(text);
    if (result == FileResult::kDone) result = folder.ReplaceSettings(WithPausedFlag(text, paused));
    message = result == FileResult::kDone
                  ? std::string()
                  : DescribeFailure("The printer " + Quote(printer) + " can't be changed", result);
    return result == FileResult::kDone ? 0 : -1;
}

}  // namespace quirepress
