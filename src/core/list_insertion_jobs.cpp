#include <algorithm>
#include <memory>
#include <utility>

#include "base/format.h"
#include "base/numbers.h"
#include "base/path.h"
#include "base/text.h"
#include "core/list_insertion.h"
#include "platform/prompts.h"
#include "settings/general_options.h"
#include "settings/job_files.h"

namespace quirepress {

int ListInsertion::InsertJob(const std::string& path) {
    JobFile job;
    FileResult result = FileResult::kDone;
    if (LoadJobFile(m_services.files, path, job, result) != 0) {
        // Else a run writes it there, once.
        if (!m_services.options.m_errorLog)
            m_services.prompts.ShowBox("Can't read job parameters file.", path);
        InsertRefusal(path, Format("Can't read job parameters file: %s", DescribeFileResult(result)));
        return 0;
    }
    if (job.headerCount > 0) m_list.m_headerTexts = job.headerTexts;
    const auto origin = std::make_shared<RowOrigin>(RowOrigin{RowOrigin::Kind::kJobFile, path, {}, m_origin});
    const auto outer = std::exchange(m_origin, origin);
    for (const std::string& line : job.lines) {
        // Where not all of its rows are there nothing may be done to it as a whole.
        if (m_list.KeepGoing())
            InsertJobLine(line, path);
        else
            origin->path.clear();
    }
    m_origin = outer;
    return 1;
}

void ListInsertion::InsertJobLine(const std::string& line, const std::string& job) {
    const bool isItem = IsAddonJobFile(job) || HasColumns(line);
    std::vector<std::string> columns = isItem ? SplitItemLine(line) : std::vector<std::string>{"", line};
    if (IsReplicationFile(job))
        for (std::string& column : columns)
            column = ReplaceAll(column, kReplicationPlaceholder, TitleWithoutExtension(job));
    if (columns.size() > kColumnFilename) columns[kColumnFilename] = PathInJob(columns[kColumnFilename], job);
    if (!isItem)
        Insert(columns[kColumnFilename]);
    else if (!columns.empty())
        InsertJobRow(columns);
}

std::string ListInsertion::PathInJob(const std::string& text, const std::string& job) const {
    const ItemKind kind = KindOfItem(text);
    const bool namesNoFile = text.empty() || kind == ItemKind::kDownload || kind == ItemKind::kSeparator;
    if (namesNoFile || IsAbsolutePath(text) || IsWindowsPath(text)) return text;
    std::string path = JoinPath(FolderOf(job), text);
    if (kind == ItemKind::kDocument && !Contains(text, "\\")) return path;
    const auto exists = [this](const std::string& tried) {
        return m_services.files.Inspect(tried).kind != FileKind::kMissing;
    };
    if (exists(path)) return path;
    std::string converted = ToPlatformSeparators(path);
    if (exists(converted)) return converted;
    // Many commands are words, not files.
    return kind == ItemKind::kCommand ? text : path;
}

void ListInsertion::InsertJobRow(const std::vector<std::string>& columns) {
    const std::string path = columns.size() > kColumnFilename ? columns[kColumnFilename] : std::string();
    const FileFacts facts = m_services.files.Inspect(path);
    const std::string created = DateText(facts.created);
    const std::string modified = DateText(facts.written);
    const std::string size = SizeText(facts);
    ColumnTexts texts = GivenTexts(path);
    texts[kColumnCreated] = created;
    texts[kColumnModified] = modified;
    texts[kColumnSizeKb] = size;
    const std::size_t count = std::min<std::size_t>(columns.size(), texts.size());
    for (std::size_t i = 0; i < count; ++i)
        if (!columns[i].empty()) texts[i] = columns[i];
    constexpr int kMostPages = 1'000'000'000;
    const auto pages = ParseWholeNumber(texts[kColumnPages], 0, kMostPages).value_or(-1);
    const int row = m_list.RowCount();
    m_list.AddRow(row, texts, static_cast<int>(pages), m_origin);
    m_list.RefreshRow(row);
}

}  // namespace quirepress
