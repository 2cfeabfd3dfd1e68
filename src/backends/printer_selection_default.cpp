#include "backends/printer_selection_default.h"

#include <algorithm>

#include "base/escaped_text.h"
#include "base/text.h"
#include "logs/debug_log.h"
#include "platform/file_tools.h"
#include "platform/files.h"

namespace quirepress {

namespace {

constexpr std::string_view kNoteTitle = "QUIREPRESS DEFAULT PRINTER 1";
constexpr std::int64_t kLongestNote = 1 << 20;

bool Holds(const std::vector<std::string>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

RunDefault::RunDefault(Spooler& spooler, Files& files, DebugLog& debugLog, std::string_view workingFolder)
    : m_spooler(spooler),
      m_files(files),
      m_debugLog(debugLog),
      m_notePath(std::string(workingFolder) + "DefaultPrinter." + spooler.SystemName() + ".note"),
      m_lockPath(std::string(workingFolder) + "DefaultPrinter." + spooler.SystemName() + ".lock") {}

RunDefault::~RunDefault() = default;

int RunDefault::RestoreChoice(const KeptDefault& kept) {
    return m_spooler.DefaultChoice() == kept.choice ? 0 : m_spooler.RestoreDefaultChoice(kept.choice);
}

int RunDefault::MakeDefaultPrinter(std::string_view printer) {
    if (!m_isInRun) return m_spooler.MakeDefaultPrinter(printer);
    WriteNote(printer);
    const int result = m_spooler.MakeDefaultPrinter(printer);
    // A call that failed may have changed it all the same.
    if (result == 0) m_setTo.clear();
    m_setTo.emplace_back(printer);
    return result;
}

void RunDefault::BeginRun() {
    m_note = {};
    BringBackLeft();
    // Where that failed, the user's own is still what the note says.
    m_before = m_note.setTo.empty() ? Keep() : m_note.before;
    Note other;
    if (m_note.setTo.empty() && IsSetByOther(m_before.printer, other)) m_before = other.before;
    m_setTo.clear();
    m_isInRun = true;
}

// Where another program's run is under way.
bool RunDefault::IsSetByOther(std::string_view printer, Note& note) {
    return !m_lock && ReadNote(note) && Holds(note.setTo, printer);
}

std::string RunDefault::UsersOwn() {
    Note other;
    std::string now = m_spooler.DefaultPrinter();
    return IsSetByOther(now, other) ? other.before.printer : now;
}

bool RunDefault::EndRun() {
    m_isInRun = false;
    if (m_setTo.empty()) return false;
    const std::string now = m_spooler.DefaultPrinter();
    // None: the server is gone, or the printer.
    if (!now.empty() && !Holds(m_setTo, now)) return false;
    // On its way back it is the former one, and not yet as the user had chosen it.
    WriteNote(m_before.printer);
    return true;
}

void RunDefault::CloseNote(bool isBack) {
    if (m_lock && isBack) m_files.Erase(m_notePath);
    m_lock.reset();
}

void RunDefault::BringBackLeft() {
    if (m_lock || m_files.Inspect(m_notePath).kind == FileKind::kMissing) return;
    FileResult result = FileResult::kDone;
    const std::unique_ptr<FileLock> lock = m_files.TryLock(m_lockPath, result);
    if (!lock) return;  // its run is under way
    Note note;
    const std::string now = m_spooler.DefaultPrinter();
    const bool isRead = ReadNote(note);
    // Ended while the print system wrote the user's choice, which is then none: nobody has chosen that.
    const bool isLost = !note.before.choice.empty() && m_spooler.DefaultChoice().empty();
    if (!isRead) {
        m_debugLog.Trace("The note of the default printer can't be read\r\n");
    } else if (!now.empty() && !Holds(note.setTo, now) && !isLost) {
        m_debugLog.Trace("The default printer was chosen anew: %s\r\n", now);
    } else if (RestoreChoice(note.before) == 0) {
        m_debugLog.Trace("The default printer that an ended run has left is set back: %s to %s\r\n", now,
                         note.before.printer);
    } else if (Exists(note.before.printer)) {
        m_debugLog.Trace("The default printer can't be set back yet: %s\r\n", note.before.printer);
        m_note = std::move(note);
        return;
    }
    m_files.Erase(m_notePath);
}

// Where the printers can't be read, for all that is known.
bool RunDefault::Exists(std::string_view printer) {
    std::vector<PrinterInfo> printers;
    if (m_spooler.ListPrinters(printers) != 0) return true;
    return std::any_of(printers.begin(), printers.end(),
                       [&](const PrinterInfo& info) { return info.name == printer; });
}

bool RunDefault::ReadNote(Note& note) {
    std::string text;
    FileResult result = FileResult::kDone;
    if (!ReadWholeFile(m_files, m_notePath, kLongestNote, text, result) || !text.ends_with('\n'))
        return false;
    text.pop_back();
    const std::vector<std::string_view> fields = SplitAt(text, '\t');
    if (fields.size() < 4 || fields[0] != kNoteTitle) return false;
    note.before = {UnescapeControls(fields[1]), UnescapeControls(fields[2])};
    for (std::size_t i = 3; i < fields.size(); ++i) note.setTo.push_back(UnescapeControls(fields[i]));
    return true;
}

void RunDefault::WriteNote(std::string_view printer) {
    if (m_lock && Holds(m_note.setTo, printer)) return;
    FileResult result = FileResult::kDone;
    if (!m_lock) m_lock = m_files.TryLock(m_lockPath, result);
    if (m_lock) {
        Note note = {m_before, m_note.setTo};
        note.setTo.emplace_back(printer);
        std::string text(kNoteTitle);
        for (const std::string& field : {note.before.printer, note.before.choice})
            text += '\t' + EscapeControls(field);
        for (const std::string& name : note.setTo) text += '\t' + EscapeControls(name);
        result = ReplaceFileDurably(m_files, m_notePath, text + "\n");
        if (result == FileResult::kDone) m_note = std::move(note);
    }
    if (result == FileResult::kDone) return;
    m_debugLog.Trace("The change of the default printer is not noted: %s\r\n", DescribeFileResult(result));
}

}  // namespace quirepress
