#include <algorithm>
#include <utility>

#include "base/entry_names.h"
#include "base/format.h"
#include "base/path.h"
#include "core/list_insertion.h"
#include "documents/archive.h"
#include "platform/shell.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

constexpr std::size_t kDeepestNesting = 16;
constexpr int kMostContainers = 20'000;  // inside one insertion
constexpr int kMostUnpackFolders = 100'000;

std::string FolderForUnpacking(const GeneralOptions& options, const std::string& workingFolder) {
    const std::string folder =
        options.m_unzipFolder.empty() ? JoinPath(options.m_tempFolder, "Unzip") : options.m_unzipFolder;
    return IsAbsolutePath(folder) ? folder : JoinPath(workingFolder, folder);
}

std::string DescribeOutcome(const ArchiveOutcome& outcome) {
    if (!outcome.message.empty()) return outcome.message;
    if (outcome.leftOut > 0)
        return Format("%d entries of the archive were left out: links, or names that leave its folder",
                      outcome.leftOut);
    return outcome.files.empty() ? "The archive holds no files" : "";
}

}  // namespace

class ListInsertion::Container {
public:
    Container(ListInsertion& insertion, std::string resolved) : m_insertion(insertion) {
        m_insertion.m_openContainers.push_back(std::move(resolved));
        ++m_insertion.m_containersTaken;
    }
    ~Container() { m_insertion.m_openContainers.pop_back(); }
    Container(const Container&) = delete;
    Container& operator=(const Container&) = delete;

private:
    ListInsertion& m_insertion;
};

int ListInsertion::InsertContained(const std::string& path,
                                   int (ListInsertion::*insert)(const std::string&)) {
    std::string resolved = m_services.files.ResolvePath(path);
    const bool isOpen =
        std::find(m_openContainers.begin(), m_openContainers.end(), resolved) != m_openContainers.end();
    if (isOpen && !resolved.empty()) return InsertRefusal(path, "The file leads back to itself");
    if (m_openContainers.size() >= kDeepestNesting)
        return InsertRefusal(path, Format("Files inside files go deeper than %d, the limit",
                                          static_cast<int>(kDeepestNesting)));
    if (m_openContainers.empty()) m_containersTaken = 0;
    if (m_containersTaken >= kMostContainers)
        return InsertRefusal(path, Format("More than %d files inside files, the limit", kMostContainers));
    const Container container(*this, std::move(resolved));
    return (this->*insert)(path);
}

int ListInsertion::InsertShortcut(const std::string& path) {
    const std::string target = m_services.shell.ResolveShortcut(path);
    return target.empty() ? InsertRefusal(path, "The shortcut leads nowhere") : Insert(target);
}

std::string ListInsertion::MakeUnpackFolder(std::string_view archive) const {
    const std::string root = FolderForUnpacking(m_services.options, m_services.workingFolder);
    const std::vector<std::string> name = CleanEntryName(TitleWithoutExtension(archive));
    const std::string title = name.empty() ? "Archive" : name.back();
    std::string folder = JoinPath(root, title);
    for (int i = 2; i < kMostUnpackFolders; ++i) {
        if (m_services.files.Inspect(folder).kind == FileKind::kMissing) break;
        folder = JoinPath(root, title + "_" + std::to_string(i));
    }
    return folder;
}

int ListInsertion::InsertArchive(const std::string& path) {
    const std::string folder = MakeUnpackFolder(path);
    const FileFacts facts = m_services.files.Inspect(path);
    const auto keepGoing = [this] { return m_list.KeepGoing(); };
    const ArchiveOutcome outcome = UnpackArchive(m_services.files, path, folder, ArchiveLimits(), keepGoing);
    const std::string problem = DescribeOutcome(outcome);
    const auto archive = std::make_shared<RowOrigin>(
        RowOrigin{RowOrigin::Kind::kArchive, path, {facts.size, facts.written}, m_origin});
    if (!problem.empty()) archive->path.clear();
    const auto outer = std::exchange(m_origin, archive);
    for (const std::string& file : outcome.files) {
        if (m_list.KeepGoing())
            Insert(file);
        else
            archive->path.clear();
    }
    m_origin = outer;
    if (!problem.empty()) InsertRefusal(path, problem);
    if (outcome.files.empty()) m_services.files.Erase(folder);
    return 1;
}

}  // namespace quirepress
