#include "platform/embedded/printer_folder.h"

#include "base/format.h"
#include "base/keyword_lines.h"
#include "base/numbers.h"
#include "base/path.h"
#include "base/text.h"
#include "platform/file_tools.h"

namespace quirepress {

namespace {

constexpr std::int64_t kLongestSettings = 1 << 20;
constexpr std::int64_t kLongestTrouble = 1 << 16;
constexpr std::string_view kTroubleKey = "TROUBLE";

}  // namespace

std::string PrintersFolder(std::string_view workingFolder) {
    return JoinPath(workingFolder, "Printers");
}

PrinterFolder::PrinterFolder(Files& files, std::string_view workingFolder, std::string_view printer)
    : m_files(files),
      m_workingFolder(workingFolder),
      m_name(printer),
      m_path(JoinPath(PrintersFolder(workingFolder), printer)),
      m_jobs(files, JoinPath(m_path, "Jobs"), JoinPath(m_path, "ids")) {}

bool PrinterFolder::Exists() const {
    // A name that is none would lead to another folder.
    std::string ignored;
    return CheckPrinterName(m_name, ignored) && m_files.Inspect(SettingsPath()).kind == FileKind::kRegular;
}

FileResult PrinterFolder::ReadSettingsText(std::string& text) const {
    FileResult result = FileResult::kDone;
    ReadWholeFile(m_files, SettingsPath(), kLongestSettings, text, result);
    return result;
}

PrinterSettings PrinterFolder::ReadSettings() const {
    std::string text;
    const FileResult result = ReadSettingsText(text);
    PrinterSettings settings = ReadPrinterSettings(text);
    if (result != FileResult::kDone)
        settings.portError =
            "The file printer.ini can't be read: " + std::string(DescribeFileResult(result)) + ".";
    return settings;
}

FileResult PrinterFolder::ReplaceSettings(std::string_view text) {
    return ReplaceFileDurably(m_files, SettingsPath(), text);
}

std::string PrinterFolder::SettingsPath() const {
    return JoinPath(m_path, "printer.ini");
}

std::string PrinterFolder::OutputFolder(const PrinterPort& port) const {
    if (port.folder.empty()) return OwnOutputFolder();
    return IsAbsolutePath(port.folder) ? port.folder : JoinPath(m_workingFolder, port.folder);
}

std::string PrinterFolder::OwnOutputFolder() const {
    return JoinPath(m_path, "Output");
}

std::string PrinterFolder::DeliveryLockPath() const {
    return JoinPath(m_path, "delivery.lock");
}

std::string PrinterFolder::TroublePath() const {
    return JoinPath(m_path, "port.state");
}

PortTrouble PrinterFolder::ReadTrouble() const {
    std::string text;
    FileResult result = FileResult::kDone;
    if (!ReadWholeFile(m_files, TroublePath(), kLongestTrouble, text, result)) return {};
    const std::vector<std::string_view> parts = SplitAt(TrimTrailingBlanks(text), ';');
    if (parts.size() < 5 || parts[0] != kTroubleKey || !EndsWith(text, "\n")) return {};
    PortTrouble trouble;
    trouble.jobId = ParseLong(parts[1]);
    trouble.printerBits = static_cast<std::uint32_t>(ParseLong(parts[2]));
    trouble.jobBits = static_cast<std::uint32_t>(ParseLong(parts[3]));
    const auto start = static_cast<std::size_t>(parts[4].data() - text.data());
    trouble.text = text.substr(start, text.size() - 1 - start);
    return trouble;
}

void PrinterFolder::WriteTrouble(const PortTrouble& trouble) {
    if (trouble.jobId == 0) {
        m_files.Erase(TroublePath());
        return;
    }
    // Not flushed: it is worth nothing after the machine went down. A reader takes only a whole line.
    const std::string line = Format("%s;%d;%u;%u;%s\n", kTroubleKey, trouble.jobId, trouble.printerBits,
                                    trouble.jobBits, trouble.text);
    FileResult result = FileResult::kDone;
    const auto file = m_files.OpenForWriting(TroublePath(), OpenMode::kReplace, FileAccess::kShared, result);
    if (file) file->Write(line.data(), line.size());
}

}  // namespace quirepress
