#include "settings/print_commands.h"

#include <algorithm>
#include <optional>

#include "base/command_words.h"
#include "base/numbers.h"
#include "base/text.h"
#include "platform/file_tools.h"
#include "platform/prompts.h"

namespace quirepress {

namespace {

constexpr int kMostSeconds = 7 * 24 * 3600;
constexpr int kMostBatch = 1000;
constexpr std::int64_t kLargestFile = 1 << 20;

std::string_view Trim(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t start = text.find_first_not_of(kBlanks);
    if (start == std::string_view::npos) return {};
    return text.substr(start, text.find_last_not_of(kBlanks) - start + 1);
}

// Takes the lines in one after the other; a group is complete when the next one begins, or at the end.
class TableReader {
public:
    TableReader(PrintCommandTable& table, std::vector<std::string>& flaws) : m_table(table), m_flaws(flaws) {}

    void TakeLine(std::string_view line) {
        ++m_line;
        line = Trim(line);
        if (line.empty() || line.front() == '#') return;
        const std::size_t end = std::min(line.find(';'), line.size());
        const std::string_view value = end < line.size() ? Trim(line.substr(end + 1)) : std::string_view();
        const std::string flaw = TakeKey(line.substr(0, end), value);
        if (!flaw.empty()) AddFlaw(m_line, flaw);
    }

    void FinishGroup() {
        if (m_command) {
            const std::string flaw = FlawOf(*m_command);
            if (flaw.empty())
                m_table.commands.push_back(std::move(*m_command));
            else
                AddFlaw(m_groupLine, "\"" + m_command->name + "\" is not used: " + flaw);
        }
        m_command.reset();
    }

private:
    std::string TakeKey(std::string_view key, std::string_view value) {
        if (key == "COMMAND") {
            FinishGroup();
            m_command.emplace();
            m_command->name = value;
            m_groupLine = m_line;
            return {};
        }
        if (key == "SCRIPTLIMIT") return TakeNumber(value, kMostSeconds, 0, m_table.scriptLimitSeconds);
        if (key != "TYPES" && key != "PDF" && key != "PRINT" && key != "LIMIT" && key != "BATCH")
            return "there is no key \"" + std::string(key) + "\"";
        if (!m_command) return std::string(key) + " stands before the first COMMAND";
        if (key == "TYPES") return TakeTypes(value);
        if (key == "LIMIT") return TakeNumber(value, kMostSeconds, 1, m_command->limitSeconds);
        if (key == "BATCH") return TakeNumber(value, kMostBatch, 1, m_command->batch);
        return TakeCommandLine(key, value);
    }

    static std::string TakeNumber(std::string_view value, int most, int least, int& number) {
        const std::optional<std::int64_t> read = ParseWholeNumber(value, least, most);
        if (!read)
            return "\"" + std::string(value) + "\" is no number from " + std::to_string(least) + " to " +
                   std::to_string(most);
        number = static_cast<int>(*read);
        return {};
    }

    std::string TakeTypes(std::string_view value) {
        for (const std::string_view type : SplitAt(value, ' ')) {
            if (type.empty()) continue;
            if (type.front() != '.' && !Contains(type, "/"))
                return "\"" + std::string(type) + "\" is neither an ending (.doc) nor a type (text/plain)";
            m_command->types.push_back(ToLowerAscii(type));
        }
        return {};
    }

    std::string TakeCommandLine(std::string_view key, std::string_view value) {
        if (!m_command->line.empty()) return "the group has a command line already";
        std::vector<std::string> words;
        if (!SplitWords(value, words)) return "a quotation mark is not closed";
        if (words.empty()) return "the command line is empty";
        m_command->line = value;
        m_command->words = std::move(words);
        m_command->action = key == "PDF" ? PrintCommand::Action::kMakesPdf : PrintCommand::Action::kPrints;
        return {};
    }

    static std::string FlawOf(const PrintCommand& command) {
        if (command.words.empty()) return "it has no command line (PDF or PRINT)";
        if (command.types.empty()) return "it has no TYPES";
        const auto& words = command.words;
        const bool takesList = std::find(words.begin(), words.end(), "%*") != words.end();
        if (!takesList && !command.Uses("%1") && !command.Uses("%u"))
            return "its command line has no place for the file (%1, %u or %*)";
        if (command.action == PrintCommand::Action::kPrints) return {};
        if (!command.Uses("%o") && !command.Uses("%d"))
            return "its command line has no place for the PDF (%o or %d)";
        if (command.Uses("%p")) return "a PDF is made for every printer (%p)";
        if (command.batch > 1 && (!takesList || !command.Uses("%d")))
            return "a BATCH of several files needs %* and %d";
        return {};
    }

    void AddFlaw(int line, const std::string& flaw) {
        m_flaws.push_back("line " + std::to_string(line) + ": " + flaw);
    }

    PrintCommandTable& m_table;
    std::vector<std::string>& m_flaws;
    std::optional<PrintCommand> m_command;
    int m_line = 0;
    int m_groupLine = 0;
};

}  // namespace

bool PrintCommand::Uses(std::string_view placeholder) const {
    return std::any_of(words.begin(), words.end(),
                       [&](const std::string& word) { return Contains(word, placeholder); });
}

PrintCommandTable ParsePrintCommands(std::string_view text, std::vector<std::string>& flaws) {
    PrintCommandTable table;
    TableReader reader(table, flaws);
    for (const std::string_view line : SplitAt(text, '\n')) reader.TakeLine(line);
    reader.FinishGroup();
    return table;
}

const PrintCommandTable& PrintCommandFile::Table() {
    FileFacts facts = m_place.files.Inspect(Path());
    if (facts.kind == FileKind::kMissing && !m_isRead) {
        ReplaceFileDurably(m_place.files, Path(), DefaultPrintCommands());
        facts = m_place.files.Inspect(Path());
    }
    const bool isSame =
        facts.kind == m_facts.kind && facts.size == m_facts.size && facts.written == m_facts.written;
    if (m_isRead && isSame) return m_table;
    m_facts = facts;
    ReadFile();
    return m_table;
}

void PrintCommandFile::ReadFile() {
    std::string text(DefaultPrintCommands());
    FileResult result = FileResult::kDone;
    std::vector<std::string> flaws;
    const bool isHere = ReadWholeFile(m_place.files, Path(), kLargestFile, text, result);
    if (!isHere && result != FileResult::kMissing)
        flaws.push_back(std::string("it can't be read: ") + DescribeFileResult(result));
    if (isHere || !m_isRead) m_table = ParsePrintCommands(text, flaws);
    m_isRead = true;
    m_flaws = flaws;
    std::string message = std::string(kPrintCommandsFile) + " has lines that are not used:";
    for (const std::string& flaw : flaws) message += "\n" + flaw;
    if (!flaws.empty()) m_place.prompts.ShowBox("Print Commands", message);
}

}  // namespace quirepress
